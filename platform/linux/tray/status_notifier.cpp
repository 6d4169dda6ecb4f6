// SPDX-License-Identifier: MIT
#include "platform/linux/tray/status_notifier.h"

#include <QtEndian>

#include "platform/linux/session/buses.h"
#include "platform/linux/session/identity.h"
#include "platform/linux/tray/menu_export.h"
#include "platform/linux/tray/toolkit.h"

namespace lexwend::platform {
namespace {

constexpr char kWatcherName[] = "org.kde.StatusNotifierWatcher";
constexpr char kWatcherPath[] = "/StatusNotifierWatcher";
constexpr char kItemPath[] = "/StatusNotifierItem";
constexpr char kItemInterface[] = "org.kde.StatusNotifierItem";

constexpr char kItemIntrospection[] = R"xml(<node><interface name="org.kde.StatusNotifierItem">
  <property name="Category" type="s" access="read"/>
  <property name="Id" type="s" access="read"/>
  <property name="Title" type="s" access="read"/>
  <property name="Status" type="s" access="read"/>
  <property name="WindowId" type="i" access="read"/>
  <property name="IconName" type="s" access="read"/>
  <property name="IconThemePath" type="s" access="read"/>
  <property name="IconPixmap" type="a(iiay)" access="read"/>
  <property name="IconAccessibleDesc" type="s" access="read"/>
  <property name="ToolTip" type="(sa(iiay)ss)" access="read"/>
  <property name="ItemIsMenu" type="b" access="read"/>
  <property name="Menu" type="o" access="read"/>
  <method name="ContextMenu"><arg name="x" type="i" direction="in"/><arg name="y" type="i" direction="in"/></method>
  <method name="Activate"><arg name="x" type="i" direction="in"/><arg name="y" type="i" direction="in"/></method>
  <method name="SecondaryActivate"><arg name="x" type="i" direction="in"/><arg name="y" type="i" direction="in"/></method>
  <method name="Scroll"><arg name="delta" type="i" direction="in"/><arg name="orientation" type="s" direction="in"/></method>
  <signal name="NewIcon"/>
  <signal name="NewToolTip"/>
  <signal name="NewIconThemePath"><arg name="path" type="s"/></signal>
  </interface></node>)xml";

GDBusInterfaceInfo* itemInterface() {
  static GDBusNodeInfo* const kNode = g_dbus_node_info_new_for_xml(kItemIntrospection, nullptr);
  return kNode->interfaces[0];
}

/// Whether a panel that can draw the menu should do so at each click. A Wayland compositor does not let the
/// agent place a menu of its own beside the icon.
bool itemIsMenu() {
  return toolkitIsOfWayland();
}

/// ARGB that is not premultiplied, in network byte order, row by row.
GVariant* pixmaps(const QList<QImage>& images) {
  GVariantBuilder builder;
  g_variant_builder_init(&builder, G_VARIANT_TYPE("a(iiay)"));
  for (const QImage& image : images) {
    QImage argb = image.convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < argb.height(); ++y) {
      auto* row = reinterpret_cast<quint32*>(argb.scanLine(y));
      qToBigEndian<quint32>(row, argb.width(), row);
    }
    GVariant* bytes = g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, argb.constBits(),
                                                static_cast<gsize>(argb.sizeInBytes()), sizeof(guchar));
    g_variant_builder_add(&builder, "(ii@ay)", argb.width(), argb.height(), bytes);
  }
  return g_variant_builder_end(&builder);
}

}  // namespace

StatusNotifier::StatusNotifier(GDBusConnection* bus, Events events) : bus_(bus), events_(std::move(events)) {
  static constexpr GDBusInterfaceVTable kItem = {
      &StatusNotifier::methodCalled, &StatusNotifier::propertyAsked, nullptr, {}};
  object_ =
      g_dbus_connection_register_object(bus_, kItemPath, itemInterface(), &kItem, this, nullptr, nullptr);
  subscription_ = g_dbus_connection_signal_subscribe(bus_, kWatcherName, kWatcherName, nullptr, kWatcherPath,
                                                     nullptr, G_DBUS_SIGNAL_FLAGS_NONE,
                                                     &StatusNotifier::hostsChanged, this, nullptr);
  watch_ = g_bus_watch_name_on_connection(bus_, kWatcherName, G_BUS_NAME_WATCHER_FLAGS_NONE,
                                          &StatusNotifier::watcherAppeared, &StatusNotifier::watcherVanished,
                                          this, nullptr);
}

StatusNotifier::~StatusNotifier() {
  if (askingAgain_ != 0) g_source_remove(askingAgain_);
  g_cancellable_cancel(cancellable_.get());
  g_bus_unwatch_name(watch_);
  g_dbus_connection_signal_unsubscribe(bus_, subscription_);
  if (object_ != 0) g_dbus_connection_unregister_object(bus_, object_);
}

void StatusNotifier::setIcon(Icon icon) {
  const bool hasOtherPath = icon.themePath != icon_.themePath;
  icon_ = std::move(icon);
  if (hasOtherPath) announce("NewIconThemePath", g_variant_new("(s)", icon_.themePath.c_str()));
  announce("NewIcon");
}

void StatusNotifier::setToolTip(std::string title, std::string text) {
  toolTipTitle_ = std::move(title);
  toolTipText_ = std::move(text);
  announce("NewToolTip");
}

void StatusNotifier::announce(const char* signal, GVariant* arguments) {
  g_dbus_connection_emit_signal(bus_, nullptr, kItemPath, kItemInterface, signal, arguments, nullptr);
}

void StatusNotifier::methodCalled(GDBusConnection*, const char*, const char*, const char*, const char* method,
                                  GVariant*, GDBusMethodInvocation* invocation, void* self) {
  // Plasma does not ask whether the item is a menu. It draws the menu after an error.
  if (itemIsMenu() && std::string_view(method) == "Activate") {
    g_dbus_method_invocation_return_dbus_error(invocation, "org.freedesktop.DBus.Error.UnknownMethod",
                                               "this item is a menu");
    return;
  }
  g_dbus_method_invocation_return_value(invocation, nullptr);
  if (std::string_view(method) != "Scroll") static_cast<StatusNotifier*>(self)->events_.clicked();
}

GVariant* StatusNotifier::propertyAsked(GDBusConnection*, const char*, const char*, const char*,
                                        const char* property, GError**, void* data) {
  const auto& self = *static_cast<StatusNotifier*>(data);
  const std::string_view name = property;
  if (name == "Category") return g_variant_new_string("ApplicationStatus");
  if (name == "Id") return g_variant_new_string(std::string(kIdentifier).c_str());
  if (name == "Title") return g_variant_new_string(std::string(kDisplayName).c_str());
  if (name == "Status") return g_variant_new_string("Active");
  if (name == "WindowId") return g_variant_new_int32(0);
  if (name == "IconName") return g_variant_new_string(self.icon_.name.c_str());
  if (name == "IconThemePath") return g_variant_new_string(self.icon_.themePath.c_str());
  if (name == "IconPixmap") return pixmaps(self.icon_.sizes);
  if (name == "IconAccessibleDesc") return g_variant_new_string(self.icon_.description.c_str());
  if (name == "ItemIsMenu") return g_variant_new_boolean(itemIsMenu() ? TRUE : FALSE);
  if (name == "Menu") return g_variant_new_object_path(MenuExport::kPath);
  return g_variant_new("(s@a(iiay)ss)", "", pixmaps({}), self.toolTipTitle_.c_str(),
                       self.toolTipText_.c_str());
}

void StatusNotifier::watcherAppeared(GDBusConnection*, const char*, const char*, void* self) {
  static_cast<StatusNotifier*>(self)->registerWithWatcher();
  static_cast<StatusNotifier*>(self)->askForHosts();
}

void StatusNotifier::watcherVanished(GDBusConnection*, const char*, void* self) {
  static_cast<StatusNotifier*>(self)->events_.hostPresenceKnown(false);
}

void StatusNotifier::hostsChanged(GDBusConnection*, const char*, const char*, const char*, const char* signal,
                                  GVariant*, void* self) {
  const std::string_view name = signal;
  if (name == "StatusNotifierHostRegistered" || name == "StatusNotifierHostUnregistered") {
    static_cast<StatusNotifier*>(self)->askForHosts();
  }
}

void StatusNotifier::registerWithWatcher() {
  g_dbus_connection_call(bus_, kWatcherName, kWatcherPath, kWatcherName, "RegisterStatusNotifierItem",
                         g_variant_new("(s)", g_dbus_connection_get_unique_name(bus_)), nullptr,
                         G_DBUS_CALL_FLAGS_NONE, kBusCallTimeout, nullptr, nullptr, nullptr);
}

void StatusNotifier::askForHosts() {
  g_dbus_connection_call(bus_, kWatcherName, kWatcherPath, "org.freedesktop.DBus.Properties", "Get",
                         g_variant_new("(ss)", kWatcherName, "IsStatusNotifierHostRegistered"),
                         G_VARIANT_TYPE("(v)"), G_DBUS_CALL_FLAGS_NONE, kBusCallTimeout, cancellable_.get(),
                         &StatusNotifier::hostsTold, this);
}

void StatusNotifier::askForHostsAgain() {
  const auto ask = [](gpointer self) -> gboolean {
    static_cast<StatusNotifier*>(self)->askingAgain_ = 0;
    static_cast<StatusNotifier*>(self)->askForHosts();
    return G_SOURCE_REMOVE;
  };
  if (askingAgain_ == 0) askingAgain_ = g_timeout_add(kBusCallTimeout, ask, this);
}

void StatusNotifier::hostsTold(GObject* source, GAsyncResult* result, void* self) {
  GError* failure = nullptr;
  const GVariantRef reply(g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &failure));
  const GErrorRef error(failure);
  // A cancelled call belongs to an item that is gone.
  if (g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_CANCELLED) != FALSE) return;
  // A panel that is busy says nothing about hosts. Its items are shown as soon as it works again.
  if (g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_TIMED_OUT) != FALSE) {
    static_cast<StatusNotifier*>(self)->askForHostsAgain();
    return;
  }
  bool present = false;
  if (reply != nullptr) {
    const GVariantRef boxed(g_variant_get_child_value(reply.get(), 0));
    const GVariantRef value(g_variant_get_variant(boxed.get()));
    present = g_variant_is_of_type(value.get(), G_VARIANT_TYPE_BOOLEAN) &&
              g_variant_get_boolean(value.get()) != FALSE;
  }
  static_cast<StatusNotifier*>(self)->events_.hostPresenceKnown(present);
}

}  // namespace lexwend::platform
