// SPDX-License-Identifier: MIT
#include <chrono>
#include <string>
#include <string_view>

#include "app/app_delegate.h"
#include "input/input_sources.h"
#include "platform/accessibility.h"
#include "platform/alerts.h"
#include "platform/application.h"
#include "platform/hot_key_service.h"
#include "platform/input_sources.h"
#include "platform/login_item.h"
#include "platform/run_loop.h"
#include "platform/workspace.h"
#include "support/settings.h"
#include "text/text_access.h"

namespace lexwend {
namespace {

constexpr std::chrono::milliseconds kPollingInterval{2000};

/// The desktop has shown its panel and its windows by then.
constexpr std::chrono::milliseconds kOfferDelay{3000};

constexpr std::string_view kNoEnglishLayout =
    "שפת המקלדת לא תוחלף לאנגלית אחרי תיקון, כי לא מופעלת פריסת מקלדת אנגלית.";
constexpr std::string_view kNoHebrewLayout =
    "שפת המקלדת לא תוחלף לעברית אחרי תיקון, כי לא מופעלת פריסת מקלדת עברית.";
constexpr std::string_view kNeitherLayout =
    "שפת המקלדת לא תוחלף אחרי תיקון, כי לא מופעלות פריסות מקלדת של עברית ושל אנגלית.";

/// Asks the user for a change to the desktop, and keeps the answer under that key.
bool asksFor(std::string_view question, std::string_view explanation, std::string_view key) {
  platform::application().activate(/*ignoringOtherApps=*/true);
  const int response = platform::alerts().runModal({.messageText = std::string(question),
                                                    .informativeText = std::string(explanation),
                                                    .buttons = {"הוסף", "לא עכשיו"}});
  const bool agreed = response == platform::kAlertFirstButtonReturn;
  Settings::d().setBool(agreed, key);
  return agreed;
}

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

void AppDelegate::readLayouts() {
  layoutMap_ = LayoutMap::build(InputSources::keyTables());
  const bool toHebrew = InputSources::keyboardLayout("he").has_value();
  const bool toEnglish = InputSources::keyboardLayout("en").has_value();
  whyLayoutCannotFollow_ = toHebrew && toEnglish ? ""
                           : toHebrew            ? kNoEnglishLayout
                           : toEnglish           ? kNoHebrewLayout
                                                 : kNeitherLayout;
}

void AppDelegate::enabledLayoutsChanged() {
  readLayouts();
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

void AppDelegate::offerKeyBinding() {
  if (!platform::hotKeyService().needsAgreement()) return;
  if (!Settings::d().objectForKey(Settings::kMayBindKeyKey)) {
    platform::runLoop().dispatchAfter(kOfferDelay, weakly(&AppDelegate::askForKeyBinding));
  } else if (Settings::d().boolForKey(Settings::kMayBindKeyKey)) {
    platform::hotKeyService().agree();
    refreshMenuState();
  }
}

void AppDelegate::askForKeyBinding() {
  const std::string key = HotKeyCenter::displayName(Settings::hotKeyCode(), Settings::hotKeyModifiers());
  const bool agreed =
      asksFor("להוסיף קיצור מקלדת?",
              "סביבת העבודה לא מרשה לתוכנה לקבל מקש קיצור. אפשר להוסיף להגדרות המקלדת שלה את " + key +
                  " כקיצור שמפעיל את Lexwend. הקיצור יוסר כשיוצאים מ־Lexwend.",
              Settings::kMayBindKeyKey);
  if (agreed) platform::hotKeyService().agree();
  refreshMenuState();
}

void AppDelegate::offerInstallation() {
  if (Settings::d().objectForKey(Settings::kMayInstallKey)) return;
  if (!platform::application().gainsByInstallation()) return;
  platform::runLoop().dispatchAfter(kOfferDelay, weakly(&AppDelegate::askForInstallation));
}

void AppDelegate::askForInstallation() {
  const bool agreed =
      asksFor("להוסיף את Lexwend לתפריט היישומים?",
              "סביבת העבודה מרשה ללחוץ על מקשים רק לתוכנה שנמצאת בתפריט היישומים. בלי זה לא יתוקן טקסט "
              "שאפשר להחליף רק דרך לוח העריכה. אחרי ההוספה Lexwend תופעל מחדש.",
              Settings::kMayInstallKey);
  if (agreed && !platform::application().install()) platform::application().beep();
}

void AppDelegate::setupLoginItem() {
  if (Settings::d().boolForKey(Settings::kDidRegisterLoginItemKey)) {
    platform::loginItem().followProgram();
    return;
  }
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
