// SPDX-License-Identifier: MIT
#include <chrono>

#include "app/app_delegate.h"
#include "input/input_sources.h"
#include "platform/accessibility.h"
#include "platform/alerts.h"
#include "platform/application.h"
#include "platform/input_sources.h"
#include "platform/login_item.h"
#include "platform/run_loop.h"
#include "platform/workspace.h"
#include "support/settings.h"
#include "text/text_access.h"

namespace lexwend {
namespace {

constexpr std::chrono::milliseconds kPollingInterval{2000};

}  // namespace

void AppDelegate::startPermissionPolling() {
  permissionTimer_.cancel();
  permissionTimer_ = platform::runLoop().scheduledRepeatingTimer(kPollingInterval,
                                                                 weakly(&AppDelegate::permissionPollingTick));
}

void AppDelegate::permissionPollingTick() {
  if (!platform::accessibility().isProcessTrusted()) return;
  permissionTimer_.cancel();
  refreshMenuState();
}

void AppDelegate::observeSystemEvents() {
  wakeObserver_ = platform::workspace().observeDidWake(weakly(&AppDelegate::didWake));
  layoutObserver_ = platform::inputSourceService().observeEnabledLayoutsChanged(
      weakly(&AppDelegate::enabledLayoutsChanged));
}

void AppDelegate::didWake() {
  // A registration may be lost while the computer sleeps.
  registerHotKey();
  refreshMenuState();
  if (!platform::accessibility().isProcessTrusted()) startPermissionPolling();
}

void AppDelegate::enabledLayoutsChanged() {
  layoutMap_ = LayoutMap::build(InputSources::keyTables());
  refreshMenuState();
}

void AppDelegate::showPermissionAlert() {
  platform::application().activate(/*ignoringOtherApps=*/true);
  const int response = platform::alerts().runModal(
      {.messageText = "נדרש אישור נגישות",
       .informativeText = "כדי לתקן טקסט מסומן, האפליקציה צריכה אישור לשלוט במחשב דרך הנגישות. "
                          "האישור ניתן פעם אחת בהגדרות המערכת. "
                          "האפליקציה לא שומרת ולא שולחת שום הקלדה.",
       .buttons = {"פתח הגדרות", "ביטול"}});
  if (response != platform::kAlertFirstButtonReturn) return;
  TextAccess::openAccessibilitySettings();
  startPermissionPolling();
}

void AppDelegate::openPermission() {
  platform::accessibility().isProcessTrustedWithPrompt();
  TextAccess::openAccessibilitySettings();
  startPermissionPolling();
}

void AppDelegate::setupLoginItemIfFirstRun() {
  if (Settings::d().boolForKey(Settings::kDidRegisterLoginItemKey)) return;
  // The flag is set first. A refusal is final, and a user who switches the login item off later keeps it off.
  Settings::d().setBool(true, Settings::kDidRegisterLoginItemKey);
  static_cast<void>(platform::loginItem().registerItem());
}

void AppDelegate::toggleLoginItem() {
  platform::LoginItem& item = platform::loginItem();
  const bool done =
      item.status() == platform::LoginItemStatus::enabled ? item.unregisterItem() : item.registerItem();
  if (!done) platform::application().beep();
  refreshMenuState();
}

}  // namespace lexwend
