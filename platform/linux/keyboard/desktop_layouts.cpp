// SPDX-License-Identifier: MIT
#include "platform/linux/keyboard/desktop_layouts.h"

#include <memory>

#include "platform/linux/session/buses.h"
#include "platform/linux/session/glib_ref.h"

namespace lexwend::platform {
namespace {

constexpr char kService[] = "org.kde.keyboard";
constexpr char kPath[] = "/Layouts";
constexpr char kInterface[] = "org.kde.KeyboardLayouts";
// Milliseconds. Nobody waits for the answer; the deadline ends a call that gets none.
constexpr int kCallTime = 2000;

struct Wanted {
  std::string layout;
  std::size_t occurrence;
};

void listArrived(GObject* source, GAsyncResult* result, gpointer data) {
  const std::unique_ptr<Wanted> wanted(static_cast<Wanted*>(data));
  auto* bus = G_DBUS_CONNECTION(source);
  const GVariantRef reply(g_dbus_connection_call_finish(bus, result, nullptr));
  if (!reply || g_variant_is_of_type(reply.get(), G_VARIANT_TYPE("(a(sss))")) == FALSE) return;
  const GVariantRef list(g_variant_get_child_value(reply.get(), 0));
  std::size_t seen = 0;
  for (gsize index = 0; index < g_variant_n_children(list.get()); ++index) {
    const GVariantRef entry(g_variant_get_child_value(list.get(), index));
    const GVariantRef shortName(g_variant_get_child_value(entry.get(), 0));
    if (wanted->layout == g_variant_get_string(shortName.get(), nullptr) && seen++ == wanted->occurrence) {
      g_dbus_connection_call(bus, kService, kPath, kInterface, "setLayout",
                             g_variant_new("(u)", static_cast<guint32>(index)), nullptr,
                             G_DBUS_CALL_FLAGS_NO_AUTO_START, kCallTime, nullptr, nullptr, nullptr);
      return;
    }
  }
}

}  // namespace

bool desktopKeepsItsLayout(GDBusConnection* sessionBus) {
  if (sessionBus == nullptr) return false;
  const GVariantRef reply(g_dbus_connection_call_sync(
      sessionBus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "NameHasOwner",
      g_variant_new("(s)", "org.gnome.Shell"), G_VARIANT_TYPE("(b)"), G_DBUS_CALL_FLAGS_NONE, kBusCallTimeout,
      nullptr, nullptr));
  gboolean hasOwner = FALSE;
  if (reply) g_variant_get(reply.get(), "(b)", &hasOwner);
  return hasOwner != FALSE;
}

void tellDesktopOfLayout(GDBusConnection* sessionBus, const std::string& layout, std::size_t occurrence) {
  if (sessionBus == nullptr) return;
  g_dbus_connection_call(sessionBus, kService, kPath, kInterface, "getLayoutsList", nullptr, nullptr,
                         G_DBUS_CALL_FLAGS_NO_AUTO_START, kCallTime, nullptr, listArrived,
                         new Wanted{layout, occurrence});
}

}  // namespace lexwend::platform
