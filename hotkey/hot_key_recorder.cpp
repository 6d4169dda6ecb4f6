// SPDX-License-Identifier: MIT
#include "hotkey/hot_key_recorder.h"

#include <algorithm>
#include <array>
#include <utility>

#include "hotkey/function_keys.h"
#include "hotkey/hot_key_center.h"
#include "platform/application.h"
#include "platform/hot_key_service.h"
#include "support/settings.h"

namespace lexwend {
namespace {

using platform::ColorRole;

/// A key with one of these types nothing, so taking it away from all applications does little harm.
constexpr platform::Modifiers kNonTypingModifiers =
    platform::kCmdKey | platform::kOptionKey | platform::kControlKey;

/// With Command alone, the shortcuts that every application uses: Q, W, C, V, X, Z, A, S, N, T, H, M, comma
/// and space. They are compared by display name, so only the exact combination is reserved.
constexpr std::array<platform::KeyCode, 14> kReserved = {
    platform::KeyCode{12}, platform::KeyCode{13}, platform::KeyCode{8}, platform::KeyCode{9},
    platform::KeyCode{7},  platform::KeyCode{6},  platform::KeyCode{0}, platform::KeyCode{1},
    platform::KeyCode{45}, platform::KeyCode{17}, platform::KeyCode{4}, platform::KeyCode{46},
    platform::KeyCode{43}, platform::KeyCode{49}};

constexpr std::string_view kValidMessage = "אפשר לשמור. הצירוף יחליף את הקודם מיד.";

bool isReserved(std::string_view name) {
  return std::any_of(kReserved.begin(), kReserved.end(), [name](platform::KeyCode key) {
    return HotKeyCenter::displayName(key, platform::kCmdKey) == name;
  });
}

/// "⌘, ⌃ או ⌥", as this system calls them.
std::string nonTypingModifiers() {
  const platform::KeyNames& names = platform::hotKeyService().keyNames();
  return std::string(names.of(platform::kCmdKey)) + ", " + std::string(names.of(platform::kControlKey)) +
         " או " + std::string(names.of(platform::kOptionKey));
}

std::string currentMessage() {
  const bool needGlobe = platform::hotKeyService().keyNames().functionKeysNeedGlobe;
  return "הצירוף הנוכחי. מקש F לבד, או מקש אחר יחד עם " + nonTypingModifiers() + "." +
         (needGlobe ? " במקלדת מק, מקשי F נלחצים עם מקש הגלובוס." : "");
}

std::string plainKeyMessage() {
  return "מקש רגיל לבד יחסום את ההקלדה שלו בכל המחשב. הוסף " + nonTypingModifiers() + ", או בחר מקש F.";
}

constexpr int kFloatingWindowLevel = 3;

/// The window before the current combination is put into it.
platform::RecorderWindowLook look() {
  platform::RecorderWindowLook look;
  look.contentRect = {0, 0, 400, 210};
  look.title = "מקש קיצור";
  look.titled = true;
  look.closable = true;
  look.resizable = false;
  look.miniaturizable = false;
  look.deferred = false;
  look.level = kFloatingWindowLevel;
  look.releasedWhenClosed = false;
  look.centered = true;

  // The Hebrew sentences are aligned to the right; the combination is centred.
  look.prompt.text = "לחץ על צירוף המקשים שתרצה להפעיל בו את התיקון";
  look.prompt.frame = {20, 170, 360, 20};
  look.prompt.alignment = platform::TextAlignment::right;
  look.prompt.fontSize = 13;
  look.prompt.fontWeight = platform::FontWeight::medium;

  look.combination.frame = {20, 108, 360, 50};
  look.combination.alignment = platform::TextAlignment::center;
  look.combination.fontSize = 30;
  look.combination.fontWeight = platform::FontWeight::semibold;
  look.combination.background = ColorRole::quaternaryLabel;
  look.combination.cornerRadius = 10;

  look.message.frame = {20, 56, 360, 44};
  look.message.alignment = platform::TextAlignment::right;
  look.message.fontSize = 11;
  look.message.color = ColorRole::secondaryLabel;
  look.message.wraps = true;

  look.save.title = "שמור";
  look.save.frame = {20, 14, 110, 32};
  look.save.bezel = platform::BezelStyle::rounded;

  look.cancel.title = "ביטול";
  look.cancel.frame = {136, 14, 110, 32};
  look.cancel.bezel = platform::BezelStyle::rounded;
  return look;
}

}  // namespace

std::shared_ptr<HotKeyRecorderWindowController> HotKeyRecorderWindowController::create(Completion onDone) {
  std::shared_ptr<HotKeyRecorderWindowController> controller(
      new HotKeyRecorderWindowController(std::move(onDone)));
  controller->buildUI();
  controller->showCurrent();
  return controller;
}

HotKeyRecorderWindowController::HotKeyRecorderWindowController(Completion onDone)
    : onDone_(std::move(onDone)) {}

void HotKeyRecorderWindowController::buildUI() {
  const auto weakly = [weak = weak_from_this()](void (HotKeyRecorderWindowController::*action)()) {
    return [weak, action] {
      if (const auto self = weak.lock()) (self.get()->*action)();
    };
  };
  window_ = platform::recorderWindows().create(
      look(), {.save = weakly(&HotKeyRecorderWindowController::save),
               .cancel = weakly(&HotKeyRecorderWindowController::cancel),
               .willClose = weakly(&HotKeyRecorderWindowController::windowWillClose)});
}

void HotKeyRecorderWindowController::showCurrent() {
  window_->setCombination(HotKeyCenter::displayName(Settings::hotKeyCode(), Settings::hotKeyModifiers()));
  window_->setMessage(currentMessage(), ColorRole::secondaryLabel);
  window_->setSaveEnabled(false);
}

void HotKeyRecorderWindowController::present() {
  monitor_ = platform::keyMonitor().addLocalKeyDownMonitor(
      [weak = weak_from_this()](const platform::KeyDownEvent& event) {
        const auto self = weak.lock();
        return self ? self->keyDown(event) : platform::KeyDisposition::passedOn;
      });
  platform::application().activate(/*ignoringOtherApps=*/true);
  window_->showAndMakeKey();
}

platform::KeyDisposition HotKeyRecorderWindowController::keyDown(const platform::KeyDownEvent& event) {
  // Caps lock, function and the other flags of the event are ignored.
  const platform::Modifiers mods = modifiersOf(event.modifierFlags);
  if (mods == platform::kNoModifiers && event.keyCode == platform::kKeyEscape) {
    finish(false);
  } else if (mods == platform::kNoModifiers && event.keyCode == platform::kKeyReturn) {
    save();
  } else {
    record(event.keyCode, mods);
  }
  return platform::KeyDisposition::consumed;
}

void HotKeyRecorderWindowController::record(platform::KeyCode code, platform::Modifiers mods) {
  const std::string name = HotKeyCenter::displayName(code, mods);
  window_->setCombination(name);

  if (const auto error = validate(code, mods, name)) {
    window_->setMessage(*error, ColorRole::systemRed);
    window_->setSaveEnabled(false);
    recorded_.reset();
  } else {
    window_->setMessage(kValidMessage, ColorRole::secondaryLabel);
    window_->setSaveEnabled(true);
    recorded_ = Combination{code, mods};
  }
}

std::optional<std::string> HotKeyRecorderWindowController::validate(platform::KeyCode code,
                                                                    platform::Modifiers mods,
                                                                    std::string_view name) {
  if (functionKeyName(code)) return std::nullopt;
  if (!overlap(mods, kNonTypingModifiers)) return plainKeyMessage();
  if (isReserved(name)) {
    return "הצירוף " + std::string(name) + " שמור למערכת (העתקה, הדבקה, סגירה וכדומה). בחר צירוף אחר.";
  }
  return std::nullopt;
}

void HotKeyRecorderWindowController::save() {
  if (!recorded_) return;
  Settings::setHotKey(recorded_->code, recorded_->mods);
  finish(true);
}

void HotKeyRecorderWindowController::cancel() {
  finish(false);
}

void HotKeyRecorderWindowController::windowWillClose() {
  finish(false);
}

void HotKeyRecorderWindowController::finish(bool saved) {
  // Closing the window comes back here through windowWillClose.
  if (finished_) return;
  finished_ = true;

  // The completion may drop its reference to this object. The event that led here keeps it alive until it
  // returns.
  monitor_.cancel();
  window_->close();
  onDone_(saved);
}

}  // namespace lexwend
