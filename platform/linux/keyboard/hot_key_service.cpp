// SPDX-License-Identifier: MIT
#include "platform/linux/keyboard/hot_key_service.h"

#include <algorithm>

#include <xcb/xinput.h>

#include "platform/linux/display/xcb_xkb.h"
#include "platform/linux/keyboard/keyboard_devices.h"
#include "platform/linux/keymap/mac_key_codes.h"

namespace lexwend::platform {
namespace {

// Milliseconds of the server's clock. A key that repeats is pressed again within this time. A press after a
// longer pause is a new one, whose release before was lost, for example to another console.
constexpr xcb_timestamp_t kLongestRepeatPause = 3000;
// Used when releases cannot be seen. It is the usual delay of the first repetition with some room; a person
// presses a hot key again more slowly.
constexpr xcb_timestamp_t kRepeatPauseWithoutReleases = 750;

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

}  // namespace

LinuxHotKeyService::LinuxHotKeyService(std::shared_ptr<X11Connection> x11) : x11_(std::move(x11)) {
  if (!x11_) return;
  masks_ = readModifierMasks(x11_->get());
  if (x11_->hasXkb()) {
    // With detectable auto-repeat a held key sends presses only, without a release before each.
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

std::optional<LinuxHotKeyService::Grab> LinuxHotKeyService::grabOf(const HotKey& hotKey) const {
  const auto key = xFromMacKeyCode(hotKey.keyCode);
  const auto state = stateOf(hotKey.modifiers, masks_);
  if (!key || !state) return std::nullopt;
  return Grab{*key, *state};
}

OSStatus LinuxHotKeyService::take(const HotKey& hotKey) {
  const auto wanted = x11_ ? grabOf(hotKey) : std::nullopt;
  if (!wanted) return kHotKeyInvalidErr;
  // The server lets one client grab the same key twice, and a keymap may have two modifiers on the same bit.
  const auto all = hotKeys();
  const bool ours =
      std::any_of(all.begin(), all.end(), [&](const auto& other) { return grabOf(*other) == wanted; });
  return ours || !grab(*wanted) ? kHotKeyExistsErr : kNoErr;
}

void LinuxHotKeyService::giveBack(const HotKey& hotKey) {
  if (const auto grabbed = grabOf(hotKey)) ungrab(*grabbed);
  x11_->flush();
}

void LinuxHotKeyService::markEndOfPause() {
  if (!x11_) return;
  lastEndOfPause_ = xcb_no_operation(x11_->get()).sequence;
  x11_->flush();
}

bool LinuxHotKeyService::isBeforeEndOfPause(const xcb_key_press_event_t& event) const {
  if (!lastEndOfPause_) return false;
  // The numbers wrap around.
  const auto& numbered = reinterpret_cast<const xcb_generic_event_t&>(event);
  return static_cast<std::int32_t>(numbered.full_sequence - *lastEndOfPause_) < 0;
}

bool LinuxHotKeyService::grab(const Grab& wanted) {
  if (isHeldThroughXInput2(wanted)) return false;
  xcb_connection_t* c = x11_->get();
  std::vector<xcb_void_cookie_t> cookies;
  for (const std::uint16_t locks : masks_.lockCombinations()) {
    cookies.push_back(xcb_grab_key_checked(c, 0, x11_->root(),
                                           static_cast<std::uint16_t>(wanted.state | locks), wanted.key,
                                           XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
  }
  bool taken = false;
  for (const xcb_void_cookie_t cookie : cookies) {
    const XcbReply<xcb_generic_error_t> error(xcb_request_check(c, cookie));
    taken = taken || error != nullptr;
  }
  if (taken) {
    ungrab(wanted);
    x11_->flush();
  }
  return !taken;
}

/// Whether another client has grabbed the key through XInput 2, as window managers may. The server compares a
/// grab only with grabs of its own kind, so this asks for such a grab and releases it at once.
bool LinuxHotKeyService::isHeldThroughXInput2(const Grab& wanted) {
  const KeyboardDevices::Id keyboard = readKeyboardDevices(*x11_).core;
  if (keyboard == KeyboardDevices::kNone) return false;
  xcb_connection_t* c = x11_->get();
  std::vector<std::uint32_t> modifiers;
  for (const std::uint16_t locks : masks_.lockCombinations()) {
    modifiers.push_back(static_cast<std::uint32_t>(wanted.state | locks));
  }
  const auto count = static_cast<std::uint16_t>(modifiers.size());
  constexpr std::uint32_t kEvents = XCB_INPUT_XI_EVENT_MASK_KEY_PRESS;
  const auto cookie = xcb_input_xi_passive_grab_device(
      c, XCB_CURRENT_TIME, x11_->root(), XCB_CURSOR_NONE, wanted.key, keyboard, count, 1,
      XCB_INPUT_GRAB_TYPE_KEYCODE, XCB_INPUT_GRAB_MODE_22_ASYNC, XCB_INPUT_GRAB_MODE_22_ASYNC,
      XCB_INPUT_GRAB_OWNER_NO_OWNER, &kEvents, modifiers.data());
  xcb_input_xi_passive_ungrab_device(c, x11_->root(), wanted.key, keyboard, count,
                                     XCB_INPUT_GRAB_TYPE_KEYCODE, modifiers.data());
  // The reply lists the combinations that were refused.
  const XcbReply<xcb_input_xi_passive_grab_device_reply_t> reply(
      xcb_input_xi_passive_grab_device_reply(c, cookie, nullptr));
  return reply != nullptr && reply->num_modifiers != 0;
}

void LinuxHotKeyService::ungrab(const Grab& grabbed) {
  for (const std::uint16_t locks : masks_.lockCombinations()) {
    xcb_ungrab_key(x11_->get(), grabbed.key, x11_->root(), static_cast<std::uint16_t>(grabbed.state | locks));
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
  // This order ensures that the release is seen: before the selection it belongs to the grab, after it the
  // server reports it raw. With its time, this leaves the grab of the next press alone, which may have begun
  // (UngrabKeyboard has no effect on a later grab): its release would reach nobody.
  if (held_.empty()) selectRawReleases(true);
  xcb_ungrab_keyboard(x11_->get(), event.time);
  x11_->flush();

  const auto lastPress = held_.find(event.detail);
  const xcb_timestamp_t pause = x11_->hasXInput2() ? kLongestRepeatPause : kRepeatPauseWithoutReleases;
  const bool repeats = lastPress != held_.end() && event.time - lastPress->second < pause;
  held_[event.detail] = event.time;
  if (repeats || isBeforeEndOfPause(event)) return;
  const std::uint16_t considered =
      static_cast<std::uint16_t>(masks_.shift | masks_.control | masks_.alt | masks_.super);
  const Grab pressed{event.detail, static_cast<std::uint16_t>(event.state & considered)};
  const auto all = hotKeys();
  const auto found = std::find_if(all.begin(), all.end(),
                                  [&](const auto& candidate) { return grabOf(*candidate) == pressed; });
  if (found != all.end()) report(**found);
}

void LinuxHotKeyService::handleRelease(std::uint8_t key) {
  if (held_.erase(key) != 0 && held_.empty()) selectRawReleases(false);
}

/// Another keyboard or layout may put the locks on other modifiers.
void LinuxHotKeyService::handleKeymapChange() {
  const ModifierMasks masks = readModifierMasks(x11_->get());
  if (masks != masks_) {
    for (const auto& hotKey : hotKeys()) {
      giveBack(*hotKey);
      hotKey->isTaken = false;
    }
    masks_ = masks;
  }
  // A key that another program has grabbed, or whose modifier no key sets now, is tried again at the next
  // change. The service cannot report it to the program.
  for (const auto& hotKey : hotKeys()) {
    const auto wanted = grabOf(*hotKey);
    if (!hotKey->isTaken && wanted) hotKey->isTaken = grab(*wanted);
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
