// SPDX-License-Identifier: MIT
#include "tests/linux/testing/desktop_settings.h"

#include <cstdlib>
#include <stdexcept>

#include "tests/linux/testing/temporary_folder.h"

namespace lexwend::platform {
namespace {

constexpr char kSchemas[] =
    "<schemalist>"
    "<schema id='org.gnome.desktop.input-sources' path='/org/gnome/desktop/input-sources/'>"
    "<key name='sources' type='a(ss)'><default>[]</default></key>"
    "<key name='mru-sources' type='a(ss)'><default>[]</default></key>"
    "</schema>"
    "<schema id='org.gnome.desktop.wm.keybindings' path='/org/gnome/desktop/wm/keybindings/'>"
    "<key name='switch-input-source' type='as'><default>[]</default></key>"
    "<key name='switch-input-source-backward' type='as'><default>[]</default></key>"
    "</schema>"
    "<schema id='org.gnome.settings-daemon.plugins.media-keys' "
    "path='/org/gnome/settings-daemon/plugins/media-keys/'>"
    "<key name='custom-keybindings' type='as'><default>[]</default></key>"
    "</schema>"
    "<schema id='org.gnome.settings-daemon.plugins.media-keys.custom-keybinding'>"
    "<key name='name' type='s'><default>''</default></key>"
    "<key name='command' type='s'><default>''</default></key>"
    "<key name='binding' type='s'><default>''</default></key>"
    "</schema>"
    "</schemalist>";

}  // namespace

DesktopSettings& DesktopSettings::shared() {
  static DesktopSettings settings;
  return settings;
}

DesktopSettings::DesktopSettings() {
  const test::TemporaryFolder folder;
  test::putContents(folder.file("desktop.gschema.xml"), kSchemas);
  const std::string compile = "glib-compile-schemas --strict " + folder.path();
  if (std::system(compile.c_str()) != 0) throw std::runtime_error("the settings cannot be described");
  ::setenv("GSETTINGS_SCHEMA_DIR", folder.path().c_str(), 1);
  ::setenv("GSETTINGS_BACKEND", "memory", 1);
  sources_.reset(g_settings_new("org.gnome.desktop.input-sources"));
  bindings_.reset(g_settings_new("org.gnome.desktop.wm.keybindings"));
  keys_.reset(g_settings_new("org.gnome.settings-daemon.plugins.media-keys"));
}

void DesktopSettings::setLayouts(const char* key, const std::vector<std::string>& layouts) {
  GVariantBuilder list;
  g_variant_builder_init(&list, G_VARIANT_TYPE("a(ss)"));
  for (const std::string& layout : layouts) {
    // An input method is named as "ibus:anthy".
    const std::size_t colon = layout.find(':');
    const bool isMethod = colon != std::string::npos;
    g_variant_builder_add(&list, "(ss)", isMethod ? layout.substr(0, colon).c_str() : "xkb",
                          isMethod ? layout.substr(colon + 1).c_str() : layout.c_str());
  }
  g_settings_set_value(sources_.get(), key, g_variant_builder_end(&list));
}

std::vector<std::string> DesktopSettings::layouts(const char* key) {
  std::vector<std::string> layouts;
  const GVariantRef list(g_settings_get_value(sources_.get(), key));
  for (gsize i = 0; i < g_variant_n_children(list.get()); ++i) {
    const char* kind = nullptr;
    const char* name = nullptr;
    g_variant_get_child(list.get(), i, "(&s&s)", &kind, &name);
    layouts.push_back(std::string(kind) == "xkb" ? name : std::string(kind) + ":" + name);
  }
  return layouts;
}

void DesktopSettings::setShortcuts(const char* key, const std::vector<std::string>& accelerators) {
  GVariantBuilder list;
  g_variant_builder_init(&list, G_VARIANT_TYPE("as"));
  for (const std::string& accelerator : accelerators) g_variant_builder_add(&list, "s", accelerator.c_str());
  g_settings_set_value(bindings_.get(), key, g_variant_builder_end(&list));
}

namespace {

GObjectRef<GSettings> bindingAt(const std::string& path) {
  return GObjectRef<GSettings>(g_settings_new_with_path(
      "org.gnome.settings-daemon.plugins.media-keys.custom-keybinding", path.c_str()));
}

}  // namespace

void DesktopSettings::setKeyBindings(const std::map<std::string, KeyBinding>& bindings) {
  for (const auto& [path, binding] : keyBindings()) {
    for (const char* key : {"name", "command", "binding"}) g_settings_reset(bindingAt(path).get(), key);
  }
  GVariantBuilder list;
  g_variant_builder_init(&list, G_VARIANT_TYPE("as"));
  for (const auto& [path, binding] : bindings) {
    g_variant_builder_add(&list, "s", path.c_str());
    const auto settings = bindingAt(path);
    g_settings_set_string(settings.get(), "name", binding.name.c_str());
    g_settings_set_string(settings.get(), "command", binding.command.c_str());
    g_settings_set_string(settings.get(), "binding", binding.key.c_str());
  }
  g_settings_set_value(keys_.get(), "custom-keybindings", g_variant_builder_end(&list));
}

std::map<std::string, DesktopSettings::KeyBinding> DesktopSettings::keyBindings() {
  std::map<std::string, KeyBinding> bindings;
  const GVariantRef list(g_settings_get_value(keys_.get(), "custom-keybindings"));
  for (gsize i = 0; i < g_variant_n_children(list.get()); ++i) {
    const char* path = nullptr;
    g_variant_get_child(list.get(), i, "&s", &path);
    bindings[path] = keyBindingAt(path);
  }
  return bindings;
}

DesktopSettings::KeyBinding DesktopSettings::keyBindingAt(const std::string& path) {
  const auto settings = bindingAt(path);
  const GText name(g_settings_get_string(settings.get(), "name"));
  const GText command(g_settings_get_string(settings.get(), "command"));
  const GText key(g_settings_get_string(settings.get(), "binding"));
  return {name.get(), command.get(), key.get()};
}

}  // namespace lexwend::platform
