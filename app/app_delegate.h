// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string_view>

#include "core/layout_map.h"
#include "hotkey/hot_key_center.h"
#include "hotkey/hot_key_recorder.h"
#include "platform/keys.h"
#include "platform/run_loop.h"
#include "platform/status_item.h"

namespace lexwend {

/// The one object that ties the agent together: it owns the menu-bar item and its menu, the current layout
/// map, the open recorder and the timer that waits for the Accessibility permission, and carries out the
/// commands. Main thread only. Nothing that it leaves behind in the system, observers and timers included,
/// keeps it alive or does anything once it is gone.
///
/// The menu is never brought up to date piece by piece: whatever changes something ends in
/// refreshMenuState().
class AppDelegate : public std::enable_shared_from_this<AppDelegate> {
 public:
  /// Builds the layout map and the untitled menu items. The center must outlive the delegate.
  static std::shared_ptr<AppDelegate> create(HotKeyCenter& hotKeyCenter);

  AppDelegate(const AppDelegate&) = delete;
  AppDelegate& operator=(const AppDelegate&) = delete;

  /// The launch: menu, hot key, login item, observers, permission, in this order.
  void applicationDidFinishLaunching();

  /// Converts the selection of the front application and reports the outcome on the icon. Blocks for up to
  /// about two seconds. Handles every failure of the replacement; any other exception is a defect and ends
  /// the process, because callers are the system's own callbacks.
  void performFix() noexcept;

 private:
  explicit AppDelegate(HotKeyCenter& hotKeyCenter);

  // app_delegate.cpp: the menu and its commands
  void setupStatusItem();
  void refreshMenuState();
  bool registerHotKey();
  void changeHotKey();
  void recorderDone(bool saved, platform::KeyCode previousCode, platform::Modifiers previousModifiers);
  void toggleSwitchLayout();
  void toggleCompat();
  /// The status item; fatal before setupStatusItem() and where the system gave none.
  platform::StatusItem& statusItem() const;
  /// Shows a system symbol as the icon; none of that name clears it.
  void showSymbol(std::string_view name);
  /// A call of `operation` on this delegate if it still exists by then.
  std::function<void()> weakly(void (AppDelegate::*operation)());

  // fix_action.cpp
  void fixSelectionFromMenu();
  void flash(std::string_view symbolName);

  // permission.cpp: Accessibility permission, system events, login item
  void startPermissionPolling();
  void permissionPollingTick(platform::Timer& timer);
  void observeSystemEvents();
  void didWake();
  void enabledLayoutsChanged();
  void showPermissionAlert();
  void openPermission();
  void setupLoginItemIfFirstRun();
  void toggleLoginItem();

  HotKeyCenter& hotKeyCenter_;
  platform::StatusItemRef statusItem_;
  LayoutMap layoutMap_;
  platform::TimerRef permissionTimer_;
  platform::MenuItemRef fixItem_;
  platform::MenuItemRef changeKeyItem_;
  std::shared_ptr<HotKeyRecorderWindowController> recorder_;
  platform::MenuItemRef switchItem_;
  platform::MenuItemRef loginItem_;
  platform::MenuItemRef compatItem_;
  platform::MenuItemRef permissionItem_;
  platform::MenuItemRef statusLine_;
};

}  // namespace lexwend
