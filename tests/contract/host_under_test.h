// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/host.h"
#include "platform/keys.h"
#include "platform/user_defaults.h"

namespace lexwend::contract {

/// One host with the few things around it that a contract speaks of: the user, other applications, the
/// desktop. Each host's runner defines makeHostUnderTest(); every test gets a fresh one, with this set up:
/// - two enabled layouts, first a US Latin one, in use, then a standard Hebrew one;
/// - this process trusted for Accessibility, nothing on the pasteboard, no application in front;
/// - empty user defaults, no login item;
/// - the shared application taken.
class HostUnderTest {
 public:
  virtual ~HostUnderTest() = default;
  virtual platform::Host& host() = 0;
  /// The process ends and runs again: another host, while the user's things stay.
  virtual void restart() = 0;

  /// Turns the run loop until the condition holds, at most for the limit; whether it holds.
  virtual bool waitUntil(const std::function<bool()>& condition,
                         std::chrono::milliseconds limit = std::chrono::seconds(20)) = 0;

  /// An editor in front with this text, all of it selected, and the focus in it.
  virtual void openEditor(std::string_view text) = 0;
  virtual std::string editorText() = 0;
  /// From now on the editor lets every Accessibility call wait.
  virtual void editorHangs() = 0;
  /// A password field in front with the focus in it.
  virtual void focusPasswordField() = 0;
  /// Another application copies a text, or reads the text that is there.
  virtual void otherApplicationCopies(std::string_view text) = 0;
  virtual std::optional<std::string> otherApplicationPastes() = 0;
  /// Types in order with the data that is given when somebody asks for it; nothing: the promise is broken.
  using Promises = std::vector<std::pair<std::string, std::optional<std::string>>>;
  /// Whether the system tells a promise that is broken from data of no length.
  virtual bool tellsBrokenPromises() const { return true; }
  /// Another application copies one item of promised data.
  virtual void otherApplicationPromises(const Promises& item) = 0;

  /// The user withdraws the permission for Accessibility; false on a system where nobody needs one.
  virtual bool withdrawTrust() = 0;
  /// How often the system asked the user for it.
  virtual int prompts() = 0;

  /// The user presses and releases a key by its macOS virtual key code, with Carbon modifiers.
  virtual void userPresses(platform::KeyCode keyCode, platform::Modifiers modifiers) = 0;
  /// The user holds exactly these modifiers from now on; none: lets go of all.
  virtual void userHolds(platform::EventFlags modifiers) = 0;
  /// Another program takes a hot key for itself.
  virtual void otherProgramTakesHotKey(platform::KeyCode keyCode, platform::Modifiers modifiers) = 0;
  /// Whether a press then reaches both programs, instead of the later one being refused.
  virtual bool sharesHotKeys() const { return false; }

  /// Whether the system tells a program that is not in front which modifiers the user holds.
  virtual bool tellsHeldModifiers() const { return true; }

  /// The set of enabled layouts changes: only the Latin one stays.
  virtual void disableHebrew() = 0;
  virtual void wakeFromSleep() = 0;

  virtual bool statusItemIsShown() = 0;
  /// The menu's entries as the user sees them, top down: "✓ title ⌘q" of one with a check mark and a key
  /// equivalent, "---" of a separator.
  virtual std::vector<std::string> visibleMenu() = 0;
  /// The user chooses an entry; false when it cannot be chosen.
  virtual bool chooseMenuEntry(std::string_view title) = 0;

  enum class RecorderButton { save, cancel, closeBox };
  struct Recorder {
    std::string combination, message;
    std::string messageColor;  ///< by the host's own name
  };
  /// What the recorder window on the screen shows; nothing when none is there.
  virtual std::optional<Recorder> shownRecorder() = 0;
  /// The user clicks; false when there is nothing to click or it is disabled.
  virtual bool clickRecorder(RecorderButton button) = 0;

  /// The user will press that button of the next alert (0 is the first), or close its window (nothing), as
  /// soon as the condition holds.
  virtual void answerNextAlert(
      std::optional<std::size_t> button, std::function<bool()> when = [] { return true; }) = 0;

  /// Whether this application is in front, before the editor that was opened.
  virtual bool isInFront() = 0;
  virtual int beeps() = 0;
  /// Whether the system has an alert sound.
  virtual bool hasBell() const { return true; }
  /// How often Tab must be pressed in a new recorder window until its first button has the focus.
  virtual int tabsToTheFirstButton() const { return 0; }
  /// The URLs of the scheme "lexwend-contract" that came to the program that opens such.
  virtual std::vector<std::string> openedUrls() = 0;

  /// Somebody else stores a value in this application's user defaults.
  virtual void storeDefault(const std::string& key, const platform::DefaultsValue& value) = 0;

  /// A folder that exists and can be written to, absolute, without a slash at its end.
  virtual std::string writableFolder() = 0;
  /// The bytes of a file; nothing when it does not exist.
  virtual std::optional<std::string> fileBytes(const std::string& path) = 0;
  enum class FileTrouble {
    readOnly,    ///< a file that is there must not be written
    diskFull,    ///< a file takes no byte beyond its present end
    closeFails,  ///< closing the file's open handle is an error
  };
  virtual void causeTrouble(const std::string& path, FileTrouble trouble) = 0;
};

/// Declared once, defined by each runner.
std::unique_ptr<HostUnderTest> makeHostUnderTest();

}  // namespace lexwend::contract
