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

/// A menu on the session bus as com.canonical.dbusmenu describes it, for panels that draw the menu of an item
/// themselves and never ask the item to open its own. Main thread only.
class MenuExport {
 public:
  static constexpr char kPath[] = "/Menu";

  explicit MenuExport(GDBusConnection* bus);
  ~MenuExport();
  MenuExport(const MenuExport&) = delete;
  MenuExport& operator=(const MenuExport&) = delete;

  /// The menu that is offered from now on, with every later change; null for an empty one.
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

  // Identifiers count up to end(): 0 is the menu itself, each other one an entry.
  std::int32_t end() const;
  bool has(std::int32_t id) const { return id >= 0 && id < end(); }
  /// Null for the menu itself and for a separator.
  std::shared_ptr<LinuxMenuItem> item(std::int32_t id) const;
  /// The item that such an event chooses, if it does.
  std::shared_ptr<LinuxMenuItem> chosen(std::int32_t id, const char* event) const;
  /// All that is said of it.
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
