// SPDX-License-Identifier: MIT
#include "platform/linux/kwin/windows.h"

#include <plasma-window-management.h>

namespace lexwend::platform {
namespace {

// The first in which a window has an identifier that stays its own.
constexpr std::uint32_t kOldestVersion = 13;
// The one whose events are handled here.
constexpr std::uint32_t kManagementVersion = 16;

}  // namespace

struct KWinWindows::Window {
  KWinWindows& windows;
  FrontWindow told;
  bool isActive = false;
};

/// The events of the protocol; those that tell nothing of use are taken and forgotten.
struct KWinWindows::Listener {
  using Proxy = org_kde_plasma_window;
  using Management = org_kde_plasma_window_management;

  static void windowAppears(void* self, Management*, std::uint32_t, const char* identifier) {
    static_cast<KWinWindows*>(self)->add(identifier);
  }
  static void applicationChanges(void* window, Proxy*, const char* identifier) {
    static_cast<Window*>(window)->told.windowClass = identifier;
  }
  static void stateChanges(void* window, Proxy*, std::uint32_t flags) {
    static_cast<Window*>(window)->isActive = (flags & ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ACTIVE) != 0;
  }
  static void processChanges(void* window, Proxy*, std::uint32_t process) {
    if (process != 0) static_cast<Window*>(window)->told.process = process;
  }
  static void windowGoes(void* window, Proxy* proxy) { static_cast<Window*>(window)->windows.remove(proxy); }

  static constexpr org_kde_plasma_window_management_listener kManagement = {
      .show_desktop_changed = [](void*, Management*, std::uint32_t) {},
      .window = [](void*, Management*, std::uint32_t) {},
      .stacking_order_changed = [](void*, Management*, wl_array*) {},
      .stacking_order_uuid_changed = [](void*, Management*, const char*) {},
      .window_with_uuid = windowAppears};
  static constexpr org_kde_plasma_window_listener kWindow = {
      .title_changed = [](void*, Proxy*, const char*) {},
      .app_id_changed = applicationChanges,
      .state_changed = stateChanges,
      .virtual_desktop_changed = [](void*, Proxy*, std::int32_t) {},
      .themed_icon_name_changed = [](void*, Proxy*, const char*) {},
      .unmapped = windowGoes,
      .initial_state = [](void*, Proxy*) {},
      .parent_window = [](void*, Proxy*, Proxy*) {},
      .geometry = [](void*, Proxy*, std::int32_t, std::int32_t, std::uint32_t, std::uint32_t) {},
      .icon_changed = [](void*, Proxy*) {},
      .pid_changed = processChanges,
      .virtual_desktop_entered = [](void*, Proxy*, const char*) {},
      .virtual_desktop_left = [](void*, Proxy*, const char*) {},
      .application_menu = [](void*, Proxy*, const char*, const char*) {},
      .activity_entered = [](void*, Proxy*, const char*) {},
      .activity_left = [](void*, Proxy*, const char*) {},
      .resource_name_changed = [](void*, Proxy*, const char*) {}};
};

std::unique_ptr<KWinWindows> KWinWindows::open(WaylandConnection& connection) {
  const auto version = connection.versionOf(org_kde_plasma_window_management_interface.name);
  if (!version || *version < kOldestVersion) return nullptr;
  auto* management = static_cast<org_kde_plasma_window_management*>(
      connection.bind(org_kde_plasma_window_management_interface, kManagementVersion));
  std::unique_ptr<KWinWindows> windows(new KWinWindows(management));
  org_kde_plasma_window_management_add_listener(management, &Listener::kManagement, windows.get());
  connection.roundTrip();  // their identifiers
  connection.roundTrip();  // what they are
  return windows;
}

KWinWindows::KWinWindows(org_kde_plasma_window_management* management) : management_(management) {}

KWinWindows::~KWinWindows() {
  for (const auto& [proxy, window] : windows_) org_kde_plasma_window_destroy(proxy);
  org_kde_plasma_window_management_destroy(management_);
}

void KWinWindows::add(const char* identifier) {
  org_kde_plasma_window* proxy = org_kde_plasma_window_management_get_window_by_uuid(management_, identifier);
  auto window = std::make_unique<Window>(Window{*this, {++lastNumber_, std::nullopt, std::nullopt}});
  org_kde_plasma_window_add_listener(proxy, &Listener::kWindow, window.get());
  windows_.emplace(proxy, std::move(window));
}

void KWinWindows::remove(org_kde_plasma_window* window) {
  windows_.erase(window);
  org_kde_plasma_window_destroy(window);
}

std::optional<FrontWindow> KWinWindows::active() const {
  for (const auto& [proxy, window] : windows_) {
    if (window->isActive) return window->told;
  }
  return std::nullopt;
}

void KWinWindows::activate(std::uint32_t process) {
  for (const auto& [proxy, window] : windows_) {
    if (window->told.process != process) continue;
    org_kde_plasma_window_set_state(proxy, ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ACTIVE,
                                    ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ACTIVE);
  }
}

}  // namespace lexwend::platform
