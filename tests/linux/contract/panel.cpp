// SPDX-License-Identifier: MIT
#include "tests/linux/contract/panel.h"

#include <QString>
#include <cstring>
#include <optional>

#include "platform/linux/session/glib_ref.h"

namespace lexwend::contract {
namespace {

using platform::GVariantRef;

constexpr char kMenu[] = "com.canonical.dbusmenu";
constexpr char kMenuPath[] = "/Menu";

/// Without the marks of direction (U+2066 to U+2069, UAX #9) and with single underscores.
std::string titleOf(std::string label) {
  for (const char* mark : {"\u2066", "\u2067", "\u2068", "\u2069"}) {
    std::size_t at = 0;
    while ((at = label.find(mark)) != std::string::npos) label.erase(at, std::strlen(mark));
  }
  for (std::size_t at = 0; (at = label.find("__", at)) != std::string::npos; ++at) label.erase(at, 1);
  return label;
}

/// Nothing for a hidden one.
std::optional<Panel::Entry> entryOf(GVariant* properties) {
  Panel::Entry entry;
  const char* type = "";
  g_variant_lookup(properties, "type", "&s", &type);
  if (std::string_view(type) == "separator") {
    entry.isSeparator = true;
    return entry;
  }
  gboolean isVisible = TRUE;
  gboolean isEnabled = TRUE;
  gint32 checked = 0;
  const char* label = "";
  g_variant_lookup(properties, "visible", "b", &isVisible);
  g_variant_lookup(properties, "enabled", "b", &isEnabled);
  g_variant_lookup(properties, "toggle-state", "i", &checked);
  g_variant_lookup(properties, "label", "&s", &label);
  if (isVisible == FALSE) return std::nullopt;
  entry.title = titleOf(label);
  entry.isChecked = checked == 1;
  entry.isEnabled = isEnabled != FALSE;
  const GVariantRef shortcuts(g_variant_lookup_value(properties, "shortcut", G_VARIANT_TYPE("aas")));
  if (shortcuts && g_variant_n_children(shortcuts.get()) == 1) {
    const GVariantRef keys(g_variant_get_child_value(shortcuts.get(), 0));
    const char* key = nullptr;
    g_variant_get_child(keys.get(), g_variant_n_children(keys.get()) - 1, "&s", &key);
    entry.key = QString(key).toLower().toStdString();
  }
  return entry;
}

}  // namespace

Panel::Panel() {
  peer_.answer([this](const std::string& method, GVariant* arguments) -> GVariant* {
    if (method == "Get") return g_variant_new("(v)", g_variant_new_boolean(TRUE));
    if (method != "RegisterStatusNotifierItem") return nullptr;
    const char* name = nullptr;
    g_variant_get(arguments, "(&s)", &name);
    const std::lock_guard lock(mutex_);
    item_ = name;
    return g_variant_new("()");
  });
  peer_.ownName("org.kde.StatusNotifierWatcher");
}

std::string Panel::item() {
  const std::lock_guard lock(mutex_);
  return item_;
}

bool Panel::showsItem() {
  return !item().empty() &&
         peer_.call(item(), "/StatusNotifierItem", "org.freedesktop.DBus.Properties", "Get",
                    g_variant_new("(ss)", "org.kde.StatusNotifierItem", "Id")) != nullptr;
}

void Panel::click() {
  peer_.call(item(), "/StatusNotifierItem", "org.kde.StatusNotifierItem", "Activate",
             g_variant_new("(ii)", 5, 5));
}

std::vector<Panel::Entry> Panel::menu() {
  std::vector<Entry> entries;
  if (item().empty()) return entries;
  const auto answer = peer_.call(item(), kMenuPath, kMenu, "GetLayout",
                                 g_variant_new("(ii@as)", 0, -1, g_variant_new_strv(nullptr, 0)));
  if (!answer) return entries;
  const GVariantRef layout(g_variant_get_child_value(answer.get(), 1));
  const GVariantRef children(g_variant_get_child_value(layout.get(), 2));
  for (gsize i = 0; i < g_variant_n_children(children.get()); ++i) {
    const GVariantRef boxed(g_variant_get_child_value(children.get(), i));
    const GVariantRef child(g_variant_get_variant(boxed.get()));
    const GVariantRef properties(g_variant_get_child_value(child.get(), 1));
    if (const auto entry = entryOf(properties.get())) {
      entries.push_back(*entry);
      g_variant_get_child(child.get(), 0, "i", &entries.back().id);
    }
  }
  return entries;
}

bool Panel::choose(std::string_view title) {
  for (const Entry& entry : menu()) {
    if (entry.title != title) continue;
    peer_.call(item(), kMenuPath, kMenu, "Event",
               g_variant_new("(isvu)", entry.id, "clicked", g_variant_new_int32(0), 0U));
    return entry.isEnabled;
  }
  return false;
}

}  // namespace lexwend::contract
