// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/linux/linux_host.h"
#include "tests/contract/host_under_test.h"
#include "tests/linux/contract/other_editor.h"
#include "tests/linux/contract/panel.h"
#include "tests/linux/contract/surroundings.h"
#include "tests/linux/testing/file_troubles.h"
#include "tests/linux/testing/private_bus.h"
#include "tests/linux/testing/temporary_folder.h"

class QMenu;

namespace lexwend::contract {

/// The Linux host with a display, a keyboard and a home of its own. The message bus is one for all tests of a
/// process, because a process has one connection to it.
class LinuxUnderTest : public HostUnderTest {
 public:
  LinuxUnderTest();
  ~LinuxUnderTest() override;
  LinuxUnderTest(const LinuxUnderTest&) = delete;
  LinuxUnderTest& operator=(const LinuxUnderTest&) = delete;

  platform::Host& host() override { return *host_; }
  void restart() override;
  bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit) override;

  void openEditor(std::string_view text) override;
  std::string editorText() override;
  void editorHangs() override { editor_->hang(); }
  void focusPasswordField() override;
  void otherApplicationCopies(std::string_view text) override { surroundings_->copy(text); }
  std::optional<std::string> otherApplicationPastes() override { return surroundings_->paste(); }
  void otherApplicationPromises(const Promises& item) override { surroundings_->promise(item); }

  bool withdrawTrust() override { return false; }
  int prompts() override { return 0; }

  void userPresses(platform::KeyCode keyCode, platform::Modifiers modifiers) override;
  void userHolds(platform::EventFlags modifiers) override;
  void otherProgramTakesHotKey(platform::KeyCode keyCode, platform::Modifiers modifiers) override {
    surroundings_->takeHotKey(keyCode, modifiers);
  }
  bool sharesHotKeys() const override { return surroundings_->sharesHotKeys(); }
  bool tellsBrokenPromises() const override { return surroundings_->tellsBrokenPromises(); }
  bool tellsHeldModifiers() const override { return surroundings_->tellsHeldModifiers(); }

  void disableHebrew() override { surroundings_->setLayouts("us"); }
  void wakeFromSleep() override;

  bool statusItemIsShown() override;
  std::vector<std::string> visibleMenu() override;
  bool chooseMenuEntry(std::string_view title) override;

  std::optional<Recorder> shownRecorder() override;
  bool clickRecorder(RecorderButton button) override;

  void answerNextAlert(std::optional<std::size_t> button, std::function<bool()> when) override;

  bool isInFront() override;
  int beeps() override { return surroundings_->beeps(); }
  bool hasBell() const override { return surroundings_->hasBell(); }
  int tabsToTheFirstButton() const override { return 1; }  // the combination has it first, for screen readers
  std::vector<std::string> openedUrls() override;

  void storeDefault(const std::string& key, const platform::DefaultsValue& value) override;

  std::string writableFolder() override;
  std::optional<std::string> fileBytes(const std::string& path) override;
  void causeTrouble(const std::string& path, FileTrouble trouble) override;

 private:
  void bringToFront(std::unique_ptr<OtherEditor>& place, OtherEditor::Kind kind, std::string_view text);
  Panel& panel();
  QMenu* openMenu();
  /// Clicks as soon as the widget has noticed the pointer; false when it does not.
  bool clickOn(const QWidget& widget, QPoint place);

  test::TemporaryFolder home_;
  std::unique_ptr<Surroundings> surroundings_ = makeSurroundings();
  std::set<int> heldKeys_;
  /// Stands for logind, and asks the bus on the test's behalf.
  std::unique_ptr<platform::BusPeer> sleepManager_;
  std::unique_ptr<platform::LinuxHost> host_;
  std::unique_ptr<Panel> panel_;
  std::unique_ptr<OtherEditor> editor_;
  std::unique_ptr<OtherEditor> passwordField_;
  platform::Registration answering_;
  std::optional<test::FullDisk> fullDisk_;
  std::optional<test::OrdinaryUser> ordinaryUser_;
};

}  // namespace lexwend::contract
