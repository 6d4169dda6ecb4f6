// SPDX-License-Identifier: MIT
#include "platform/linux/keyboard/key_events.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string>
#include <vector>

#include <linux/input-event-codes.h>
#include <xcb/xinput.h>
#include <xcb/xtest.h>

#include "platform/linux/display/xcb_xkb.h"
#include "platform/linux/keyboard/mac_key_codes.h"
#include "platform/linux/keyboard/modifier_masks.h"

namespace lexwend::platform {
namespace {

constexpr xcb_keycode_t kInsert = KEY_INSERT + kXKeyCodeOffset;

// Terminals whose class does not say so; the others contain "terminal" or one of kTerminalWords.
constexpr std::array<std::string_view, 37> kTerminalClasses = {
    "alacritty",  "aterm",   "blackbox",    "console", "contour",     "cool-retro-term",
    "cosmicterm", "domterm", "eterm",       "evilvte", "foot",        "footclient",
    "ghostty",    "guake",   "hyper",       "kgx",     "kitty",       "konsole",
    "lilyterm",   "mlterm",  "pterm",       "putty",   "rio",         "roxterm",
    "sakura",     "st",      "st-256color", "tabby",   "terminology", "termite",
    "tilda",      "tilix",   "tym",         "warp",    "wterm",       "yakuake",
    "zutty"};
constexpr std::array<std::string_view, 6> kTerminalWords = {"terminal", "terminator", "xterm",
                                                            "rxvt",     "ptyxis",     "wezterm"};

struct FlagKey {
  EventFlags flag;
  xcb_keycode_t ModifierKeys::*key;
};
constexpr std::array<FlagKey, 4> kFlagKeys = {{{kEventFlagCommand, &ModifierKeys::control},
                                               {kEventFlagShift, &ModifierKeys::shift},
                                               {kEventFlagOption, &ModifierKeys::alt},
                                               {kEventFlagControl, &ModifierKeys::super}}};

class XTestEventSource : public EventSource {};

class XTestKeyEvent : public KeyEvent {
 public:
  XTestKeyEvent(KeyCode macKeyCode, xcb_keycode_t key, bool down)
      : macKeyCode_(macKeyCode), key_(key), down_(down) {}
  void setFlags(EventFlags flags) override { flags_ = flags; }

  bool down() const { return down_; }
  /// The keys to hold, in the order of pressing, and last the key itself.
  std::vector<xcb_keycode_t> chord(const ModifierKeys& modifierKeys) const {
    if (flags_ == kEventFlagCommand && macKeyCode_ == kKeyC) {
      return {modifierKeys.control, kInsert};
    }
    if (flags_ == kEventFlagCommand && macKeyCode_ == kKeyV) {
      return {modifierKeys.shift, kInsert};
    }
    std::vector<xcb_keycode_t> keys;
    for (const FlagKey& flagKey : kFlagKeys) {
      if (overlap(flags_, flagKey.flag)) keys.push_back(modifierKeys.*flagKey.key);
    }
    keys.push_back(key_);
    return keys;
  }

 private:
  KeyCode macKeyCode_;
  xcb_keycode_t key_;
  bool down_;
  EventFlags flags_{};
};

}  // namespace

bool isTerminalClass(std::string_view windowClass) {
  std::string lower(windowClass);
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  // Toolkits that name a class by the application's identifier put the name last.
  const std::size_t dot = lower.rfind('.');
  const std::string lastPart = dot == std::string::npos ? lower : lower.substr(dot + 1);
  return std::any_of(kTerminalWords.begin(), kTerminalWords.end(),
                     [&](std::string_view word) { return lower.find(word) != std::string::npos; }) ||
         std::any_of(kTerminalClasses.begin(), kTerminalClasses.end(),
                     [&](std::string_view name) { return lower == name || lastPart == name; });
}

LinuxKeyEvents::LinuxKeyEvents(std::shared_ptr<X11Connection> x11, std::function<bool()> mayPost,
                               std::function<void()> refused)
    : x11_(std::move(x11)), mayPost_(std::move(mayPost)), refused_(std::move(refused)) {}

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
  const auto key = keyToPost(keyCode);
  if (!key) {
    if (refused_) refused_();
    return nullptr;
  }
  return std::make_unique<XTestKeyEvent>(keyCode, *key, keyDown);
}

/// Nothing where the event is refused.
std::optional<xcb_keycode_t> LinuxKeyEvents::keyToPost(KeyCode keyCode) {
  if (!x11_ || !x11_->hasXTest() || (mayPost_ && !mayPost_())) return std::nullopt;
  const auto windowClass = x11_->activeWindowClass();
  return windowClass && isTerminalClass(*windowClass) ? std::nullopt : xFromMacKeyCode(keyCode);
}

void LinuxKeyEvents::post(EventTap /*tap*/, const KeyEvent& event) {
  const auto* keyEvent = dynamic_cast<const XTestKeyEvent*>(&event);
  if (!x11_ || keyEvent == nullptr) return;
  xcb_connection_t* c = x11_->get();
  if (keyEvent->down()) {
    devices_ = readKeyboardDevices(*x11_);
    modifierKeys_ = readModifierKeys(*x11_, devices_);
    releaseHeldModifiers();
  }
  std::vector<xcb_keycode_t> chord = keyEvent->chord(modifierKeys_);
  if (!keyEvent->down()) std::reverse(chord.begin(), chord.end());
  // A hot key that is still held repeats, and each repetition grabs the keyboard anew: what is typed then
  // would come back to this program. The server repeats only between two readings of a client's requests, so
  // the ungrab and the keys go out together, with nothing that waits for an answer in between.
  x11_->flush();
  xcb_ungrab_keyboard(c, XCB_CURRENT_TIME);
  const std::uint8_t type = keyEvent->down() ? XCB_KEY_PRESS : XCB_KEY_RELEASE;
  for (const xcb_keycode_t key : chord) play(type, key);
  x11_->flush();
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
