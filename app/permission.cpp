// SPDX-License-Identifier: MIT
#include <chrono>

#include "app/app_delegate.h"
#include "input/input_sources.h"
#include "platform/accessibility.h"
#include "platform/alerts.h"
#include "platform/application.h"
#include "platform/input_sources.h"
#include "platform/login_item.h"
#include "platform/workspace.h"
#include "support/settings.h"
#include "text/text_access.h"

namespace lexwend {
namespace {

constexpr std::chrono::milliseconds kPollingInterval{2000};

}  // namespace

void AppDelegate::startPermissionPolling() {
  if (permissionTimer_ != nullptr) permissionTimer_->invalidate();
  permissionTimer_ = platform::runLoop().scheduledRepeatingTimer(
      kPollingInterval, [weak = weak_from_this()](platform::Timer& timer) {
        if (const auto self = weak.lock()) {
          self->permissionPollingTick(timer);
        } else {
          timer.invalidate();
        }
      });
}

void AppDelegate::permissionPollingTick(platform::Timer& timer) {
  if (!platform::accessibility().isProcessTrusted()) return;
  timer.invalidate();
  permissionTimer_.reset();
  refreshMenuState();
}

void AppDelegate::observeSystemEvents() {
  platform::workspace().observeDidWake(weakly(&AppDelegate::didWake));
  platform::inputSourceService().observeEnabledLayoutsChanged(weakly(&AppDelegate::enabledLayoutsChanged));
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
  // The flag first, and a refusal is final: who switches the login item off later is never switched back on.
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
