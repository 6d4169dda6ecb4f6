// SPDX-License-Identifier: MIT
#include "platform/linux/sway/hot_key_service.h"

#include <optional>
#include <utility>

#include <unistd.h>

#include "platform/linux/keymap/mac_key_codes.h"

namespace lexwend::platform {
namespace {

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

SwayHotKeyService::SwayHotKeyService(std::shared_ptr<SwayIpc> sway, std::function<bool()> anotherIsTheAgent)
    : sway_(std::move(sway)),
      anotherIsTheAgent_(std::move(anotherIsTheAgent)),
      tick_("lexwend " + std::to_string(getpid())) {
  observation_ = sway_->observe([this](const SwayEvent& event) { handleEvent(event); });
}

SwayHotKeyService::~SwayHotKeyService() {
  stop();
}

OSStatus SwayHotKeyService::take(const HotKey& hotKey) {
  if (anotherIsTheAgent_()) return kHotKeyExistsErr;
  const auto combination = combinationOf(hotKey.keyCode, hotKey.modifiers);
  const bool bound =
      combination &&
      sway_->run("bindcode --no-warn " + *combination + " " + commandOf(hotKey.number, true)) &&
      sway_->run("bindcode --no-warn --release " + *combination + " " + commandOf(hotKey.number, false));
  return bound ? kNoErr : kHotKeyInvalidErr;
}

void SwayHotKeyService::giveBack(const HotKey& hotKey) {
  const auto combination = combinationOf(hotKey.keyCode, hotKey.modifiers);
  if (!combination) return;
  sway_->run("unbindcode " + *combination);
  sway_->run("unbindcode --release " + *combination);
}

void SwayHotKeyService::markEndOfPause() {
  ++pausesEnding_;
  sway_->sendTick(tick_);
}

void SwayHotKeyService::handleEvent(const SwayEvent& event) {
  switch (event.kind) {
    case SwayEventKind::reload:  // which has forgotten the bindings
      for (const auto& hotKey : hotKeys()) take(*hotKey);
      break;
    case SwayEventKind::tick:
      if (textOf(event.details, "payload") == tick_ && pausesEnding_ > 0) --pausesEnding_;
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
  for (const auto& hotKey : hotKeys()) {
    if (command == commandOf(hotKey->number, false)) release(*hotKey);
    if (command == commandOf(hotKey->number, true)) press(*hotKey, pausesEnding_ > 0);
  }
}

}  // namespace lexwend::platform
