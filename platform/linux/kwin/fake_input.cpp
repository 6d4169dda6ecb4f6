// SPDX-License-Identifier: MIT
#include "platform/linux/kwin/fake_input.h"

#include <array>

#include <fake-input.h>
#include <linux/input-event-codes.h>

#include "platform/linux/session/identity.h"

namespace lexwend::platform {
namespace {

// The first with keys.
constexpr std::uint32_t kFakeInputVersion = 4;
constexpr std::array<std::uint32_t, 8> kModifierKeys = {KEY_LEFTSHIFT, KEY_RIGHTSHIFT, KEY_LEFTCTRL,
                                                        KEY_RIGHTCTRL, KEY_LEFTALT,    KEY_RIGHTALT,
                                                        KEY_LEFTMETA,  KEY_RIGHTMETA};

}  // namespace

bool FakeInput::isOffered(const WaylandConnection& connection) {
  return connection.versionOf(org_kde_kwin_fake_input_interface.name).value_or(0) >= kFakeInputVersion;
}

std::unique_ptr<KeyPlayer> FakeInput::open(WaylandConnection& connection) {
  if (!isOffered(connection)) return nullptr;
  auto* input = static_cast<org_kde_kwin_fake_input*>(
      connection.bind(org_kde_kwin_fake_input_interface, kFakeInputVersion));
  org_kde_kwin_fake_input_authenticate(input, std::string(kDisplayName).c_str(), "copy and paste");
  return std::unique_ptr<KeyPlayer>(new FakeInput(connection, input));
}

FakeInput::~FakeInput() {
  org_kde_kwin_fake_input_destroy(input_);
  connection_.flush();
}

bool FakeInput::play(std::uint16_t evdevKey, bool down, std::uint32_t /*modifiersAfter*/) {
  if (keysDown_.empty() && down) {
    // What KWin does not take now it would take late.
    if (!connection_.roundTrip()) return false;
    for (const std::uint32_t key : kModifierKeys) {
      org_kde_kwin_fake_input_keyboard_key(input_, key, WL_KEYBOARD_KEY_STATE_RELEASED);
    }
  }
  tell(evdevKey, down);
  return connection_.isConnected();
}

bool FakeInput::settle() {
  if (connection_.roundTrip()) return true;
  while (!keysDown_.empty()) tell(keysDown_.back(), false);
  connection_.flush();
  return false;
}

void FakeInput::tell(std::uint16_t evdevKey, bool down) {
  org_kde_kwin_fake_input_keyboard_key(input_, evdevKey,
                                       down ? WL_KEYBOARD_KEY_STATE_PRESSED : WL_KEYBOARD_KEY_STATE_RELEASED);
  std::erase(keysDown_, evdevKey);
  if (down) keysDown_.push_back(evdevKey);
}

}  // namespace lexwend::platform
