// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace lexwend::platform {

/// Points, from the bottom-left corner of the window's content.
struct Frame {
  double x = 0, y = 0, width = 0, height = 0;
  bool operator==(const Frame&) const = default;
};
enum class ColorRole { label, secondaryLabel, quaternaryLabel, systemRed };
enum class TextAlignment { natural, right, center };
enum class FontWeight { regular, medium, semibold };
enum class BezelStyle { rounded };

struct LabelLook {
  std::string text;  ///< UTF-8
  Frame frame;
  TextAlignment alignment = TextAlignment::natural;
  double fontSize = 13;  ///< points, system font
  FontWeight fontWeight = FontWeight::regular;
  ColorRole color = ColorRole::label;
  bool wraps = false;
  std::optional<ColorRole> background;  ///< drawn on a layer of its own
  double cornerRadius = 0;              ///< points
};
struct ButtonLook {
  std::string title;  ///< UTF-8
  Frame frame;
  BezelStyle bezel = BezelStyle::rounded;
  bool enabled = true;
};
/// Everything that is fixed about the recorder's window: what a host draws.
struct RecorderWindowLook {
  Frame contentRect;
  std::string title;
  bool titled = true, closable = true, resizable = false, miniaturizable = false;
  bool deferred = false;
  int level = 0;  ///< 3 floats above other windows
  bool releasedWhenClosed = false;
  bool centered = false;
  LabelLook prompt, combination, message;
  ButtonLook save, cancel;
};
/// Called on the main thread. Any of them may destroy the window; a host uses nothing of it afterwards.
struct RecorderWindowEvents {
  std::function<void()> save;       ///< the save button
  std::function<void()> cancel;     ///< the cancel button
  std::function<void()> willClose;  ///< before the window closes, by its close box or by close()
};
/// The window of the hot-key recorder; its destruction takes it off the screen without an event. Texts are
/// UTF-8. Main thread only. Nothing here blocks.
class RecorderWindow {
 public:
  virtual ~RecorderWindow() = default;
  virtual void setCombination(std::string_view text) = 0;
  virtual void setMessage(std::string_view text, ColorRole color) = 0;
  virtual void setSaveEnabled(bool enabled) = 0;
  /// Shows the window and makes it key and front.
  virtual void showAndMakeKey() = 0;
  /// Closes the window; events.willClose runs before this returns, unless it is closed already.
  virtual void close() = 0;
};
/// Makes such windows. Main thread only.
class RecorderWindows {
 public:
  virtual ~RecorderWindows() = default;
  /// A window that is not yet shown.
  virtual std::unique_ptr<RecorderWindow> create(const RecorderWindowLook& look,
                                                 RecorderWindowEvents events) = 0;
};

/// The service of the installed host.
RecorderWindows& recorderWindows();

}  // namespace lexwend::platform
