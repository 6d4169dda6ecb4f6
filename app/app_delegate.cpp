// SPDX-License-Identifier: MIT
#include "app/app_delegate.h"

#include <string>
#include <string_view>

#include "input/input_sources.h"
#include "platform/accessibility.h"
#include "platform/alerts.h"
#include "platform/application.h"
#include "platform/hot_key_service.h"
#include "platform/login_item.h"
#include "support/fatal.h"
#include "support/log.h"
#include "support/settings.h"

namespace lexwend {
namespace {

constexpr std::string_view kReadySymbol = "keyboard";
constexpr std::string_view kWaitingSymbol = "keyboard.badge.ellipsis";

// The four spaces separate the combination from the words.
constexpr std::string_view kFixTitle = "תקן טקסט מסומן    ";

std::string storedHotKeyName() {
  return HotKeyCenter::displayName(Settings::hotKeyCode(), Settings::hotKeyModifiers());
}

std::string statusLineTitle(bool trusted, bool builtFromSystem) {
  const std::string version = "גרסה " + platform::application().shortVersionString().value_or(std::string());
  if (!trusted) return version + " · ממתין לאישור נגישות";
  return version + " · " + (builtFromSystem ? "פריסה מהמערכת" : "פריסה קבועה") + " · פעיל";
}

}  // namespace

std::shared_ptr<AppDelegate> AppDelegate::create(HotKeyCenter& hotKeyCenter) {
  return std::shared_ptr<AppDelegate>(new AppDelegate(hotKeyCenter));
}

AppDelegate::AppDelegate(HotKeyCenter& hotKeyCenter)
    : hotKeyCenter_(hotKeyCenter),
      fixItem_(platform::statusBar().makeMenuItem()),
      changeKeyItem_(platform::statusBar().makeMenuItem()),
      switchItem_(platform::statusBar().makeMenuItem()),
      loginItem_(platform::statusBar().makeMenuItem()),
      compatItem_(platform::statusBar().makeMenuItem()),
      permissionItem_(platform::statusBar().makeMenuItem()),
      statusLine_(platform::statusBar().makeMenuItem()) {
  readLayouts();
}

void AppDelegate::applicationDidFinishLaunching() {
  setupStatusItem();
  registerHotKey();
  setupLoginItem();
  observeSystemEvents();
  if (!platform::accessibility().isProcessTrusted()) {
    platform::accessibility().isProcessTrustedWithPrompt();
    startPermissionPolling();
  }
  refreshMenuState();
  receiveCommands();
  offerKeyBinding();
  offerInstallation();
}

void AppDelegate::setupStatusItem() {
  statusItem_ = platform::statusBar().statusItem(platform::kSquareStatusItemLength);
  showSymbol(kReadySymbol);

  fixItem_->setAction(weakly(&AppDelegate::fixSelectionFromMenu));
  changeKeyItem_->setTitle("שנה מקש קיצור…");
  changeKeyItem_->setAction(weakly(&AppDelegate::changeHotKey));
  switchItem_->setTitle("החלף שפת מקלדת אחרי תיקון");
  switchItem_->setAction(weakly(&AppDelegate::toggleSwitchLayout));
  loginItem_->setTitle("הפעל עם הכניסה למחשב");
  loginItem_->setAction(weakly(&AppDelegate::toggleLoginItem));
  compatItem_->setTitle("מצב תאימות (דרך הלוח)");
  compatItem_->setAction(weakly(&AppDelegate::toggleCompat));
  permissionItem_->setTitle("נדרש אישור נגישות…");
  permissionItem_->setAction(weakly(&AppDelegate::openPermission));
  statusLine_->setEnabled(false);
  const platform::MenuItemRef quitItem = platform::statusBar().makeMenuItem();
  quitItem->setTitle("יציאה");
  quitItem->setTerminatesApplication();
  quitItem->setKeyEquivalent("q");

  const platform::MenuRef menu = platform::statusBar().makeMenu();
  menu->setAutoenablesItems(false);
  menu->addItem(fixItem_);
  menu->addItem(changeKeyItem_);
  menu->addSeparator();
  menu->addItem(switchItem_);
  menu->addItem(loginItem_);
  menu->addItem(compatItem_);
  menu->addSeparator();
  menu->addItem(permissionItem_);
  menu->addItem(statusLine_);
  menu->addSeparator();
  menu->addItem(quitItem);
  statusItem().setMenu(menu);
}

void AppDelegate::refreshMenuState() {
  fixItem_->setTitle(std::string(kFixTitle) + storedHotKeyName());
  switchItem_->setChecked(Settings::switchLayoutAfter());
  compatItem_->setChecked(Settings::compatMode());
  loginItem_->setChecked(platform::loginItem().status() == platform::LoginItemStatus::enabled);
  const bool trusted = platform::accessibility().isProcessTrusted();
  permissionItem_->setHidden(trusted);
  statusLine_->setTitle(statusLineTitle(trusted, layoutMap_.builtFromSystem));
  statusLine_->setToolTip(whatDoesNotWork());
  showSymbol(trusted ? kReadySymbol : kWaitingSymbol);
}

std::string AppDelegate::whatDoesNotWork() const {
  std::string why(platform::hotKeyService().whyNoPressComes());
  if (why.empty()) why = platform::application().limitation();
  if (why.empty() && Settings::switchLayoutAfter()) why = whyLayoutCannotFollow_;
  return why;
}

bool AppDelegate::registerHotKey() {
  hotKeyCenter_.unregisterAll();
  const platform::KeyCode code = Settings::hotKeyCode();
  const platform::Modifiers modifiers = Settings::hotKeyModifiers();
  const bool ok = hotKeyCenter_.registerHotKey(code, modifiers, [weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->performFix();
  });
  Log::write("hotkey: register " + storedHotKeyName() + " ok=" + (ok ? "true" : "false"));
  return ok;
}

void AppDelegate::changeHotKey() {
  const platform::KeyCode previousCode = Settings::hotKeyCode();
  const platform::Modifiers previousModifiers = Settings::hotKeyModifiers();
  // Pressing the current combination inside the recorder must not start a fix.
  hotKeyCenter_.unregisterAll();
  recorder_ = HotKeyRecorderWindowController::create(
      [weak = weak_from_this(), previousCode, previousModifiers](bool saved) {
        if (const auto self = weak.lock()) self->recorderDone(saved, previousCode, previousModifiers);
      });
  recorder_->present();
}

void AppDelegate::recorderDone(bool saved, platform::KeyCode previousCode,
                               platform::Modifiers previousModifiers) {
  const auto doneRecorder = recorder_;
  const bool ok = registerHotKey();
  if (saved && !ok) {
    Settings::setHotKey(previousCode, previousModifiers);
    registerHotKey();
    platform::application().activate(/*ignoringOtherApps=*/true);
    platform::alerts().runModal(
        {.messageText = "הצירוף תפוס",
         .informativeText = "המערכת לא אפשרה לרשום את הצירוף הזה, כנראה אפליקציה אחרת כבר משתמשת בו. "
                            "חזרנו לצירוף הקודם.",
         .buttons = {"אישור"}});
  }
  // The menu works while the alert is open, and the user may have opened another recorder with it. Destroying
  // that recorder would close its window without a report, and the hot key would stay unregistered.
  if (recorder_ == doneRecorder) recorder_.reset();
  refreshMenuState();
}

void AppDelegate::toggleSwitchLayout() {
  Settings::d().setBool(!Settings::switchLayoutAfter(), Settings::kSwitchLayoutAfterKey);
  refreshMenuState();
}

void AppDelegate::toggleCompat() {
  Settings::d().setBool(!Settings::compatMode(), Settings::kCompatModeKey);
  refreshMenuState();
}

platform::StatusItem& AppDelegate::statusItem() const {
  if (statusItem_ == nullptr) fatal("there is no status item");
  return *statusItem_;
}

void AppDelegate::showSymbol(std::string_view name) {
  const platform::SymbolImageRef image =
      platform::statusBar().symbolImage(name, platform::application().displayName());
  if (image != nullptr) image->setTemplate(true);
  statusItem().setImage(image);
}

std::function<void()> AppDelegate::weakly(void (AppDelegate::*operation)()) {
  return [weak = weak_from_this(), operation] {
    if (const auto self = weak.lock()) (self.get()->*operation)();
  };
}

}  // namespace lexwend
