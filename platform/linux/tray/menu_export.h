// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include "platform/linux/session/glib_ref.h"

namespace lexwend::platform {

class LinuxMenu;
class LinuxMenuItem;

/// A menu on the session bus, by the protocol com.canonical.dbusmenu. It is for panels that draw an item's
/// menu themselves and never ask the item to open it. Main thread only. Nothing here blocks. Without a panel
/// nobody reads it.
class MenuExport {
 public:
  static constexpr char kPath[] = "/Menu";

  explicit MenuExport(GDBusConnection* bus);
  ~MenuExport();
  MenuExport(const MenuExport&) = delete;
  MenuExport& operator=(const MenuExport&) = delete;

  /// Sets the menu to offer. Later changes of the menu are announced. Null offers an empty menu.
  void setMenu(std::shared_ptr<LinuxMenu> menu);

 private:
  static void methodCalled(GDBusConnection* bus, const char* sender, const char* path, const char* interface,
                           const char* method, GVariant* arguments, GDBusMethodInvocation* invocation,
                           void* self);
  static GVariant* propertyAsked(GDBusConnection* bus, const char* sender, const char* path,
                                 const char* interface, const char* property, GError** error, void* self);
  void groupAsked(std::string_view method, GVariant* arguments, GDBusMethodInvocation* invocation);
  void entryAsked(std::string_view method, GVariant* arguments, GDBusMethodInvocation* invocation);
  GVariant* layout(std::int32_t id, std::int32_t depth, GVariant* names) const;
  GVariant* groupProperties(GVariant* ids, GVariant* names) const;

  // Identifiers are below end(). 0 is the menu itself, every other one an entry.
  std::int32_t end() const;
  bool has(std::int32_t id) const { return id >= 0 && id < end(); }
  /// Null for the menu itself and for a separator.
  std::shared_ptr<LinuxMenuItem> item(std::int32_t id) const;
  /// The item that this event chooses; null when it chooses none.
  std::shared_ptr<LinuxMenuItem> chosen(std::int32_t id, const char* event) const;
  /// All properties of an entry.
  GVariantRef properties(std::int32_t id) const;

  void changed();
  void announceNewLayout();
  void emit(const char* signal, GVariant* arguments);

  GDBusConnection* bus_;
  guint object_;
  std::shared_ptr<LinuxMenu> menu_;
  std::shared_ptr<std::function<void()>> menuChanged_;
  guint32 revision_ = 1;
  std::vector<GVariantRef> announced_;  ///< what panels know of the menu and its entries, by identifier
};

}  // namespace lexwend::platform
