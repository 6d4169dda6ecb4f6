// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "core/layout_map.h"
#include "hotkey/hot_key_center.h"
#include "hotkey/hot_key_recorder.h"
#include "platform/keys.h"
#include "platform/registration.h"
#include "platform/running_instance.h"
#include "platform/status_item.h"

namespace lexwend {

/// Ties the agent together. It owns the menu-bar item and its menu, the layout map, the open recorder and the
/// timer that waits for the Accessibility permission, and it carries out the commands. Main thread only.
/// Observers, timers and deferred work hold it weakly: they do not keep it alive, and do nothing after its
/// destruction.
///
/// Every change ends in refreshMenuState(), which updates the whole menu.
class AppDelegate : public std::enable_shared_from_this<AppDelegate> {
 public:
  /// Builds the layout map and the menu items, still without titles. The center must outlive the delegate.
  static std::shared_ptr<AppDelegate> create(HotKeyCenter& hotKeyCenter);

  AppDelegate(const AppDelegate&) = delete;
  AppDelegate& operator=(const AppDelegate&) = delete;

  /// Sets up the menu, the hot key, the login item, the observers and the permission, in this order. Then it
  /// listens to other processes, and where no icon is shown it says some seconds later that it runs.
  void applicationDidFinishLaunching();

  /// Converts the selection of the front application and shows the outcome on the icon. Blocks as long as
  /// TextAccess::replaceSelection(). Handles every failure of the replacement. Any other exception is a
  /// defect and ends the process, because the callers are callbacks of the system.
  void performFix() noexcept;

 private:
  explicit AppDelegate(HotKeyCenter& hotKeyCenter);

  // app_delegate.cpp: the menu and its commands
  void setupStatusItem();
  void refreshMenuState();
  /// One sentence for the user; empty when everything works.
  std::string whatDoesNotWork() const;
  bool registerHotKey();
  void changeHotKey();
  void recorderDone(bool saved, platform::KeyCode previousCode, platform::Modifiers previousModifiers);
  void toggleSwitchLayout();
  void toggleCompat();
  /// The status item. Fatal before setupStatusItem() and when the system gave none.
  platform::StatusItem& statusItem() const;
  /// Shows a symbol of the system as the icon. A name that the system does not know clears the icon.
  void showSymbol(std::string_view name);
  /// A function that calls `operation` on this delegate if the delegate still exists by then.
  std::function<void()> weakly(void (AppDelegate::*operation)());

  // fix_action.cpp
  void fixSelectionFromMenu();
  /// A fix that another process asks for. False when it is dropped, as the hot key's press would be.
  bool requestFix();
  void flash(std::string_view symbolName);

  // permission.cpp: Accessibility permission, system events, login item
  void startPermissionPolling();
  void permissionPollingTick();
  void observeSystemEvents();
  void didWake();
  void readLayouts();
  void enabledLayoutsChanged();
  void showPermissionAlert();
  void openPermission();
  void setupLoginItem();
  void toggleLoginItem();

  /// Where a hot key takes a change to the desktop's settings: makes it when the user has agreed, and asks
  /// once.
  void offerKeyBinding();
  void askForKeyBinding();
  /// Where more works when the program is in the user's list of applications: asks once whether to put it
  /// there.
  void offerInstallation();
  void askForInstallation();

  // commands.cpp: commands of other processes, and an agent without an icon
  void receiveCommands();
  bool carryOut(platform::InstanceCommand command);
  void sayThatItRunsUnseen();

  HotKeyCenter& hotKeyCenter_;
  platform::StatusItemRef statusItem_;
  LayoutMap layoutMap_;
  std::string_view whyLayoutCannotFollow_;  ///< for the user; empty when it can in both directions
  platform::Registration permissionTimer_;
  platform::Registration wakeObserver_;
  platform::Registration layoutObserver_;
  platform::Registration commands_;
  bool fixIsRequested_ = false;
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
