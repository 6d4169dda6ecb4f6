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

}  // namespace lexwend::platform
