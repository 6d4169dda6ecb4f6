// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

struct wl_display;
struct wl_registry;
struct wl_seat;
struct wl_surface;
struct zwp_keyboard_shortcuts_inhibit_manager_v1;
struct zwp_keyboard_shortcuts_inhibitor_v1;

namespace lexwend::platform {

/// Asks the compositor to send its own combinations to a surface of this program while that has the keyboard
/// (keyboard-shortcuts-inhibit-unstable-v1). The compositor may ask the user first, and may refuse; nothing
/// happens where it does not know the request. It ends with this object, with the surface and with the
/// process. Everything is that of the toolkit's connection, whose events the toolkit handles in the thread of
/// this object; nothing here waits. The surface must outlive this object.
class ShortcutsInhibitor {
 public:
  ShortcutsInhibitor(wl_display* display, wl_seat* seat, wl_surface* surface);
  ~ShortcutsInhibitor();
  ShortcutsInhibitor(const ShortcutsInhibitor&) = delete;
  ShortcutsInhibitor& operator=(const ShortcutsInhibitor&) = delete;

 private:
  static void globalAppears(void* self, wl_registry* registry, std::uint32_t name, const char* interface,
                            std::uint32_t version);

  wl_seat* seat_;
  wl_surface* surface_;
  wl_registry* registry_;
  zwp_keyboard_shortcuts_inhibit_manager_v1* manager_ = nullptr;
  zwp_keyboard_shortcuts_inhibitor_v1* inhibitor_ = nullptr;
};

}  // namespace lexwend::platform
