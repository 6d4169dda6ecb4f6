// SPDX-License-Identifier: MIT
#include "platform/linux/gnome/hot_key_service.h"

#include <array>
#include <cstdio>
#include <optional>
#include <string>
#include <utility>

#include <xkbcommon/xkbcommon.h>

#include "platform/linux/keymap/mac_key_codes.h"
#include "platform/linux/session/session_notice.h"

namespace lexwend::platform {
namespace {

/// "<Control><Shift>".
std::string namesOf(Modifiers modifiers) {
  constexpr std::pair<Modifiers, const char*> kNames[] = {
      {kCmdKey, "<Control>"}, {kShiftKey, "<Shift>"}, {kOptionKey, "<Alt>"}, {kControlKey, "<Super>"}};
  std::string names;
  for (const auto& [modifier, name] : kNames) {
    if (overlap(modifiers, modifier)) names += name;
  }
  return names;
}

/// "<Control>0x44", which mutter reads as the place of a key; nothing for a key that a PC keyboard does not
/// have.
std::optional<std::string> placeOf(KeyCode keyCode, Modifiers modifiers) {
  const auto key = xFromMacKeyCode(keyCode);
  if (!key) return std::nullopt;
  std::array<char, sizeof "0x00"> place{};
  std::snprintf(place.data(), place.size(), "0x%02x", static_cast<unsigned>(*key));
  return namesOf(modifiers) + place.data();
}

/// "<Control>k", as the user sees it in the settings: by what the key types in the US layout.
std::optional<std::string> acceleratorOf(KeyCode keyCode, Modifiers modifiers) {
  const auto key = xFromMacKeyCode(keyCode);
  const std::unique_ptr<xkb_context, decltype(&xkb_context_unref)> context(
      xkb_context_new(XKB_CONTEXT_NO_FLAGS), xkb_context_unref);
  const xkb_rule_names names{"evdev", "pc105", "us", "", ""};
  const std::unique_ptr<xkb_keymap, decltype(&xkb_keymap_unref)> keymap(
      xkb_keymap_new_from_names(context.get(), &names, XKB_KEYMAP_COMPILE_NO_FLAGS), xkb_keymap_unref);
  const xkb_keysym_t* keysyms = nullptr;
  if (!key || !keymap || xkb_keymap_key_get_syms_by_level(keymap.get(), *key, 0, 0, &keysyms) != 1) {
    return std::nullopt;
  }
  std::array<char, 64> name{};
  if (xkb_keysym_get_name(keysyms[0], name.data(), name.size()) <= 0) return std::nullopt;
  return namesOf(modifiers) + name.data();
}

}  // namespace

GnomeHotKeyService::GnomeHotKeyService(std::shared_ptr<GnomeShell> shell, GnomeKeyBinding binding)
    : shell_(std::move(shell)), binding_(std::move(binding)) {
  observation_ = shell_->observe([this](const ShellEvent& event) { handleEvent(event); });
}

GnomeHotKeyService::~GnomeHotKeyService() {
  stop();
}

bool GnomeHotKeyService::needsAgreement() {
  return !isAgreed_ && !shell_->isThere() && binding_.isPossible() && !binding_.isMadeByUser();
}

void GnomeHotKeyService::agree() {
  isAgreed_ = true;
  for (const auto& hotKey : hotKeys()) take(*hotKey);
}

bool GnomeHotKeyService::hasHotKeys() {
  return shell_->isThere() || binding_.isMadeByUser() || binding_.isSet();
}

std::string_view GnomeHotKeyService::whyNoPressComes() {
  return hasHotKeys() ? std::string_view() : kNoExtension.what.hebrew;
}

void GnomeHotKeyService::bind(const HotKey& hotKey) {
  const auto accelerator = acceleratorOf(hotKey.keyCode, hotKey.modifiers);
  if (accelerator && isAgreed_ && binding_.isPossible() && !binding_.isMadeByUser()) {
    binding_.set(*accelerator);
  }
}

OSStatus GnomeHotKeyService::take(const HotKey& hotKey) {
  const auto place = placeOf(hotKey.keyCode, hotKey.modifiers);
  if (!place) return kHotKeyInvalidErr;
  if (!shell_->isAgent()) return shell_->agentRuns() ? kHotKeyExistsErr : kNoErr;
  if (!shell_->isThere()) {
    bind(hotKey);
    return kNoErr;
  }
  const auto key = shell_->bindKey(*place);
  if (!key) return kHotKeyExistsErr;
  bound_[hotKey.number] = *key;
  return kNoErr;
}

void GnomeHotKeyService::giveBack(const HotKey& hotKey) {
  if (isAgreed_) binding_.remove();
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
    if (isAgreed_) binding_.remove();
    bound_.clear();
    for (const auto& hotKey : hotKeys()) take(*hotKey);
  }
  if (event.kind != ShellEventKind::keyPressed || *pausesEnding_ > 0) return;
  for (const auto& hotKey : hotKeys()) {
    const auto found = bound_.find(hotKey->number);
    if (found != bound_.end() && found->second == event.key) report(*hotKey);
  }
}

}  // namespace lexwend::platform
