// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "platform/hot_key_service.h"

namespace lexwend {

/// The system-wide hot keys of this process: registers combinations, runs the action of the one that is
/// pressed, and names combinations for the user. Main
/// thread only; an action runs there, inside the system's event dispatch, and may call
/// back.
class HotKeyCenter {
 public:
  using Action = std::function<void()>;

  /// The instance of the program, made on first use and never destroyed.
  static HotKeyCenter& shared();

  HotKeyCenter() = default;
  HotKeyCenter(const HotKeyCenter&) = delete;
  HotKeyCenter& operator=(const HotKeyCenter&) = delete;

  /// False when the system refuses, because some program holds the combination or it is none at all. Every
  /// call takes a fresh id, refused ones included; running out of ids is fatal. Nothing is reported here:
  /// the caller does.
  bool registerHotKey(platform::KeyCode keyCode, platform::Modifiers modifiers, Action action);

  /// Gives back every registration and forgets all actions. Ids go on counting.
  void unregisterAll();

  /// The symbols of Control, Option, Shift and Command in this order, then the name of the key; nothing in
  /// between. Other bits of the mask add nothing.
  static std::string displayName(platform::KeyCode keyCode, platform::Modifiers modifiers);

 private:
  using Actions = std::map<std::uint32_t, Action>;

  void installIfNeeded();
  static platform::OSStatus dispatch(const std::weak_ptr<Actions>& actions,
                                     const platform::HotKeyEvent& event);

  // Shared so that the system's handler, which is never removed, can tell when this object is gone.
  std::shared_ptr<Actions> actions_ = std::make_shared<Actions>();
  std::map<std::uint32_t, platform::HotKeyRef> refs_;
  bool installed_ = false;
  std::uint32_t nextId_ = 1;

  friend struct HotKeyCenterPeer;  // for the tests, which cannot count through all ids
};

}  // namespace lexwend
