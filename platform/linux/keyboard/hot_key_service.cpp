// SPDX-License-Identifier: MIT
#include "platform/linux/keyboard/hot_key_service.h"

#include <algorithm>

#include <xcb/xinput.h>

#include "platform/linux/display/xcb_xkb.h"
#include "platform/linux/keyboard/keyboard_devices.h"
#include "platform/linux/keyboard/mac_key_codes.h"

namespace lexwend::platform {
namespace {

// A repeating key is pressed again within this time; a press after a longer pause is a new one, and the
// release between was lost (another console, say). Milliseconds of the server's clock.
constexpr xcb_timestamp_t kLongestRepeatPause = 3000;
// Where releases cannot be seen at all, the pause alone tells: the usual delay of the first repetition, with
// some room. A person presses a hot key again more slowly than that.
constexpr xcb_timestamp_t kRepeatPauseWithoutReleases = 750;

struct HotKeyCombination {
  KeyCode keyCode{};
  Modifiers modifiers{};
  bool operator==(const HotKeyCombination&) const = default;
};

/// The core modifier state of a mask; nothing when a modifier has no key here.
std::optional<std::uint16_t> stateOf(Modifiers modifiers, const ModifierMasks& masks) {
  struct Row {
    Modifiers modifier;
    std::uint16_t mask;
  };
  std::uint16_t state = 0;
  for (const Row& row : {Row{kCmdKey, masks.control}, Row{kShiftKey, masks.shift}, Row{kOptionKey, masks.alt},
                         Row{kControlKey, masks.super}}) {
    if (!overlap(modifiers, row.modifier)) continue;
    if (row.mask == 0) return std::nullopt;
    state = static_cast<std::uint16_t>(state | row.mask);
  }
  return state;
}

class LinuxHotKeyEvent : public HotKeyEvent {
 public:
  explicit LinuxHotKeyEvent(HotKeyID identity) : identity_(identity) {}
  OSStatus hotKeyID(HotKeyID& out) const override {
    out = identity_;
    return kNoErr;
  }

 private:
  HotKeyID identity_;
};

}  // namespace

class LinuxHotKeyService::Registration : public HotKey {
 public:
  HotKeyID identity;
  HotKeyCombination combination;
  std::uint8_t key = 0;
  std::uint16_t state = 0;  ///< the modifiers without any lock
  bool grabbed = true;      ///< false when the key was lost to somebody else as the keymap changed
};

LinuxHotKeyService::LinuxHotKeyService(std::shared_ptr<X11Connection> x11) : x11_(std::move(x11)) {
  if (!x11_) return;
  masks_ = readModifierMasks(x11_->get());
  if (x11_->hasXkb()) {
    // A held key then sends presses only, without a release before each.
    constexpr std::uint32_t kDetectable = XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT;
    xcb_discard_reply(x11_->get(), xcb_xkb_per_client_flags(x11_->get(), XCB_XKB_ID_USE_CORE_KBD, kDetectable,
                                                            kDetectable, 0, 0, 0)
                                       .sequence);
  }
  x11_->selectKeymapEvents();
  observation_ = x11_->observe([this](const xcb_generic_event_t& event) { handleEvent(event); });
}

LinuxHotKeyService::~LinuxHotKeyService() {
  if (!x11_) return;
  stop();
  if (!held_.empty()) selectRawReleases(false);
  x11_->flush();
}

OSStatus LinuxHotKeyService::installHandler(std::function<OSStatus(const HotKeyEvent&)> handler) {
  handler_ = std::move(handler);
  return kNoErr;
}

HotKeyRegistration LinuxHotKeyService::registerHotKey(KeyCode keyCode, Modifiers modifiers,
                                                      HotKeyID identity) {
  if (!x11_ || stopped_) {
    return {kHotKeyInvalidErr, nullptr};
  }
  const auto key = xFromMacKeyCode(keyCode);
  const auto state = stateOf(modifiers, masks_);
  if (!key || !state) {
    return {kHotKeyInvalidErr, nullptr};
  }
  auto registration = std::make_shared<Registration>();
  registration->identity = identity;
  registration->combination = {keyCode, modifiers};
  registration->key = *key;
  registration->state = *state;
  // The server would let this client grab the same key twice.
  const bool ours = std::any_of(registrations_.begin(), registrations_.end(), [&](const auto& other) {
    return other->key == registration->key && other->state == registration->state;
  });
  if (ours || !grab(*registration)) {
    return {kHotKeyExistsErr, nullptr};
  }
  registrations_.push_back(registration);
  return {kNoErr, registration};
}

OSStatus LinuxHotKeyService::unregisterHotKey(const HotKeyRef& ref) {
  const auto found = std::find(registrations_.begin(), registrations_.end(), ref);
  if (found == registrations_.end()) return kHotKeyInvalidErr;
  ungrab(**found);
  registrations_.erase(found);
  x11_->flush();
  return kNoErr;
}

void LinuxHotKeyService::stop() {
  stopped_ = true;
  for (const auto& registration : registrations_) ungrab(*registration);
  registrations_.clear();
  if (x11_) x11_->flush();
}

bool LinuxHotKeyService::grab(const Registration& registration) {
  if (isHeldThroughXInput2(registration)) return false;
  xcb_connection_t* c = x11_->get();
  std::vector<xcb_void_cookie_t> cookies;
  for (const std::uint16_t locks : masks_.lockCombinations()) {
    cookies.push_back(xcb_grab_key_checked(c, 0, x11_->root(),
                                           static_cast<std::uint16_t>(registration.state | locks),
                                           registration.key, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
  }
  bool taken = false;
  for (const xcb_void_cookie_t cookie : cookies) {
    const XcbReply<xcb_generic_error_t> error(xcb_request_check(c, cookie));
    taken = taken || error != nullptr;
  }
  if (taken) {
    ungrab(registration);
    x11_->flush();
  }
  return !taken;
}

/// Window managers may take their keys through XInput 2, and the server compares grabs of one kind only: such
/// a grab is asked for as well, and given back at once.
bool LinuxHotKeyService::isHeldThroughXInput2(const Registration& registration) {
  const KeyboardDevices::Id keyboard = readKeyboardDevices(*x11_).core;
  if (keyboard == KeyboardDevices::kNone) return false;
  xcb_connection_t* c = x11_->get();
  std::vector<std::uint32_t> modifiers;
  for (const std::uint16_t locks : masks_.lockCombinations()) {
    modifiers.push_back(static_cast<std::uint32_t>(registration.state | locks));
  }
  const auto count = static_cast<std::uint16_t>(modifiers.size());
  constexpr std::uint32_t kEvents = XCB_INPUT_XI_EVENT_MASK_KEY_PRESS;
  const auto cookie = xcb_input_xi_passive_grab_device(
      c, XCB_CURRENT_TIME, x11_->root(), XCB_CURSOR_NONE, registration.key, keyboard, count, 1,
      XCB_INPUT_GRAB_TYPE_KEYCODE, XCB_INPUT_GRAB_MODE_22_ASYNC, XCB_INPUT_GRAB_MODE_22_ASYNC,
      XCB_INPUT_GRAB_OWNER_NO_OWNER, &kEvents, modifiers.data());
  xcb_input_xi_passive_ungrab_device(c, x11_->root(), registration.key, keyboard, count,
                                     XCB_INPUT_GRAB_TYPE_KEYCODE, modifiers.data());
  // The answer lists the combinations that were refused.
  const XcbReply<xcb_input_xi_passive_grab_device_reply_t> reply(
      xcb_input_xi_passive_grab_device_reply(c, cookie, nullptr));
  return reply != nullptr && reply->num_modifiers != 0;
}

void LinuxHotKeyService::ungrab(const Registration& registration) {
  for (const std::uint16_t locks : masks_.lockCombinations()) {
    xcb_ungrab_key(x11_->get(), registration.key, x11_->root(),
                   static_cast<std::uint16_t>(registration.state | locks));
  }
}

void LinuxHotKeyService::handleEvent(const xcb_generic_event_t& event) {
  if (x11_->isKeymapChange(event)) {
    handleKeymapChange();
    return;
  }
  switch (eventType(event)) {
    case XCB_KEY_PRESS:
      handlePress(reinterpret_cast<const xcb_key_press_event_t&>(event));
      break;
    case XCB_KEY_RELEASE:
      handleRelease(reinterpret_cast<const xcb_key_release_event_t&>(event).detail);
      break;
    case XCB_GE_GENERIC: {
      const auto& generic = reinterpret_cast<const xcb_ge_generic_event_t&>(event);
      if (x11_->hasXInput2() && generic.extension == x11_->xInputOpcode() &&
          generic.event_type == XCB_INPUT_RAW_KEY_RELEASE) {
        const auto& raw = reinterpret_cast<const xcb_input_raw_key_release_event_t&>(event);
        handleRelease(static_cast<std::uint8_t>(raw.detail));
      }
      break;
    }
    default:
      break;
  }
}

void LinuxHotKeyService::handlePress(const xcb_key_press_event_t& event) {
  // The order is what makes the release certain to be seen: up to here it belongs to the grab, from the
  // selection on it comes raw.
  if (held_.empty()) selectRawReleases(true);
  xcb_ungrab_keyboard(x11_->get(), XCB_CURRENT_TIME);
  x11_->flush();

  const auto lastPress = held_.find(event.detail);
  const xcb_timestamp_t pause = x11_->hasXInput2() ? kLongestRepeatPause : kRepeatPauseWithoutReleases;
  const bool repeats = lastPress != held_.end() && event.time - lastPress->second < pause;
  held_[event.detail] = event.time;
  if (repeats) return;
  const std::uint16_t considered =
      static_cast<std::uint16_t>(masks_.shift | masks_.control | masks_.alt | masks_.super);
  const auto pressed = static_cast<std::uint16_t>(event.state & considered);
  const auto found = std::find_if(registrations_.begin(), registrations_.end(), [&](const auto& candidate) {
    return candidate->key == event.detail && candidate->state == pressed;
  });
  if (found != registrations_.end() && handler_) {
    // Copies, since the handler may unregister the key.
    const LinuxHotKeyEvent hotKeyEvent((*found)->identity);
    const auto handler = handler_;
    handler(hotKeyEvent);
  }
}

void LinuxHotKeyService::handleRelease(std::uint8_t key) {
  if (held_.erase(key) != 0 && held_.empty()) selectRawReleases(false);
}

/// Another keyboard or layout may put the locks on other modifiers.
void LinuxHotKeyService::handleKeymapChange() {
  const ModifierMasks masks = readModifierMasks(x11_->get());
  const bool sameMasks = masks == masks_;
  if (!sameMasks) {
    for (const auto& registration : registrations_) {
      ungrab(*registration);
      registration->grabbed = false;
    }
    masks_ = masks;
  }
  // What somebody else has taken meanwhile, or has no modifier now, is tried again at the next change. The
  // service has no way to tell the program of it.
  for (const auto& registration : registrations_) {
    const auto state = stateOf(registration->combination.modifiers, masks_);
    if (!registration->grabbed && state) {
      registration->state = *state;
      registration->grabbed = grab(*registration);
    }
  }
  x11_->flush();
}

void LinuxHotKeyService::selectRawReleases(bool wanted) {
  if (!x11_->hasXInput2()) return;
  struct {
    xcb_input_event_mask_t head;
    std::uint32_t mask;
  } selection{{XCB_INPUT_DEVICE_ALL_MASTER, 1},
              wanted ? static_cast<std::uint32_t>(XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE) : 0U};
  xcb_input_xi_select_events(x11_->get(), x11_->root(), 1, &selection.head);
  x11_->flush();
}

}  // namespace lexwend::platform
