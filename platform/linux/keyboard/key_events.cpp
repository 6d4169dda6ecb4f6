// SPDX-License-Identifier: MIT
#include "platform/linux/keyboard/key_events.h"

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

#include <xcb/xinput.h>
#include <xcb/xtest.h>

#include "platform/linux/display/xcb_xkb.h"
#include "platform/linux/keyboard/modifier_masks.h"
#include "platform/linux/keymap/mac_key_codes.h"
#include "platform/linux/session/window_classes.h"

namespace lexwend::platform {
namespace {

struct FlagKey {
  EventFlags flag;
  xcb_keycode_t ShortcutKeys::*key;
};
constexpr std::array<FlagKey, 4> kFlagKeys = {{{kEventFlagCommand, &ShortcutKeys::control},
                                               {kEventFlagShift, &ShortcutKeys::shift},
                                               {kEventFlagOption, &ShortcutKeys::alt},
                                               {kEventFlagControl, &ShortcutKeys::super}}};

/// Keeps every other program from changing anything on the server, the focus included. If this program is
/// stopped meanwhile, the whole display waits for it, so it is held for the shortest time.
class ServerGrab {
 public:
  explicit ServerGrab(X11Connection& x11) : x11_(x11) { xcb_grab_server(x11_.get()); }
  ~ServerGrab() {
    xcb_ungrab_server(x11_.get());
    x11_.flush();
  }
  ServerGrab(const ServerGrab&) = delete;
  ServerGrab& operator=(const ServerGrab&) = delete;

 private:
  X11Connection& x11_;
};

class XTestEventSource : public EventSource {};

class XTestKeyEvent : public KeyEvent {
 public:
  XTestKeyEvent(KeyCode macKeyCode, xcb_keycode_t key, bool down)
      : macKeyCode_(macKeyCode), key_(key), down_(down) {}
  void setFlags(EventFlags flags) override { flags_ = flags; }

  bool down() const { return down_; }
  Shortcut shortcut() const { return shortcutOf(macKeyCode_, flags_); }
  /// The modifier keys in the order of pressing, and the key itself last.
  std::vector<xcb_keycode_t> chord(const ShortcutKeys& keys) const {
    switch (shortcut()) {
      case Shortcut::copy:
        return {keys.control, keys.insert.value_or(0)};
      case Shortcut::paste:
        return {keys.shift, keys.insert.value_or(0)};
      case Shortcut::none:
        break;
    }
    std::vector<xcb_keycode_t> chord;
    for (const FlagKey& flagKey : kFlagKeys) {
      if (overlap(flags_, flagKey.flag)) chord.push_back(keys.*flagKey.key);
    }
    chord.push_back(key_);
    return chord;
  }

 private:
  KeyCode macKeyCode_;
  xcb_keycode_t key_;
  bool down_;
  EventFlags flags_{};
};

}  // namespace

LinuxKeyEvents::LinuxKeyEvents(std::shared_ptr<X11Connection> x11, std::function<bool()> mayCopy,
                               std::function<bool()> mayPaste)
    : x11_(std::move(x11)), mayCopy_(std::move(mayCopy)), mayPaste_(std::move(mayPaste)) {}

EventFlags LinuxKeyEvents::flagsState(EventSourceState /*state*/) {
  if (!x11_ || !x11_->hasXkb()) return kNoEventFlags;
  const XcbReply<xcb_xkb_get_state_reply_t> state(
      xcb_xkb_get_state_reply(x11_->get(), xcb_xkb_get_state(x11_->get(), XCB_XKB_ID_USE_CORE_KBD), nullptr));
  if (!state || state->baseMods == 0) return kNoEventFlags;
  const ModifierMasks masks = readModifierMasks(x11_->get());
  EventFlags flags = kNoEventFlags;
  if ((state->baseMods & masks.shift) != 0) flags |= kEventFlagShift;
  if ((state->baseMods & masks.control) != 0) flags |= kEventFlagCommand;
  if ((state->baseMods & (masks.alt | masks.levelThree)) != 0) flags |= kEventFlagOption;
  if ((state->baseMods & masks.super) != 0) flags |= kEventFlagControl;
  return flags;
}

EventSourceRef LinuxKeyEvents::createSource(EventSourceState /*state*/) {
  return x11_ && x11_->hasXTest() ? std::make_shared<const XTestEventSource>() : nullptr;
}

std::unique_ptr<KeyEvent> LinuxKeyEvents::createKeyboardEvent(const EventSourceRef& /*source*/,
                                                              KeyCode keyCode, bool keyDown) {
  const auto key = xFromMacKeyCode(keyCode);
  if (!x11_ || !x11_->hasXTest() || !key) return nullptr;
  return std::make_unique<XTestKeyEvent>(keyCode, *key, keyDown);
}

PostResult LinuxKeyEvents::post(EventTap /*tap*/, const KeyEvent& event) {
  const auto* keyEvent = dynamic_cast<const XTestKeyEvent*>(&event);
  if (!x11_ || keyEvent == nullptr) return PostResult::refused;
  xcb_connection_t* c = x11_->get();
  // The other window that gets the focus meanwhile must not get the keys.
  std::optional<ServerGrab> grab;
  if (keyEvent->down()) {
    devices_ = readKeyboardDevices(*x11_);
    keys_ = readShortcutKeys(*x11_, devices_);
    const Shortcut shortcut = keyEvent->shortcut();
    const Front inFront = front();
    if (shortcut != Shortcut::none && !mayPlay(shortcut, inFront)) return PostResult::refused;
    releaseHeldModifiers();
    if (shortcut != Shortcut::none) {
      PlayedShortcut played{applicationOf(c, inFront.active), inFront.active, {}};
      played.process = played.application.process;
      grab.emplace(*x11_);
      if (front() != inFront) return PostResult::refused;
      played.time = std::chrono::steady_clock::now();
      if (shortcut == Shortcut::paste) {
        notePaste(played);
      } else {
        copiedFrom_ = inFront;
        noteCopy(played);
      }
    }
  }
  std::vector<xcb_keycode_t> chord = keyEvent->chord(keys_);
  if (!keyEvent->down()) std::reverse(chord.begin(), chord.end());
  // A hot key that is still held repeats, and each repetition grabs the keyboard again. The keys would then
  // come back to this program. The server repeats a key only between two reads of a client's requests, so the
  // ungrab and the keys are sent together, and nothing in between waits for a reply.
  x11_->flush();
  xcb_ungrab_keyboard(c, XCB_CURRENT_TIME);
  const std::uint8_t type = keyEvent->down() ? XCB_KEY_PRESS : XCB_KEY_RELEASE;
  for (const xcb_keycode_t key : chord) play(type, key);
  x11_->flush();
  return PostResult::posted;
}

LinuxKeyEvents::Front LinuxKeyEvents::front() {
  return {x11_->activeWindow(), x11_->inputFocus()};
}

bool LinuxKeyEvents::mayPlay(Shortcut shortcut, const Front& front) {
  if (!keys_.insert) return false;
  if (shortcut == Shortcut::paste) {
    return (!copiedFrom_ || front == copiedFrom_) && (!mayPaste_ || mayPaste_());
  }
  if (refusesCopy(x11_->windowClass(front.active))) return false;
  return !mayCopy_ || mayCopy_();
}

void LinuxKeyEvents::play(std::uint8_t coreType, xcb_keycode_t key) {
  const KeyboardDevices::Id device = devices_.forSimulatedKeys();
  std::uint8_t type = coreType;
  if (device != KeyboardDevices::kNone) {
    const int offset = coreType == XCB_KEY_PRESS ? XCB_INPUT_DEVICE_KEY_PRESS : XCB_INPUT_DEVICE_KEY_RELEASE;
    type =
        static_cast<std::uint8_t>(xcb_get_extension_data(x11_->get(), &xcb_input_id)->first_event + offset);
  }
  xcb_test_fake_input(x11_->get(), type, key, 0, XCB_WINDOW_NONE, 0, 0, device);
}

void LinuxKeyEvents::releaseHeldModifiers() {
  if (flagsState(EventSourceState::hidSystem) == kNoEventFlags) return;
  xcb_connection_t* c = x11_->get();
  const auto mappingCookie = xcb_get_modifier_mapping(c);
  const auto keymapCookie = xcb_query_keymap(c);
  const XcbReply<xcb_get_modifier_mapping_reply_t> mapping(
      xcb_get_modifier_mapping_reply(c, mappingCookie, nullptr));
  const XcbReply<xcb_query_keymap_reply_t> keymap(xcb_query_keymap_reply(c, keymapCookie, nullptr));
  if (!mapping || !keymap) return;
  const xcb_keycode_t* keys = xcb_get_modifier_mapping_keycodes(mapping.get());
  const int count = xcb_get_modifier_mapping_keycodes_length(mapping.get());
  for (int i = 0; i < count; ++i) {
    const xcb_keycode_t key = keys[i];
    const bool isDown = (keymap->keys[key / 8] & (1 << (key % 8))) != 0;
    if (key != 0 && isDown) play(XCB_KEY_RELEASE, key);
  }
}

}  // namespace lexwend::platform
