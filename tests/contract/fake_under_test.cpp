// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "platform/fake/fake_host.h"
#include "tests/contract/host_under_test.h"

namespace lexwend::contract {
namespace {

using namespace platform;

/// The in-memory host; what the user or another application does takes a moment of the manual clock.
class FakeUnderTest : public HostUnderTest {
 public:
  FakeUnderTest() {
    host_.application().whileRunning = [this] {
      EXPECT_TRUE(waitUntil([this] { return host_.application().terminated; }, kPatience))
          << "nobody ended the event loop";
    };
  }
  Host& host() override { return host_; }
  void restart() override { host_.processEnds(); }

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
  void editorHangs() override {
    for (const auto operation : {AccessOperation::read, AccessOperation::settable, AccessOperation::write}) {
      editor_->focus()->answer(operation, kSelectedTextAttribute, FakeAnswer::hangs(kPatience));
    }
  }
  void focusPasswordField() override {
    host_.apps().open("Login", "org.lexwend.Login", "secret")->focus()->password = true;
  }
  void otherApplicationCopies(std::string_view text) override {
    host_.clock().systemDoes(
        kReaction, [this, copied = std::string(text)] { host_.pasteboard().otherAppCopies(copied); });
  }
  std::optional<std::string> otherApplicationPastes() override { return host_.pasteboard().plainText(); }
  void otherApplicationPromises(const Promises& item) override {
    FakePasteboardItemContents contents;
    for (const auto& [type, bytes] : item) {
      contents.push_back(bytes ? FakePasteboardEntry::data(type, *bytes)
                               : FakePasteboardEntry::brokenPromise(type));
      contents.back().fetchTime = kReaction;
    }
    host_.clock().systemDoes(kReaction, [this, contents] { host_.pasteboard().otherAppWrites({contents}); });
  }

  bool withdrawTrust() override {
    host_.accessibility().setTrusted(false);
    return true;
  }
  int prompts() override { return host_.accessibility().prompts(); }

  void userPresses(KeyCode keyCode, Modifiers modifiers) override {
    host_.clock().systemDoes(kReaction, [=, this] { host_.userPresses(keyCode, modifiers); });
  }
  void userHolds(EventFlags modifiers) override { host_.keyEvents().holdModifiers(modifiers); }
  void otherProgramTakesHotKey(KeyCode keyCode, Modifiers modifiers) override {
    host_.hotKeyService().otherAppTakes(keyCode, modifiers);
  }

  void disableHebrew() override { host_.inputSourceService().changeLayouts({usLayout()}); }
  void wakeFromSleep() override { host_.workspace().wake(); }

  bool statusItemIsShown() override { return host_.statusBar().item() != nullptr; }
  std::vector<std::string> visibleMenu() override {
    std::vector<std::string> seen;
    const auto menu = host_.statusBar().menu();
    if (!menu) return seen;
    for (const auto& item : menu->items) {
      if (item->hidden) continue;
      const std::string key = item->keyEquivalent.empty() ? "" : " ⌘" + item->keyEquivalent;
      seen.push_back(item->separator ? "---" : (item->checked ? "✓ " : "") + item->title + key);
    }
    return seen;
  }
  bool chooseMenuEntry(std::string_view title) override {
    const bool chosen = host_.statusBar().choose(title);
    host_.complaints().take();
    return chosen;
  }

  std::optional<Recorder> shownRecorder() override {
    const auto* window = host_.recorderWindows().window();
    if (window == nullptr) return std::nullopt;
    const auto color = std::to_string(static_cast<int>(window->messageColor));
    return Recorder{window->combination, window->message, color};
  }
  bool clickRecorder(RecorderButton button) override {
    const bool clicked = button == RecorderButton::save     ? host_.recorderWindows().clickSave()
                         : button == RecorderButton::cancel ? host_.recorderWindows().clickCancel()
                                                            : host_.recorderWindows().clickCloseBox();
    host_.complaints().take();
    return clicked;
  }

  void answerNextAlert(std::optional<std::size_t> button, std::function<bool()> when) override {
    const auto meanwhile = [this, when = std::move(when)] { EXPECT_TRUE(waitUntil(when, kPatience)); };
    if (button) {
      host_.alerts().answerWith(*button, meanwhile);
    } else {
      host_.alerts().answerByClosing(meanwhile);
    }
  }

  bool isInFront() override { return !host_.application().activations.empty(); }
  int beeps() override { return host_.application().beeps; }
  std::vector<std::string> openedUrls() override { return host_.workspace().openedUrls(); }

  void storeDefault(const std::string& key, const DefaultsValue& value) override {
    host_.standardUserDefaults().put(key, value);
  }

  std::string writableFolder() override { return host_.files().home + "/Library/Logs"; }
  std::optional<std::string> fileBytes(const std::string& path) override { return host_.files().bytes(path); }
  void causeTrouble(const std::string& path, FileTrouble trouble) override {
    switch (trouble) {
      case FileTrouble::readOnly:
        return host_.files().setReadOnly(path, true);
      case FileTrouble::diskFull:
        return host_.failNext(FakeOperation::writeFile);
      case FileTrouble::closeFails:
        return host_.failNext(FakeOperation::closeFile);
    }
  }

 private:
  static constexpr std::chrono::milliseconds kStep{1};
  static constexpr std::chrono::milliseconds kReaction{5};
  static constexpr std::chrono::seconds kPatience{20};

  FakeHost host_;
  FakeAppRef editor_;
};

}  // namespace

std::unique_ptr<HostUnderTest> makeHostUnderTest() {
  return std::make_unique<FakeUnderTest>();
}

}  // namespace lexwend::contract
