// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/fake/fake_layouts.h"
#include "tests/mac/doubles/control.h"

namespace lexwend::doubles {

/// A user's desktop on the doubles: layouts, and one application in front with a field that has the focus.
/// What other applications do takes a moment. One at a time; it ends before its session does.
class MacDesktop {
 public:
  MacDesktop();
  ~MacDesktop();
  MacDesktop(const MacDesktop&) = delete;
  MacDesktop& operator=(const MacDesktop&) = delete;

  /// The key layout data that types what the layout says.
  static Bytes layoutData(const platform::FakeLayout& layout);
  /// Exactly these layouts are installed, the first is in use.
  static void installLayouts(const std::vector<platform::FakeLayout>& layouts);

  /// An editor comes to the front with this text, all of it selected.
  void openEditor(const std::string& text);
  std::string editorText() const { return editor_ == nullptr ? std::string() : editor_->text; }
  /// The user presses a key there, without any modifier.
  void pressKeyInEditor(std::uint16_t keyCode);
  /// Whoever asks the field anything over the Accessibility interface waits for as long as the system lets
  /// him.
  static void editorHangs();
  /// A password field comes to the front.
  void focusPasswordField();

  /// The plain text that another application would paste.
  static std::optional<std::string> pasteboardText();

  static constexpr std::chrono::milliseconds kReaction{5};

 private:
  /// A field whose whole text is its selection.
  struct Editor {
    std::string text;
  };
  void open(Editor editor);
  static void publish(const std::shared_ptr<Editor>& editor);

  std::shared_ptr<Editor> editor_;
};

}  // namespace lexwend::doubles
