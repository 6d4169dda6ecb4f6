// SPDX-License-Identifier: MIT
#include "tests/linux/contract/linux_under_test.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QWindow>
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include <gtest/gtest.h>
#include <linux/input-event-codes.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/accessibility.h"
#include "platform/application.h"
#include "platform/hot_key_service.h"
#include "platform/linux/keymap/mac_key_codes.h"
#include "platform/linux/session/buses.h"
#include "platform/linux/session/glib_ref.h"
#include "platform/run_loop.h"
#include "tests/linux/contract/url_opener.h"
#include "tests/linux/testing/virtual_display.h"

namespace lexwend::contract {
namespace {

using namespace platform;

constexpr const char* kSleepManagerName = "org.freedesktop.login1";
/// Far longer than a loaded machine needs to start a program.
constexpr std::chrono::seconds kProgramStart(60);

/// What all tests of a process share: the message bus, the folder in which its programs meet, and what the
/// desktop has installed.
struct Session {
  Session() { ::setenv("XDG_RUNTIME_DIR", folder.path().c_str(), 1); }
  test::TemporaryFolder folder;
  UrlOpener urlOpener{folder.file("share")};
  std::optional<PrivateBus> bus;
};

std::unique_ptr<Session>& session() {
  static std::unique_ptr<Session> instance;
  return instance;
}

/// Ends the session with the tests, before anything static goes.
struct SessionsEnd : ::testing::Environment {
  void TearDown() override { session().reset(); }
};
const auto* const kSessionsEnd = ::testing::AddGlobalTestEnvironment(new SessionsEnd);

/// The environment of a fresh user; the display is there already.
void enterSession(const std::string& home) {
  if (session() == nullptr) session() = std::make_unique<Session>();
  ::setenv("HOME", home.c_str(), 1);
  const std::pair<const char*, const char*> folders[] = {{"XDG_CONFIG_HOME", "/.config"},
                                                         {"XDG_DATA_HOME", "/.local/share"},
                                                         {"XDG_STATE_HOME", "/.local/state"},
                                                         {"XDG_CACHE_HOME", "/.cache"}};
  for (const auto& [name, place] : folders) ::setenv(name, (home + place).c_str(), 1);
  ::setenv("QT_IM_MODULE", "none", 1);
  ::setenv("GSETTINGS_BACKEND", "memory", 1);
  for (const char* name :
       {"XDG_SESSION_TYPE", "XDG_CURRENT_DESKTOP", "QT_ACCESSIBILITY", "AT_SPI_BUS_ADDRESS"}) {
    ::unsetenv(name);
  }
  if (!session()->bus) session()->bus.emplace();
  session()->urlOpener.forget();
}

/// Programs that the bus starts come to this test's display.
void tellBusOfDisplay(BusPeer& peer, std::vector<std::string> names) {
  names.emplace_back("HOME");
  GVariantBuilder variables;
  g_variant_builder_init(&variables, G_VARIANT_TYPE("a{ss}"));
  for (const std::string& name : names) {
    g_variant_builder_add(&variables, "{ss}", name.c_str(), std::getenv(name.c_str()));
  }
  peer.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
            "UpdateActivationEnvironment", g_variant_new("(a{ss})", &variables));
}

bool accessibilityIsOn(BusPeer& peer) {
  const auto reply = peer.call("org.a11y.Bus", "/org/a11y/bus", "org.freedesktop.DBus.Properties", "Get",
                               g_variant_new("(ss)", "org.a11y.Status", "IsEnabled"));
  if (reply == nullptr) return false;
  GVariant* value = nullptr;
  g_variant_get(reply.get(), "(v)", &value);
  const bool on = g_variant_get_boolean(value) != FALSE;
  g_variant_unref(value);
  return on;
}

/// One modifier in the ways in which it is spoken of. Where macOS has Command, a PC has Control.
struct Modifier {
  Modifiers carbon;
  EventFlags flag;
  int evdevKey;
};
constexpr Modifier kModifiers[] = {{kCmdKey, kEventFlagCommand, KEY_LEFTCTRL},
                                   {kShiftKey, kEventFlagShift, KEY_LEFTSHIFT},
                                   {kOptionKey, kEventFlagOption, KEY_LEFTALT},
                                   {kControlKey, kEventFlagControl, KEY_LEFTMETA}};

/// Iterates the main context by way of the toolkit, which sends some of what it has for the display only
/// then.
bool pump(const std::function<bool()>& condition,
          std::chrono::milliseconds limit = std::chrono::seconds(20)) {
  return pumpUntil(
      [&] {
        QCoreApplication::processEvents();
        return condition();
      },
      limit);
}

QWidget* recorderWindow() {
  QWidget* window = QApplication::activeWindow();
  const bool isRecorder = window != nullptr && qobject_cast<QMessageBox*>(window) == nullptr &&
                          !window->findChildren<QPushButton*>().isEmpty();
  return isRecorder && window->isVisible() ? window : nullptr;
}

bool isOnTheScreen(const QWidget& window) {
  return window.isVisible() && window.windowHandle() != nullptr && window.windowHandle()->isExposed();
}

}  // namespace

LinuxUnderTest::LinuxUnderTest() {
  enterSession(home_.path());
  sleepManager_ = std::make_unique<BusPeer>();
  sleepManager_->ownName(kSleepManagerName);
  tellBusOfDisplay(*sleepManager_, surroundings_->variables());
  restart();
}

LinuxUnderTest::~LinuxUnderTest() {
  userHolds(kNoEventFlags);
}

void LinuxUnderTest::restart() {
  host_.reset();  // before the next: there is one application object at a time
  host_ = std::make_unique<LinuxHost>();
  if (const auto reason = host_->application().takeSharedApplication()) throw std::runtime_error(*reason);
}

bool LinuxUnderTest::waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
  return pump(condition, limit);
}

void LinuxUnderTest::bringToFront(std::unique_ptr<OtherEditor>& place, OtherEditor::Kind kind,
                                  std::string_view text) {
  // Applications look once, when they start, whether anybody wants to read them; the agent wants it from its
  // start.
  ASSERT_TRUE(host_->accessibility().isProcessTrusted());
  ASSERT_TRUE(pump([this] { return accessibilityIsOn(*sleepManager_); }));
  place = std::make_unique<OtherEditor>(kind, text);
  ASSERT_TRUE(pump([&place] { return place->isReady(); }, kProgramStart));
}

void LinuxUnderTest::openEditor(std::string_view text) {
  bringToFront(editor_, OtherEditor::Kind::plain, text);
}

std::string LinuxUnderTest::editorText() {
  return editor_->text();
}

void LinuxUnderTest::focusPasswordField() {
  bringToFront(passwordField_, OtherEditor::Kind::password, "secret");
}

void LinuxUnderTest::userPresses(KeyCode keyCode, Modifiers modifiers) {
  const auto key = evdevFromMacKeyCode(keyCode);
  ASSERT_TRUE(key.has_value()) << number(keyCode);
  for (const auto& modifier : kModifiers) {
    if (overlap(modifiers, modifier.carbon)) surroundings_->press(modifier.evdevKey);
  }
  surroundings_->press(*key);
  surroundings_->release(*key);
  for (const auto& modifier : kModifiers) {
    if (overlap(modifiers, modifier.carbon)) surroundings_->release(modifier.evdevKey);
  }
}

void LinuxUnderTest::userHolds(EventFlags modifiers) {
  for (const auto& modifier : kModifiers) {
    const bool holds = heldKeys_.count(modifier.evdevKey) != 0;
    const bool shallHold = overlap(modifiers, modifier.flag);
    if (shallHold && !holds) {
      surroundings_->press(modifier.evdevKey);
      heldKeys_.insert(modifier.evdevKey);
    } else if (!shallHold && holds) {
      surroundings_->release(modifier.evdevKey);
      heldKeys_.erase(modifier.evdevKey);
    }
  }
}

void LinuxUnderTest::wakeFromSleep() {
  // The bus works off what one client sends in its order: the answer says that the host's subscription is
  // there.
  GVariant* answer = g_dbus_connection_call_sync(systemBus(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                                 "org.freedesktop.DBus", "GetId", nullptr, nullptr,
                                                 G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);
  ASSERT_NE(answer, nullptr);
  g_variant_unref(answer);
  for (const bool falling : {true, false}) {
    sleepManager_->emit("/org/freedesktop/login1", "org.freedesktop.login1.Manager", "PrepareForSleep",
                        g_variant_new("(b)", falling ? TRUE : FALSE));
  }
}

Panel& LinuxUnderTest::panel() {
  if (panel_ == nullptr) panel_ = std::make_unique<Panel>();
  return *panel_;
}

bool LinuxUnderTest::statusItemIsShown() {
  return panel().showsItem();
}

bool LinuxUnderTest::clickOn(const QWidget& widget, QPoint place) {
  // The window may still be on its way to its place: the pointer follows.
  const bool noticed = pump([&] {
    surroundings_->pointAt(widget, place);
    return widget.underMouse();
  });
  if (noticed) surroundings_->click();
  return noticed;
}

QMenu* LinuxUnderTest::openMenu() {
  const auto open = [] { return qobject_cast<QMenu*>(QApplication::activePopupWidget()); };
  if (open() == nullptr) {
    if (!pump([this] { return !panel().item().empty(); })) return nullptr;
    panel().click();
  }
  return pump([&] { return open() != nullptr && isOnTheScreen(*open()); }) ? open() : nullptr;
}

std::vector<std::string> LinuxUnderTest::visibleMenu() {
  std::vector<std::string> seen;
  if (surroundings_->panelDrawsMenu()) {
    for (const Panel::Entry& entry : panel().menu()) {
      const std::string key = entry.key.empty() ? "" : " ⌘" + entry.key;
      seen.push_back(entry.isSeparator ? "---" : (entry.isChecked ? "✓ " : "") + entry.title + key);
    }
    return seen;
  }
  const QMenu* menu = openMenu();
  if (menu == nullptr) return seen;
  for (const QAction* entry : menu->actions()) {
    if (!entry->isVisible()) continue;
    QString text = entry->text().replace("&&", "&");
    if (entry->isChecked()) text.prepend("✓ ");
    const QString key = entry->shortcut().toString(QKeySequence::PortableText);
    if (!key.isEmpty()) text += ' ' + QString(key).replace("Ctrl+", "⌘").toLower();
    seen.push_back(entry->isSeparator() ? "---" : text.toStdString());
  }
  return seen;
}

bool LinuxUnderTest::chooseMenuEntry(std::string_view title) {
  if (surroundings_->panelDrawsMenu()) {
    return pump([&] { return !panel().menu().empty(); }) && panel().choose(title);
  }
  const QMenu* menu = openMenu();
  if (menu == nullptr) return false;
  for (QAction* entry : menu->actions()) {
    if (entry->text().replace("&&", "&").toStdString() != title || !entry->isVisible()) continue;
    const bool canBeChosen = entry->isEnabled();
    // Also where it cannot: the click then must do nothing.
    return clickOn(*menu, menu->actionGeometry(entry).center()) && canBeChosen;
  }
  return false;
}

std::optional<HostUnderTest::Recorder> LinuxUnderTest::shownRecorder() {
  const QWidget* window = recorderWindow();
  if (window == nullptr) return std::nullopt;
  // The prompt, the combination, the message, from the top down.
  auto labels = window->findChildren<QLabel*>();
  std::sort(labels.begin(), labels.end(), [](const QLabel* a, const QLabel* b) { return a->y() < b->y(); });
  constexpr qsizetype kLabels = 3;
  if (labels.size() != kLabels) return std::nullopt;
  return Recorder{labels[1]->accessibleName().toStdString(), labels[2]->accessibleName().toStdString(),
                  labels[2]->palette().color(QPalette::WindowText).name().toStdString()};
}

bool LinuxUnderTest::clickRecorder(RecorderButton which) {
  QWidget* window = recorderWindow();
  if (window == nullptr) return false;
  if (which == RecorderButton::closeBox) {
    return pump([&] { return surroundings_->close(*window); });
  }
  const QString title = which == RecorderButton::save ? "שמור" : "ביטול";
  for (const auto* button : window->findChildren<QPushButton*>()) {
    if (button->text() != title) continue;
    const bool canBeClicked = button->isEnabled();
    if (canBeClicked) return clickOn(*button, button->rect().center());
    // The toolkit tells a disabled button nothing of the pointer; a click there must do nothing.
    surroundings_->pointAt(*button, button->rect().center());
    surroundings_->click();
    return false;
  }
  return false;
}

void LinuxUnderTest::answerNextAlert(std::optional<std::size_t> button, std::function<bool()> when) {
  constexpr std::chrono::milliseconds kLook(10);
  answering_ = host_->runLoop().scheduledRepeatingTimer(kLook, [=, this] {
    const auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    if (box == nullptr || !isOnTheScreen(*box) || !when()) return;
    if (!button) {
      if (surroundings_->close(*box)) answering_.cancel();
      return;
    }
    const auto buttons = box->buttons();
    const auto index = static_cast<qsizetype>(*button);
    if (index >= buttons.size()) return;
    const QAbstractButton& wanted = *buttons[index];
    if (!wanted.underMouse()) {
      // The window may still be on its way to its place: the pointer follows.
      surroundings_->pointAt(wanted, wanted.rect().center());
      return;
    }
    answering_.cancel();
    surroundings_->click();
  });
}

bool LinuxUnderTest::isInFront() {
  return QApplication::activeWindow() != nullptr;
}

std::vector<std::string> LinuxUnderTest::openedUrls() {
  return session()->urlOpener.opened();
}

void LinuxUnderTest::storeDefault(const std::string& key, const DefaultsValue& value) {
  const std::filesystem::path path = LinuxUserDefaults::standardPath();
  constexpr const char* kGroup = "Settings";
  const GKeyFileRef file(g_key_file_new());
  g_key_file_load_from_file(file.get(), path.c_str(), G_KEY_FILE_KEEP_COMMENTS, nullptr);
  if (const auto* flag = std::get_if<bool>(&value)) {
    g_key_file_set_boolean(file.get(), kGroup, key.c_str(), *flag ? TRUE : FALSE);
  } else if (const auto* integer = std::get_if<std::int64_t>(&value)) {
    g_key_file_set_int64(file.get(), kGroup, key.c_str(), *integer);
  } else if (const auto* real = std::get_if<double>(&value)) {
    g_key_file_set_double(file.get(), kGroup, key.c_str(), *real);
  } else if (const auto* text = std::get_if<std::string>(&value)) {
    g_key_file_set_string(file.get(), kGroup, key.c_str(), text->c_str());
  } else {
    g_key_file_set_value(file.get(), kGroup, key.c_str(), "1;2;");
  }
  std::filesystem::create_directories(path.parent_path());
  ASSERT_NE(g_key_file_save_to_file(file.get(), path.c_str(), nullptr), FALSE);
}

std::string LinuxUnderTest::writableFolder() {
  return home_.path();
}

std::optional<std::string> LinuxUnderTest::fileBytes(const std::string& path) {
  struct stat state {};
  if (::stat(path.c_str(), &state) != 0) return std::nullopt;
  return test::contentsOf(path);
}

void LinuxUnderTest::causeTrouble(const std::string& path, FileTrouble trouble) {
  switch (trouble) {
    case FileTrouble::readOnly:
      std::filesystem::permissions(path, std::filesystem::perms::owner_read);
      ordinaryUser_.emplace(home_.path());
      return;
    case FileTrouble::diskFull:
      fullDisk_.emplace(std::filesystem::file_size(path));
      return;
    case FileTrouble::closeFails:
      // Closed behind the handle's back: closing it once more is an error of the system's.
      for (const auto& open : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code ignored;
        if (std::filesystem::read_symlink(open, ignored) != path) continue;
        ::close(std::stoi(open.path().filename()));
        return;
      }
      FAIL() << path << " is not open";
  }
}

std::unique_ptr<HostUnderTest> makeHostUnderTest() {
  return std::make_unique<LinuxUnderTest>();
}

}  // namespace lexwend::contract
