// SPDX-License-Identifier: MIT
#include "platform/linux/keymap/layout_shortcut.h"

#include <algorithm>
#include <array>
#include <string>

#include <gio/gio.h>
#include <xkbcommon/xkbcommon.h>

#include "platform/linux/session/glib_ref.h"

namespace lexwend::platform {
namespace {

constexpr guint kLookMilliseconds = 20;

struct NamedModifier {
  const char* name;
  EventFlags flag;
};
constexpr std::array<NamedModifier, 8> kModifiers = {{{"shift", kEventFlagShift},
                                                      {"control", kEventFlagCommand},
                                                      {"ctrl", kEventFlagCommand},
                                                      {"primary", kEventFlagCommand},
                                                      {"alt", kEventFlagOption},
                                                      {"mod1", kEventFlagOption},
                                                      {"super", kEventFlagControl},
                                                      {"mod4", kEventFlagControl}}};

struct SchemaUnref {
  void operator()(GSettingsSchema* schema) const { g_settings_schema_unref(schema); }
};

struct Setting {
  const char* schema;
  const char* key;
  const char* type;
};

/// What the desktop has set; null when the setting is not there or of another type. Asking for a schema that
/// is not installed would end the program.
GVariantRef valueOf(const Setting& setting) {
  GSettingsSchemaSource* source = g_settings_schema_source_get_default();
  if (source == nullptr) return nullptr;
  const std::unique_ptr<GSettingsSchema, SchemaUnref> schema(
      g_settings_schema_source_lookup(source, setting.schema, TRUE));
  if (!schema || g_settings_schema_has_key(schema.get(), setting.key) == FALSE) return nullptr;
  const GObjectRef<GSettings> settings(g_settings_new_full(schema.get(), nullptr, nullptr));
  GVariantRef value(g_settings_get_value(settings.get(), setting.key));
  if (g_variant_is_of_type(value.get(), G_VARIANT_TYPE(setting.type)) == FALSE) return nullptr;
  return value;
}

std::vector<XkbLayoutName> layoutsOf(const char* key) {
  std::vector<XkbLayoutName> layouts;
  const GVariantRef list = valueOf({"org.gnome.desktop.input-sources", key, "a(ss)"});
  if (!list) return layouts;
  for (gsize i = 0; i < g_variant_n_children(list.get()); ++i) {
    const char* kind = nullptr;
    const char* name = nullptr;
    g_variant_get_child(list.get(), i, "(&s&s)", &kind, &name);
    const bool isLayout = std::string_view(kind) == "xkb";
    layouts.push_back(isLayout ? layoutOfSource(name) : XkbLayoutName{"", name});
  }
  return layouts;
}

std::vector<KeyCombination> shortcutsOf(const char* key) {
  std::vector<KeyCombination> shortcuts;
  const GVariantRef list = valueOf({"org.gnome.desktop.wm.keybindings", key, "as"});
  if (!list) return shortcuts;
  for (gsize i = 0; i < g_variant_n_children(list.get()); ++i) {
    const char* text = nullptr;
    g_variant_get_child(list.get(), i, "&s", &text);
    if (const auto combination = parseAccelerator(text)) shortcuts.push_back(*combination);
  }
  return shortcuts;
}

bool contains(const std::vector<XkbLayoutName>& layouts, const XkbLayoutName& layout) {
  return std::find(layouts.begin(), layouts.end(), layout) != layouts.end();
}

}  // namespace

std::optional<KeyCombination> parseAccelerator(std::string_view text) {
  KeyCombination combination;
  while (!text.empty() && text.front() == '<') {
    const std::size_t end = text.find('>');
    if (end == std::string_view::npos) return std::nullopt;
    const GText name(g_ascii_strdown(text.data() + 1, static_cast<gssize>(end) - 1));
    const auto* found = std::find_if(kModifiers.begin(), kModifiers.end(), [&](const NamedModifier& known) {
      return std::string_view(known.name) == name.get();
    });
    if (found == kModifiers.end()) return std::nullopt;
    combination.modifiers |= found->flag;
    text.remove_prefix(end + 1);
  }
  combination.keysym = xkb_keysym_from_name(std::string(text).c_str(), XKB_KEYSYM_NO_FLAGS);
  if (combination.keysym == XKB_KEY_NoSymbol) return std::nullopt;
  return combination;
}

XkbLayoutName layoutOfSource(std::string_view identifier) {
  const std::size_t plus = identifier.find('+');
  if (plus == std::string_view::npos) return {std::string(identifier), ""};
  return {std::string(identifier.substr(0, plus)), std::string(identifier.substr(plus + 1))};
}

std::vector<XkbLayoutName> desktopLayoutsByUse() {
  const std::vector<XkbLayoutName> enabled = layoutsOf("sources");
  std::vector<XkbLayoutName> ordered;
  for (const XkbLayoutName& layout : layoutsOf("mru-sources")) {
    if (contains(enabled, layout) && !contains(ordered, layout)) ordered.push_back(layout);
  }
  for (const XkbLayoutName& layout : enabled) {
    if (!contains(ordered, layout)) ordered.push_back(layout);
  }
  return ordered;
}

bool LayoutShortcut::select(const XkbLayoutName& layout) {
  stop();
  wanted_ = layout;
  presses_ = 0;
  return press();
}

/// Presses the shortcut that leads to the wanted layout; true as well when that is in use already.
bool LayoutShortcut::press() {
  std::vector<XkbLayoutName> layouts = desktopLayoutsByUse();
  if (!contains(layouts, wanted_)) return false;
  before_ = inUse();
  if (before_ == wanted_) return true;
  if (presses_ == layouts.size()) return false;
  const auto first = before_ ? std::find(layouts.begin(), layouts.end(), *before_) : layouts.end();
  if (first != layouts.end()) std::rotate(layouts.begin(), first, first + 1);

  std::vector<KeyCombination> shortcuts;
  if (layouts.size() > 1 && layouts[1] == wanted_) shortcuts = shortcutsOf("switch-input-source");
  const std::vector<KeyCombination> backward = shortcutsOf("switch-input-source-backward");
  shortcuts.insert(shortcuts.end(), backward.begin(), backward.end());
  for (const KeyCombination& shortcut : shortcuts) {
    const auto key = needs_.keyGiving(shortcut.keysym);
    if (!key) continue;
    needs_.play(*key, shortcut.modifiers);
    ++presses_;
    pressedAt_ = std::chrono::steady_clock::now();
    looking_ = g_timeout_add(
        kLookMilliseconds,
        [](gpointer self) -> gboolean {
          return static_cast<LayoutShortcut*>(self)->look() ? G_SOURCE_CONTINUE : G_SOURCE_REMOVE;
        },
        this);
    return true;
  }
  return false;
}

/// Whether the desktop has still to answer the press.
bool LayoutShortcut::look() {
  if (inUse() == before_ && std::chrono::steady_clock::now() - pressedAt_ < needs_.patience) return true;
  looking_ = 0;
  press();
  return false;
}

std::optional<XkbLayoutName> LayoutShortcut::inUse() const {
  if (needs_.current) return needs_.current();
  const std::vector<XkbLayoutName> layouts = desktopLayoutsByUse();
  return layouts.empty() ? std::nullopt : std::optional(layouts.front());
}

void LayoutShortcut::stop() {
  if (looking_ != 0) g_source_remove(looking_);
  looking_ = 0;
}

}  // namespace lexwend::platform
