// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>

#include <gio/gio.h>

#include "platform/linux/display/x11_connection.h"

namespace lexwend::platform {

/// Reports each change of the desktop's settings for toolkits, of which the theme is one: XSETTINGS, and
/// notifyChange of org.kde.KGlobalSettings on the session bus. Main thread only. Where no program provides
/// such settings nothing is reported.
class ThemeWatch {
 public:
  ThemeWatch(std::shared_ptr<X11Connection> x11, std::function<void()> changed);
  ~ThemeWatch() { follow(nullptr); }
  ThemeWatch(const ThemeWatch&) = delete;
  ThemeWatch& operator=(const ThemeWatch&) = delete;

  /// The session bus from now on, null for none. It must outlive this or the next call.
  void follow(GDBusConnection* bus);

 private:
  void followOwner();

  std::shared_ptr<X11Connection> x11_;
  std::function<void()> changed_;
  X11Connection::Observation observation_;
  GDBusConnection* bus_ = nullptr;
  unsigned subscription_ = 0;
};

}  // namespace lexwend::platform
