// SPDX-License-Identifier: MIT
#include "platform/fake/fake_host.h"
#include "tests/contract/host_under_test.h"

namespace lexwend::contract {
namespace {

using namespace platform;

/// The in-memory host; what the user or another application does takes a moment of the manual clock.
class FakeUnderTest : public HostUnderTest {
 public:
  Host& host() override { return host_; }

  bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit) override {
    for (auto waited = std::chrono::milliseconds(0); !condition(); waited += kStep) {
      if (waited >= limit) return false;
      host_.advance(kStep);
    }
    return true;
  }

  void openEditor(std::string_view text) override {
    editor_ = host_.apps().open("Editor", "org.lexwend.Editor", std::string(text));
    editor_->focus()->selectAll();
    editor_->copies.delay = kReaction;
    editor_->pastes.delay = kReaction;
  }
  std::string editorText() override { return editor_->focus()->text(); }
  void focusPasswordField() override {
    host_.apps().open("Login", "org.lexwend.Login", "secret")->focus()->password = true;
  }
  void otherApplicationCopies(std::string_view text) override {
    host_.clock().systemDoes(
        kReaction, [this, copied = std::string(text)] { host_.pasteboard().otherAppCopies(copied); });
  }
  std::optional<std::string> otherApplicationPastes() override { return host_.pasteboard().plainText(); }

  void userPresses(std::uint16_t keyCode, std::uint32_t carbonModifiers) override {
    host_.clock().systemDoes(kReaction, [=, this] { host_.userPresses(keyCode, carbonModifiers); });
  }
  void userHolds(EventFlags modifiers) override { host_.keyEvents().holdModifiers(modifiers); }
  void otherProgramTakesHotKey(std::uint32_t keyCode, std::uint32_t carbonModifiers) override {
    host_.hotKeyService().otherAppTakes(keyCode, carbonModifiers);
  }

  void disableHebrew() override { host_.inputSourceService().changeLayouts({usLayout()}); }
  void wakeFromSleep() override { host_.workspace().wake(); }

  std::vector<std::string> visibleMenu() override {
    std::vector<std::string> titles;
    const auto menu = host_.statusBar().menu();
    if (!menu) return titles;
    for (const auto& item : menu->items) {
      if (!item->hidden) titles.push_back(item->separator ? "---" : item->title);
    }
    return titles;
  }
  bool chooseMenuEntry(std::string_view title) override {
    const bool chosen = host_.statusBar().choose(title);
    host_.complaints().take();
    return chosen;
  }

  std::optional<std::string> shownCombination() override {
    const auto* window = host_.recorderWindows().window();
    return window == nullptr ? std::nullopt : std::optional(window->combination);
  }
  bool clickRecorder(RecorderButton button) override {
    const bool clicked = button == RecorderButton::save     ? host_.recorderWindows().clickSave()
                         : button == RecorderButton::cancel ? host_.recorderWindows().clickCancel()
                                                            : host_.recorderWindows().clickCloseBox();
    host_.complaints().take();
    return clicked;
  }

  void answerNextAlert(std::size_t button, std::chrono::milliseconds after) override {
    host_.alerts().answerWith(button, [this, after] { host_.advance(after); });
  }

  std::string writableFolder() override { return host_.files().home + "/Library/Logs"; }
  std::optional<std::string> fileBytes(const std::string& path) override { return host_.files().bytes(path); }

 private:
  static constexpr std::chrono::milliseconds kStep{1};
  static constexpr std::chrono::milliseconds kReaction{5};

  FakeHost host_;
  FakeAppRef editor_;
};

}  // namespace

std::unique_ptr<HostUnderTest> makeHostUnderTest() {
  return std::make_unique<FakeUnderTest>();
}

}  // namespace lexwend::contract
