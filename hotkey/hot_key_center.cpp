// SPDX-License-Identifier: MIT
#include "hotkey/hot_key_center.h"

#include <limits>
#include <utility>

#include "core/characters.h"
#include "core/layout_map.h"
#include "hotkey/function_keys.h"
#include "support/fatal.h"

namespace lexwend {
namespace {

/// The agent's own four-character code, "TKVR".
constexpr std::uint32_t kSignature = 0x544B5652;

std::string keyName(platform::KeyCode keyCode, const platform::KeyNames& names) {
  if (const auto name = functionKeyName(keyCode)) return std::string(*name);
  if (keyCode == platform::kKeyReturn) return std::string(names.returnKey);
  if (keyCode == platform::kKeyTab) return std::string(names.tab);
  if (keyCode == platform::kKeySpace) return std::string(names.space);
  if (keyCode == platform::kKeyDelete) return std::string(names.backspace);
  if (const auto character = LayoutMap::usCharacter(number(keyCode))) return uppercased(*character);
  return "מקש " + std::to_string(number(keyCode));
}

}  // namespace

HotKeyCenter& HotKeyCenter::shared() {
  // Never destroyed: at exit the host that holds the registrations is destroyed before the statics.
  static auto* const kShared = new HotKeyCenter;
  return *kShared;
}

HotKeyCenter::~HotKeyCenter() {
  for (auto& [id, hotKey] : hotKeys_) hotKey.detach();
}

bool HotKeyCenter::registerHotKey(platform::KeyCode keyCode, platform::Modifiers modifiers, Action action) {
  installIfNeeded();

  const std::uint32_t id = nextId_;
  if (id == std::numeric_limits<std::uint32_t>::max()) fatal("the ids of hot keys ran out");
  nextId_ = id + 1;

  platform::HotKeyRegistration registration =
      platform::hotKeyService().registerHotKey(keyCode, modifiers, {kSignature, id});
  if (registration.status != platform::kNoErr || !registration.hotKey) return false;

  (*actions_)[id] = std::move(action);
  hotKeys_[id] = std::move(registration.hotKey);
  return true;
}

void HotKeyCenter::unregisterAll() {
  for (auto& [id, hotKey] : hotKeys_) hotKey.cancel();
  hotKeys_.clear();
  actions_->clear();
}

std::string HotKeyCenter::displayName(platform::KeyCode keyCode, platform::Modifiers modifiers) {
  const platform::KeyNames& names = platform::hotKeyService().keyNames();
  std::string name;
  for (const auto& modifier : names.modifiers) {
    if (overlap(modifiers, modifier.bit)) name.append(modifier.name).append(names.joint);
  }
  return name + keyName(keyCode, names);
}

void HotKeyCenter::installIfNeeded() {
  if (installed_) return;
  platform::hotKeyService().installHandler(
      [actions = std::weak_ptr<Actions>(actions_)](const platform::HotKeyEvent& event) {
        return dispatch(actions, event);
      });
  // Set even after a failure: a second try could install a second handler.
  installed_ = true;
}

platform::OSStatus HotKeyCenter::dispatch(const std::weak_ptr<Actions>& actions,
                                          const platform::HotKeyEvent& event) {
  // A failed read leaves id 0, which is never registered.
  platform::HotKeyID pressed;
  event.hotKeyID(pressed);

  Action action;
  if (const auto registered = actions.lock()) {
    const auto found = registered->find(pressed.id);
    // A copy, because the action may unregister itself while it runs.
    if (found != registered->end()) action = found->second;
  }
  if (action) action();
  return platform::kNoErr;
}

}  // namespace lexwend
