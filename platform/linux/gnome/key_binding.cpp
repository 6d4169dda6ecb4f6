// SPDX-License-Identifier: MIT
#include "platform/linux/gnome/key_binding.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/linux/session/buses.h"
#include "platform/linux/session/identity.h"

namespace lexwend::platform {
namespace {

constexpr char kSchema[] = "org.gnome.settings-daemon.plugins.media-keys";
constexpr char kBindingSchema[] = "org.gnome.settings-daemon.plugins.media-keys.custom-keybinding";
constexpr char kList[] = "custom-keybindings";  // of paths
constexpr char kOwnPath[] =
    "/org/gnome/settings-daemon/plugins/media-keys/custom-keybindings/org.lexwend.Lexwend/";
constexpr char kDaemon[] = "org.gnome.SettingsDaemon.MediaKeys";

struct SchemaUnref {
  void operator()(GSettingsSchema* schema) const { g_settings_schema_unref(schema); }
};

/// Null where the schema is not installed; asking for it otherwise would end the program.
GObjectRef<GSettings> settings(const char* name, const char* path = nullptr) {
  GSettingsSchemaSource* source = g_settings_schema_source_get_default();
  const std::unique_ptr<GSettingsSchema, SchemaUnref> schema(
      source != nullptr ? g_settings_schema_source_lookup(source, name, TRUE) : nullptr);
  return GObjectRef<GSettings>(schema ? g_settings_new_full(schema.get(), nullptr, path) : nullptr);
}

std::vector<std::string> paths(GSettings* list) {
  std::vector<std::string> paths;
  char** const all = g_settings_get_strv(list, kList);
  for (char** path = all; *path != nullptr; ++path) paths.emplace_back(*path);
  g_strfreev(all);
  return paths;
}

void setPaths(GSettings* list, const std::vector<std::string>& paths) {
  std::vector<const char*> all;
  all.reserve(paths.size() + 1);
  for (const std::string& path : paths) all.push_back(path.c_str());
  all.push_back(nullptr);
  g_settings_set_strv(list, kList, all.data());
}

}  // namespace

bool GnomeKeyBinding::isPossible() const {
  GDBusConnection* bus = sessionBus();
  if (bus == nullptr || !settings(kSchema) || !settings(kBindingSchema, kOwnPath)) return false;
  const GVariantRef answer(g_dbus_connection_call_sync(
      bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "NameHasOwner",
      g_variant_new("(s)", kDaemon), G_VARIANT_TYPE("(b)"), G_DBUS_CALL_FLAGS_NONE, kBusCallTimeout, nullptr,
      nullptr));
  gboolean isOwned = FALSE;
  if (answer) g_variant_get(answer.get(), "(b)", &isOwned);
  return isOwned != FALSE;
}

bool GnomeKeyBinding::isSet() const {
  const auto list = settings(kSchema);
  const auto all = list ? paths(list.get()) : std::vector<std::string>();
  return std::find(all.begin(), all.end(), kOwnPath) != all.end();
}

bool GnomeKeyBinding::isMadeByUser() const {
  const auto list = settings(kSchema);
  if (!list) return false;
  for (const std::string& path : paths(list.get())) {
    const auto binding = path != kOwnPath ? settings(kBindingSchema, path.c_str()) : nullptr;
    if (!binding) continue;
    const GText command(g_settings_get_string(binding.get(), "command"));
    const GText key(g_settings_get_string(binding.get(), "binding"));
    const std::string_view runs(command.get());
    const bool isFix =
        runs.find("lexwend") != std::string_view::npos && runs.find("--fix") != std::string_view::npos;
    if (isFix && *key.get() != '\0') return true;
  }
  return false;
}

void GnomeKeyBinding::set(const std::string& accelerator) {
  const auto list = settings(kSchema);
  const auto binding = settings(kBindingSchema, kOwnPath);
  if (!list || !binding) return;
  const GText program(g_shell_quote(program_.c_str()));
  g_settings_set_string(binding.get(), "name", std::string(kDisplayName).c_str());
  g_settings_set_string(binding.get(), "command", (program.get() + std::string(" --fix")).c_str());
  g_settings_set_string(binding.get(), "binding", accelerator.c_str());
  auto all = paths(list.get());
  if (std::find(all.begin(), all.end(), kOwnPath) == all.end()) {
    all.emplace_back(kOwnPath);
    setPaths(list.get(), all);
  }
  g_settings_sync();
}

void GnomeKeyBinding::remove() {
  const auto list = settings(kSchema);
  const auto binding = settings(kBindingSchema, kOwnPath);
  if (!list || !binding) return;
  auto all = paths(list.get());
  if (std::erase(all, kOwnPath) == 0) return;
  setPaths(list.get(), all);
  for (const char* key : {"name", "command", "binding"}) g_settings_reset(binding.get(), key);
  g_settings_sync();
}

}  // namespace lexwend::platform
