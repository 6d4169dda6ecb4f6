// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QIcon>
#include <QImage>
#include <memory>
#include <string>
#include <string_view>

#include "platform/status_item.h"

namespace lexwend::platform {

/// One of the agent's own drawings, under the name that the symbol has in StatusBar.
class LinuxSymbolImage : public SymbolImage {
 public:
  /// Null when there is no drawing of that name.
  static std::shared_ptr<LinuxSymbolImage> named(std::string_view name, std::string_view description);

  void setTemplate(bool isTemplate) override { isTemplate_ = isTemplate; }
  const std::string& description() const { return description_; }
  /// The name that the drawing has in an icon theme, when it is installed.
  const std::string& themeName() const { return themeName_; }
  /// The drawing on a square of `side` device pixels. A template image is white on a field of a color of its
  /// own, so that it is legible on every panel.
  QImage rendered(int side) const;
  /// The same in all sizes that trays use.
  QIcon icon() const;

 private:
  LinuxSymbolImage(std::string path, std::string themeName, QColor field, std::string description);

  std::string path_;
  std::string themeName_;
  QColor field_;
  std::string description_;
  bool isTemplate_ = false;
};

/// The folder "icons" among the folders of data (XDG_DATA_HOME, XDG_DATA_DIRS) whose theme "hicolor" holds an
/// icon of that name; empty where it is not installed. Only there does every panel look.
std::string folderOfInstalledIcon(const std::string& name);

/// The agent's own icon, for its windows.
QIcon applicationIcon();

/// Side lengths of tray icons in device pixels, for panels from small to high-density.
inline constexpr int kTrayIconSides[] = {16, 22, 24, 32, 48, 64};

}  // namespace lexwend::platform
