// SPDX-License-Identifier: MIT
// The macOS host, on doubles of the system, as the contract suite sees it.
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <utility>

#include <gtest/gtest.h>

#include "platform/application.h"
#include "tests/contract/host_under_test.h"
#include "tests/mac/mac_desktop.h"

namespace lexwend::contract {
namespace {

std::filesystem::path newFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "lexwend-mac-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no folder for the test");
  return name;
}

class MacUnderTest : public HostUnderTest {
 public:
  MacUnderTest() {
    doubles::process::setHomeDirectory(folder_.string());
    doubles::process::setIdentifier(4242);
    doubles::status_bar::symbolIsUnknown("lexwend.nowhere");
    doubles::alerts::answerWith([this](const auto& alert) { return answer(alert.buttons.size()); });
    start();
  }
  ~MacUnderTest() override {
    host_ = nullptr;
    EXPECT_EQ(session_.unbalancedObjects(), "");
    std::filesystem::remove_all(folder_);
  }
  platform::Host& host() override { return *host_; }
  void restart() override {
    host_ = nullptr;
    doubles::process::end();
    start();
  }

  bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit) override {
    for (auto waited = std::chrono::milliseconds(0); !condition(); waited += kStep) {
      if (waited >= limit) return false;
      doubles::time::advance(kStep);
    }
    return true;
  }

  void openEditor(std::string_view text) override { desktop_.openEditor(std::string(text)); }
  std::string editorText() override { return desktop_.editorText(); }
  void editorHangs() override { doubles::MacDesktop::editorHangs(); }
  void focusPasswordField() override { desktop_.focusPasswordField(); }
  void otherApplicationCopies(std::string_view text) override {
    doubles::time::later(doubles::MacDesktop::kReaction,
                         [copied = std::string(text)] { doubles::pasteboard::otherAppCopiesText(copied); });
  }
  std::optional<std::string> otherApplicationPastes() override {
    return doubles::MacDesktop::pasteboardText();
  }

  void otherApplicationPromises(const Promises& item) override {
    doubles::pasteboard::Item promised;
    for (const auto& [type, bytes] : item) {
      const auto data = bytes ? std::optional(doubles::bytesOf(*bytes)) : std::nullopt;
      promised.push_back({.type = type, .data = data, .isPromised = true});
    }
    doubles::time::later(doubles::MacDesktop::kReaction,
                         [promised] { doubles::pasteboard::otherAppCopies({promised}); });
  }

  bool withdrawTrust() override {
    doubles::accessibility::setTrusted(false);
    return true;
  }
  int prompts() override { return doubles::accessibility::promptsShown(); }

  void userPresses(platform::KeyCode keyCode, platform::Modifiers modifiers) override {
    if (doubles::hot_keys::press(number(keyCode), number(modifiers)).has_value()) return;
    const auto code = static_cast<std::uint16_t>(keyCode);
    if (doubles::windows::pressKey(code, number(eventFlagsOf(modifiers)))) return;
    if (recorder()) {
      if (keyCode == platform::kKeySpace) clickRecorder(RecorderButton::save);
    } else if (modifiers == platform::kNoModifiers) {
      desktop_.pressKeyInEditor(code);
    }
  }
  void userHolds(platform::EventFlags modifiers) override {
    doubles::key_events::setModifiersHeld(number(modifiers));
  }
  // Each program has its own registrations; only an exclusive one is in the way of others.
  void otherProgramTakesHotKey(platform::KeyCode, platform::Modifiers) override {}
  bool sharesHotKeys() const override { return true; }

  void disableHebrew() override {
    doubles::MacDesktop::installLayouts({platform::usLayout()});
    doubles::input_sources::postEnabledSourcesChanged();
  }
  void wakeFromSleep() override { doubles::workspace::postDidWake(); }

  bool statusItemIsShown() override { return !doubles::status_bar::items().empty(); }
  std::vector<std::string> visibleMenu() override {
    std::vector<std::string> seen;
    for (const auto& item : menu()) {
      if (item.isHidden) continue;
      const std::string key = item.keyEquivalent.empty() ? "" : " ⌘" + item.keyEquivalent;
      seen.push_back(item.isSeparator ? "---" : (item.state == kOn ? "✓ " : "") + item.title + key);
    }
    return seen;
  }
  bool chooseMenuEntry(std::string_view title) override {
    const auto items = menu();
    const bool canBeChosen = std::any_of(items.begin(), items.end(), [title](const auto& item) {
      return item.title == title && item.isEnabled && !item.isHidden;
    });
    if (canBeChosen) doubles::status_bar::choose(std::string(title));
    return canBeChosen;
  }

  std::optional<Recorder> shownRecorder() override {
    const auto window = recorder();
    if (!window) return std::nullopt;
    const auto& message = window->controls.at(kMessage);
    return Recorder{window->controls.at(kCombination).text, message.text, message.color};
  }
  bool clickRecorder(RecorderButton button) override {
    const auto window = recorder();
    if (!window) return false;
    if (button == RecorderButton::closeBox) {
      doubles::windows::closeByUser();
      return true;
    }
    const auto& control = window->controls.at(button == RecorderButton::save ? kSave : kCancel);
    if (control.isEnabled) doubles::windows::click(control.text);
    return control.isEnabled;
  }

  void answerNextAlert(std::optional<std::size_t> button, std::function<bool()> when) override {
    nextAnswer_ = {button, std::move(when)};
  }

  bool isInFront() override { return doubles::app::activations() > 0; }
  int beeps() override { return doubles::app::beeps(); }
  std::vector<std::string> openedUrls() override { return doubles::workspace::openedUrls(); }

  void storeDefault(const std::string& key, const platform::DefaultsValue& value) override {
    doubles::defaults::set(key, std::visit(StoredObject(), value));
  }

  std::string writableFolder() override { return folder_.string(); }
  std::optional<std::string> fileBytes(const std::string& path) override {
    std::ifstream stream(path, std::ios::binary);
    if (!stream) return std::nullopt;
    std::ostringstream bytes;
    bytes << stream.rdbuf();
    return bytes.str();
  }
  void causeTrouble(const std::string& path, FileTrouble trouble) override {
    switch (trouble) {
      case FileTrouble::readOnly:
        return doubles::process::setReadOnly(path);
      case FileTrouble::diskFull:
        return doubles::failures::failNext("-[NSFileHandle writeData:]");
      case FileTrouble::closeFails:
        return doubles::failures::failNext("-[NSFileHandle closeAndReturnError:]");
    }
  }

 private:
  static constexpr std::chrono::milliseconds kStep{1};
  static constexpr std::chrono::seconds kPatience{20};
  static constexpr long kFirstButton = 1000;
  static constexpr long kOn = 1;
  /// Where the controls stand in the window.
  static constexpr std::size_t kCombination = 1, kMessage = 2, kSave = 3, kCancel = 4;
  /// Presses the window's first button where keyboard navigation is on.

  struct Answer {
    std::optional<std::size_t> button;
    std::function<bool()> when;
  };
  struct StoredObject {
    doubles::Value operator()(const platform::OtherDefaultsValue&) const { return doubles::Bytes(); }
    doubles::Value operator()(const auto& value) const { return value; }
  };

  void start() {
    host_ = platform::makeHost();
    host_->application().takeSharedApplication();
    doubles::app::setEventLoop([this] {
      EXPECT_TRUE(waitUntil(doubles::app::isTerminated, kPatience)) << "nobody ended the event loop";
    });
  }
  long answer(std::size_t buttons) {
    const auto next = std::exchange(nextAnswer_, {}).value();
    for (auto waited = std::chrono::milliseconds(0); !next.when() && waited < kPatience; waited += kStep) {
      doubles::time::advanceInModalPanel(kStep);
    }
    EXPECT_TRUE(next.when());
    return kFirstButton + static_cast<long>(next.button.value_or(buttons - 1));
  }

  static std::vector<doubles::status_bar::MenuItem> menu() {
    const auto items = doubles::status_bar::items();
    if (items.empty()) return {};
    return items.front().menu.value_or(std::vector<doubles::status_bar::MenuItem>());
  }
  static std::optional<doubles::windows::Window> recorder() {
    for (const auto& window : doubles::windows::all()) {
      if (window.isVisible) return window;
    }
    return std::nullopt;
  }

  doubles::Session session_;
  doubles::MacDesktop desktop_;
  std::filesystem::path folder_ = newFolder();
  std::unique_ptr<platform::Host> host_;
  std::optional<Answer> nextAnswer_;
};

}  // namespace

std::unique_ptr<HostUnderTest> makeHostUnderTest() {
  return std::make_unique<MacUnderTest>();
}

}  // namespace lexwend::contract
