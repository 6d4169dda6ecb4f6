// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "platform/hot_key_service.h"

namespace lexwend {

/// The system-wide hot keys of this process. Registers combinations, runs the action of the one that is
/// pressed, and names combinations for the user. Main thread only. An action runs there, inside the system's
/// event dispatch, and may call back.
class HotKeyCenter {
 public:
  using Action = std::function<void()>;

  /// The instance of the program. It is made on first use and never destroyed.
  static HotKeyCenter& shared();

  HotKeyCenter() = default;
  /// Unregisters nothing. The hot keys stay registered until the process ends, and pressing them does
  /// nothing.
  ~HotKeyCenter();
  HotKeyCenter(const HotKeyCenter&) = delete;
  HotKeyCenter& operator=(const HotKeyCenter&) = delete;

  /// False when the system refuses, because another program holds the combination or it is not valid. Every
  /// call takes a new id, even when it is refused. Running out of ids is fatal. The caller reports the
  /// failure.
  bool registerHotKey(platform::KeyCode keyCode, platform::Modifiers modifiers, Action action);

  /// Unregisters every hot key and removes all actions. Their ids are not used again.
  void unregisterAll();

  /// The names of the modifiers, then that of the key, as the installed host calls and joins them: on a Mac
  /// the symbols of Control, Option, Shift and Command in this order, without separators. Other bits of the
  /// mask add nothing.
  static std::string displayName(platform::KeyCode keyCode, platform::Modifiers modifiers);

 private:
  using Actions = std::map<std::uint32_t, Action>;

  void installIfNeeded();
  static platform::OSStatus dispatch(const std::weak_ptr<Actions>& actions,
                                     const platform::HotKeyEvent& event);

  // Shared, so that the handler in the system, which is never removed, notices when this object is gone.
  std::shared_ptr<Actions> actions_ = std::make_shared<Actions>();
  std::map<std::uint32_t, platform::Registration> hotKeys_;
  bool installed_ = false;
  std::uint32_t nextId_ = 1;

  friend struct HotKeyCenterPeer;  // for the tests, which cannot count through all ids
};

}  // namespace lexwend
