// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/host.h"
#include "platform/key_events.h"

namespace lexwend::contract {

/// One host with the few things around it that a contract speaks of: the user, other applications, the
/// desktop. Each host's runner defines makeHostUnderTest(); every test gets a fresh one, with this set up:
/// - two enabled layouts, first a US Latin one, in use, then a standard Hebrew one;
/// - this process trusted for Accessibility, nothing on the pasteboard, no application in front;
/// - empty user defaults, no login item.
class HostUnderTest {
 public:
  virtual ~HostUnderTest() = default;
  virtual platform::Host& host() = 0;

  /// Turns the run loop until the condition holds, at most for the limit; whether it holds.
  virtual bool waitUntil(const std::function<bool()>& condition,
                         std::chrono::milliseconds limit = std::chrono::seconds(20)) = 0;

  /// An editor in front with this text, all of it selected, and the focus in it.
  virtual void openEditor(std::string_view text) = 0;
  virtual std::string editorText() = 0;
  /// A password field in front with the focus in it.
  virtual void focusPasswordField() = 0;
  /// Another application copies a text, or reads the text that is there.
  virtual void otherApplicationCopies(std::string_view text) = 0;
  virtual std::optional<std::string> otherApplicationPastes() = 0;

  /// The user presses and releases a key by its macOS virtual key code, with Carbon modifiers.
  virtual void userPresses(std::uint16_t keyCode, std::uint32_t carbonModifiers) = 0;
  /// The user holds exactly these modifiers from now on; none: lets go of all.
  virtual void userHolds(platform::EventFlags modifiers) = 0;
  /// Another program takes a hot key for itself.
  virtual void otherProgramTakesHotKey(std::uint32_t keyCode, std::uint32_t carbonModifiers) = 0;
  /// Whether a press then reaches both programs, instead of the later one being refused.
  virtual bool sharesHotKeys() const { return false; }

  /// The set of enabled layouts changes: only the Latin one stays.
  virtual void disableHebrew() = 0;
  virtual void wakeFromSleep() = 0;

  /// Titles of the menu's entries that the user sees, top down, separators as "---".
  virtual std::vector<std::string> visibleMenu() = 0;
  /// The user chooses an entry; false when it cannot be chosen.
  virtual bool chooseMenuEntry(std::string_view title) = 0;

  enum class RecorderButton { save, cancel, closeBox };
  /// The recorder window on the screen: what it shows as combination; nothing when none is there.
  virtual std::optional<std::string> shownCombination() = 0;
  /// The user clicks; false when there is nothing to click or it is disabled.
  virtual bool clickRecorder(RecorderButton button) = 0;

  /// The user will press that button of the next alert (0 is the first), after the given time.
  virtual void answerNextAlert(std::size_t button, std::chrono::milliseconds after) = 0;

  /// A folder that exists and can be written to, absolute, without a slash at its end.
  virtual std::string writableFolder() = 0;
  /// The bytes of a file; nothing when it does not exist.
  virtual std::optional<std::string> fileBytes(const std::string& path) = 0;
};

/// Declared once, defined by each runner.
std::unique_ptr<HostUnderTest> makeHostUnderTest();

}  // namespace lexwend::contract
