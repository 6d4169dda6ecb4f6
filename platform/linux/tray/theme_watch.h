// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>

#include "platform/linux/display/x11_connection.h"

namespace lexwend::platform {

/// Reports each change of the desktop's settings for toolkits, of which the theme is one (XSETTINGS). Main
/// thread only. Where no program provides such settings nothing is reported.
class ThemeWatch {
 public:
  ThemeWatch(std::shared_ptr<X11Connection> x11, std::function<void()> changed);

 private:
  void followOwner();

  std::shared_ptr<X11Connection> x11_;
  std::function<void()> changed_;
  X11Connection::Observation observation_;
};

}  // namespace lexwend::platform
