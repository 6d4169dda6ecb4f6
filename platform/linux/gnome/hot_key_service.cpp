// SPDX-License-Identifier: MIT
#include "platform/linux/gnome/hot_key_service.h"

#include <array>
#include <cstdio>
#include <optional>
#include <string>
#include <utility>

#include "platform/linux/keymap/mac_key_codes.h"

namespace lexwend::platform {
namespace {

/// "<Control><Shift>0x44", which mutter reads as the place of a key; nothing for a key that a PC keyboard does
/// not have.
std::optional<std::string> acceleratorOf(KeyCode keyCode, Modifiers modifiers) {
  const auto key = xFromMacKeyCode(keyCode);
  if (!key) return std::nullopt;
  constexpr std::pair<Modifiers, const char*> kNames[] = {
      {kCmdKey, "<Control>"}, {kShiftKey, "<Shift>"}, {kOptionKey, "<Alt>"}, {kControlKey, "<Super>"}};
  std::string accelerator;
  for (const auto& [modifier, name] : kNames) {
    if (overlap(modifiers, modifier)) accelerator += name;
  }
  std::array<char, sizeof "0x00"> place{};
  std::snprintf(place.data(), place.size(), "0x%02x", static_cast<unsigned>(*key));
  return accelerator + place.data();
}

}  // namespace

GnomeHotKeyService::GnomeHotKeyService(std::shared_ptr<GnomeShell> shell) : shell_(std::move(shell)) {
  observation_ = shell_->observe([this](const ShellEvent& event) { handleEvent(event); });
}

GnomeHotKeyService::~GnomeHotKeyService() {
  stop();
}

OSStatus GnomeHotKeyService::take(const HotKey& hotKey) {
  const auto accelerator = acceleratorOf(hotKey.keyCode, hotKey.modifiers);
  if (!accelerator) return kHotKeyInvalidErr;
  if (!shell_->isThere()) return kNoErr;  // until it comes
  const auto key = shell_->bindKey(*accelerator);
  if (!key) return kHotKeyExistsErr;
  bound_[hotKey.number] = *key;
  return kNoErr;
}

void GnomeHotKeyService::giveBack(const HotKey& hotKey) {
  const auto found = bound_.find(hotKey.number);
  if (found == bound_.end()) return;
  shell_->unbindKey(found->second);
  bound_.erase(found);
}

void GnomeHotKeyService::markEndOfPause() {
  ++*pausesEnding_;
  shell_->afterEvents([pauses = pausesEnding_] { --*pauses; });
}

void GnomeHotKeyService::handleEvent(const ShellEvent& event) {
  if (event.kind == ShellEventKind::appeared) {
    const auto bound = std::exchange(bound_, {});
    for (const auto& hotKey : hotKeys()) {
      // It may have been there already when the key was registered.
      const auto found = bound.find(hotKey->number);
      if (found != bound.end()) shell_->unbindKey(found->second);
      take(*hotKey);
    }
  }
  if (event.kind != ShellEventKind::keyPressed || *pausesEnding_ > 0) return;
  for (const auto& hotKey : hotKeys()) {
    const auto found = bound_.find(hotKey->number);
    if (found != bound_.end() && found->second == event.key) report(*hotKey);
  }
}

}  // namespace lexwend::platform
