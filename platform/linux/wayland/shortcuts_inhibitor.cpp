// SPDX-License-Identifier: MIT
#include "platform/linux/wayland/shortcuts_inhibitor.h"

#include <string_view>

#include <keyboard-shortcuts-inhibit-unstable-v1.h>
#include <wayland-client.h>

namespace lexwend::platform {

ShortcutsInhibitor::ShortcutsInhibitor(wl_display* display, wl_seat* seat, wl_surface* surface)
    : seat_(seat), surface_(surface), registry_(wl_display_get_registry(display)) {
  static constexpr wl_registry_listener kListener = {globalAppears,
                                                     [](void*, wl_registry*, std::uint32_t) {}};
  wl_registry_add_listener(registry_, &kListener, this);
  wl_display_flush(display);
}

ShortcutsInhibitor::~ShortcutsInhibitor() {
  if (inhibitor_ != nullptr) zwp_keyboard_shortcuts_inhibitor_v1_destroy(inhibitor_);
  if (manager_ != nullptr) zwp_keyboard_shortcuts_inhibit_manager_v1_destroy(manager_);
  wl_registry_destroy(registry_);
}

void ShortcutsInhibitor::globalAppears(void* self, wl_registry* registry, std::uint32_t name,
                                       const char* interface, std::uint32_t /*version*/) {
  auto& own = *static_cast<ShortcutsInhibitor*>(self);
  const wl_interface& wanted = zwp_keyboard_shortcuts_inhibit_manager_v1_interface;
  if (std::string_view(interface) != wanted.name || own.manager_ != nullptr) return;
  own.manager_ =
      static_cast<zwp_keyboard_shortcuts_inhibit_manager_v1*>(wl_registry_bind(registry, name, &wanted, 1));
  // Not listened to: whether it is active makes no difference to the window.
  own.inhibitor_ =
      zwp_keyboard_shortcuts_inhibit_manager_v1_inhibit_shortcuts(own.manager_, own.surface_, own.seat_);
}

}  // namespace lexwend::platform
