// SPDX-License-Identifier: MIT
#include "platform/linux/keymap/hot_key_keeper.h"

#include <algorithm>
#include <utility>

namespace lexwend::platform {
namespace {

// A key whose release was not told counts as let go after this time without a repetition. The first one
// usually comes after 600 ms.
constexpr std::chrono::milliseconds kLongestRepeatPause{3000};

}  // namespace

OSStatus HotKeyKeeper::installHandler(std::function<OSStatus(const HotKeyEvent&)> handler) {
  handler_ = std::move(handler);
  return kNoErr;
}

HotKeyRegistration HotKeyKeeper::registerHotKey(KeyCode keyCode, Modifiers modifiers, HotKeyID identity) {
  if (stopped_) return {kHotKeyInvalidErr, {}};
  const bool ours = std::any_of(hotKeys_.begin(), hotKeys_.end(), [&](const auto& other) {
    return other->keyCode == keyCode && other->modifiers == modifiers;
  });
  if (ours) return {kHotKeyExistsErr, {}};
  const auto hotKey = std::make_shared<HotKey>(HotKey{identity, keyCode, modifiers, ++lastNumber_});
  const OSStatus status = take(*hotKey);
  if (status != kNoErr) return {status, {}};
  hotKeys_.push_back(hotKey);
  return {kNoErr, Registration([this, weak = std::weak_ptr(hotKey)] {
            const auto taken = weak.lock();
            if (taken && std::erase(hotKeys_, taken) > 0) giveBack(*taken);
          })};
}

Registration HotKeyKeeper::ignorePresses() {
  ++*pauses_;
  return Registration([this, weak = std::weak_ptr(pauses_)] {
    const auto pauses = weak.lock();
    if (!pauses) return;
    --*pauses;
    markEndOfPause();
  });
}

void HotKeyKeeper::stop() {
  stopped_ = true;
  for (const auto& hotKey : std::exchange(hotKeys_, {})) giveBack(*hotKey);
}

void HotKeyKeeper::report(const HotKey& hotKey) {
  if (*pauses_ > 0 || !handler_) return;
  // Copies, because the handler may unregister the key.
  const KnownHotKeyEvent event(hotKey.identity);
  const auto handler = handler_;
  handler(event);
}

void HotKeyKeeper::press(HotKey& hotKey, bool isIgnored) {
  const Clock::time_point now = Clock::now();
  const bool repeats = hotKey.heldSince && now - *hotKey.heldSince < kLongestRepeatPause;
  hotKey.heldSince = now;
  if (!repeats && !isIgnored) report(hotKey);
}

}  // namespace lexwend::platform
