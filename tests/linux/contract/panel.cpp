// SPDX-License-Identifier: MIT
#include "tests/linux/contract/panel.h"

namespace lexwend::contract {

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
  peer_.call(item(), "/StatusNotifierItem", "org.kde.StatusNotifierItem", "ContextMenu",
             g_variant_new("(ii)", 5, 5));
}

}  // namespace lexwend::contract
