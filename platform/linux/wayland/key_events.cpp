// SPDX-License-Identifier: MIT
#include "platform/linux/wayland/key_events.h"

#include <algorithm>
#include <array>
#include <vector>

#include <linux/input-event-codes.h>

#include "platform/linux/keymap/mac_key_codes.h"
#include "platform/linux/session/window_classes.h"

namespace lexwend::platform {
namespace {

struct Key {
  std::uint16_t evdev;
  std::uint32_t modifier;  ///< that it is; 0 for any other key
};
constexpr Key kControl{KEY_LEFTCTRL, KeyPlayer::control};
constexpr Key kShift{KEY_LEFTSHIFT, KeyPlayer::shift};
constexpr Key kInsert{KEY_INSERT, 0};

struct FlagKey {
  EventFlags flag;
  Key key;
};
constexpr std::array<FlagKey, 4> kFlagKeys = {{{kEventFlagCommand, kControl},
                                               {kEventFlagShift, kShift},
                                               {kEventFlagOption, {KEY_LEFTALT, KeyPlayer::alt}},
                                               {kEventFlagControl, {KEY_LEFTMETA, KeyPlayer::super}}}};

class VirtualEventSource : public EventSource {};

class VirtualKeyEvent : public KeyEvent {
 public:
  VirtualKeyEvent(KeyCode macKeyCode, std::uint16_t evdevKey, bool down)
      : macKeyCode_(macKeyCode), evdevKey_(evdevKey), down_(down) {}
  void setFlags(EventFlags flags) override { flags_ = flags; }

  bool down() const { return down_; }
  Shortcut shortcut() const { return shortcutOf(macKeyCode_, flags_); }
  /// The modifier keys in the order of pressing, and the key itself last.
  std::vector<Key> chord() const {
    switch (shortcut()) {
      case Shortcut::copy:
        return {kControl, kInsert};
      case Shortcut::paste:
        return {kShift, kInsert};
      case Shortcut::none:
        break;
    }
    std::vector<Key> chord;
    for (const FlagKey& flagKey : kFlagKeys) {
      if (overlap(flags_, flagKey.flag)) chord.push_back(flagKey.key);
    }
    chord.push_back({evdevKey_, 0});
    return chord;
  }

 private:
  KeyCode macKeyCode_;
  std::uint16_t evdevKey_;
  bool down_;
  EventFlags flags_{};
};

}  // namespace

WaylandKeyEvents::WaylandKeyEvents(Needs needs, std::unique_ptr<KeyPlayer> player)
    : needs_(std::move(needs)), player_(std::move(player)) {}

EventFlags WaylandKeyEvents::flagsState(EventSourceState /*state*/) {
  return kNoEventFlags;
}

EventSourceRef WaylandKeyEvents::createSource(EventSourceState /*state*/) {
  return player_ ? std::make_shared<const VirtualEventSource>() : nullptr;
}

std::unique_ptr<KeyEvent> WaylandKeyEvents::createKeyboardEvent(const EventSourceRef& /*source*/,
                                                                KeyCode keyCode, bool keyDown) {
  const auto key = evdevFromMacKeyCode(keyCode);
  if (!player_ || !key) return nullptr;
  return std::make_unique<VirtualKeyEvent>(keyCode, *key, keyDown);
}

PostResult WaylandKeyEvents::post(EventTap /*tap*/, const KeyEvent& event) {
  const auto* keyEvent = dynamic_cast<const VirtualKeyEvent*>(&event);
  if (keyEvent == nullptr || !player_) return PostResult::refused;
  const Shortcut shortcut = keyEvent->shortcut();
  const bool isPaste = keyEvent->down() && shortcut == Shortcut::paste;
  std::optional<FocusKey> focusKey;
  if (isPaste && copiedFrom_ && needs_.focusKey) focusKey = needs_.focusKey(*copiedFrom_);
  if (keyEvent->down() && shortcut != Shortcut::none && !mayPlay(shortcut)) return PostResult::refused;

  std::vector<Key> chord = keyEvent->chord();
  std::uint32_t modifiers = 0;
  if (!keyEvent->down()) {
    for (const Key& key : chord) modifiers |= key.modifier;
    std::reverse(chord.begin(), chord.end());
  }
  if (focusKey) {
    player_->play(focusKey->evdev, true, 0);
    player_->play(focusKey->evdev, false, 0);
  }
  for (const Key& key : chord) {
    modifiers = keyEvent->down() ? modifiers | key.modifier : modifiers & ~key.modifier;
    if (!player_->play(key.evdev, keyEvent->down(), modifiers)) return PostResult::refused;
  }
  return player_->settle() ? PostResult::posted : PostResult::refused;
}

/// What is asked before a paste may take its time, so the look at the window comes after it.
bool WaylandKeyEvents::mayPlay(Shortcut shortcut) {
  const auto look = [this] { return needs_.frontWindow ? needs_.frontWindow() : std::nullopt; };
  if (shortcut == Shortcut::paste) {
    if (needs_.mayPaste && !needs_.mayPaste()) return false;
    std::optional<FrontWindow> front;
    if (copiedFrom_) {
      front = look();
      if (!front || front->id != copiedFrom_) return false;
    }
    note(shortcut, front);
    return true;
  }
  const auto front = look();
  if (!front && needs_.refusesUnknownWindows) return false;
  if (front && refusesCopy(front->windowClass)) return false;
  if (needs_.mayCopy && !needs_.mayCopy()) return false;
  note(shortcut, front);
  return true;
}

void WaylandKeyEvents::note(Shortcut shortcut, const std::optional<FrontWindow>& front) {
  const PlayedShortcut played{
      {}, XCB_WINDOW_NONE, std::chrono::steady_clock::now(), front ? front->process : std::nullopt};
  if (shortcut == Shortcut::paste) return notePaste(played);
  copiedFrom_ = front ? std::optional(front->id) : std::nullopt;
  noteCopy(played);
}

}  // namespace lexwend::platform
