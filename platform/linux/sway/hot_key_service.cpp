// SPDX-License-Identifier: MIT
#include "platform/linux/sway/hot_key_service.h"

#include <algorithm>
#include <optional>
#include <utility>

#include <unistd.h>

#include "platform/linux/keymap/hot_key.h"
#include "platform/linux/keymap/mac_key_codes.h"

namespace lexwend::platform {
namespace {

// A key whose release was not told counts as let go after this time without a repetition. sway's first one
// usually comes after 600 ms.
constexpr std::chrono::milliseconds kLongestRepeatPause{3000};

/// "Ctrl+Shift+68"; nothing for a key that a PC keyboard does not have.
std::optional<std::string> combinationOf(KeyCode keyCode, Modifiers modifiers) {
  const auto key = xFromMacKeyCode(keyCode);
  if (!key) return std::nullopt;
  constexpr std::pair<Modifiers, const char*> kNames[] = {
      {kCmdKey, "Ctrl+"}, {kShiftKey, "Shift+"}, {kOptionKey, "Mod1+"}, {kControlKey, "Mod4+"}};
  std::string combination;
  for (const auto& [modifier, name] : kNames) {
    if (overlap(modifiers, modifier)) combination += name;
  }
  return combination + std::to_string(*key);
}

/// The command of a binding, by which its presses are recognised: of this process, should there be another.
std::string commandOf(std::uint64_t number, bool isPress) {
  return "nop lexwend " + std::to_string(getpid()) + " " + std::to_string(number) +
         (isPress ? " down" : " up");
}

}  // namespace

SwayHotKeyService::SwayHotKeyService(std::shared_ptr<SwayIpc> sway)
    : sway_(std::move(sway)), tick_("lexwend " + std::to_string(getpid())) {
  observation_ = sway_->observe([this](const SwayEvent& event) { handleEvent(event); });
}

SwayHotKeyService::~SwayHotKeyService() {
  stop();
}

OSStatus SwayHotKeyService::installHandler(std::function<OSStatus(const HotKeyEvent&)> handler) {
  handler_ = std::move(handler);
  return kNoErr;
}

HotKeyRegistration SwayHotKeyService::registerHotKey(KeyCode keyCode, Modifiers modifiers,
                                                     HotKeyID identity) {
  const auto combination = combinationOf(keyCode, modifiers);
  if (stopped_ || !combination) {
    return {kHotKeyInvalidErr, {}};
  }
  const bool ours = std::any_of(hotKeys_.begin(), hotKeys_.end(),
                                [&](const auto& other) { return other->combination == *combination; });
  if (ours) {
    return {kHotKeyExistsErr, {}};
  }
  const auto hotKey = std::make_shared<BoundKey>(BoundKey{identity, *combination, ++lastNumber_});
  if (!bind(*hotKey)) {
    return {kHotKeyInvalidErr, {}};
  }
  hotKeys_.push_back(hotKey);
  return {kNoErr, Registration([this, weak = std::weak_ptr(hotKey)] {
            const auto bound = weak.lock();
            if (bound && std::erase(hotKeys_, bound) > 0) unbind(*bound);
          })};
}

bool SwayHotKeyService::bind(const BoundKey& hotKey) {
  return sway_->run("bindcode --no-warn " + hotKey.combination + " " + commandOf(hotKey.number, true)) &&
         sway_->run("bindcode --no-warn --release " + hotKey.combination + " " +
                    commandOf(hotKey.number, false));
}

void SwayHotKeyService::unbind(const BoundKey& hotKey) {
  sway_->run("unbindcode " + hotKey.combination);
  sway_->run("unbindcode --release " + hotKey.combination);
}

Registration SwayHotKeyService::ignorePresses() {
  ++pauses_->running;
  return Registration([sway = sway_, pauses = pauses_, tick = tick_] {
    --pauses->running;
    ++pauses->ending;
    sway->sendTick(tick);
  });
}

void SwayHotKeyService::stop() {
  stopped_ = true;
  for (const auto& hotKey : hotKeys_) unbind(*hotKey);
  hotKeys_.clear();
}

void SwayHotKeyService::handleEvent(const SwayEvent& event) {
  switch (event.kind) {
    case SwayEventKind::reload:  // which has forgotten the bindings
      for (const auto& hotKey : hotKeys_) bind(*hotKey);
      break;
    case SwayEventKind::tick:
      if (textOf(event.details, "payload") == tick_ && pauses_->ending > 0) --pauses_->ending;
      break;
    case SwayEventKind::binding:
      if (json_object_has_member(event.details, "binding") != FALSE) {
        handleBinding(textOf(json_object_get_object_member(event.details, "binding"), "command"));
      }
      break;
    case SwayEventKind::input:
      break;
  }
}

void SwayHotKeyService::handleBinding(const std::string& command) {
  for (const auto& hotKey : std::vector(hotKeys_)) {  // the handler may unregister it
    if (command == commandOf(hotKey->number, false)) hotKey->heldSince.reset();
    if (command != commandOf(hotKey->number, true)) continue;
    const Clock::time_point now = Clock::now();
    const bool repeats = hotKey->heldSince && now - *hotKey->heldSince < kLongestRepeatPause;
    hotKey->heldSince = now;
    if (repeats || pauses_->running > 0 || pauses_->ending > 0 || !handler_) continue;
    const auto handler = handler_;
    handler(KnownHotKeyEvent(hotKey->identity));
  }
}

}  // namespace lexwend::platform
