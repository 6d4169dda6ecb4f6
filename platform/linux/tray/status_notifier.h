// SPDX-License-Identifier: MIT
#pragma once

#include <QImage>
#include <QList>
#include <functional>
#include <string>

#include "platform/linux/session/glib_ref.h"

namespace lexwend::platform {

/// The agent's item on the session bus, by the StatusNotifierItem specification, for panels that show such
/// items. Most panels report a click, and the agent then opens its own menu. Others draw the menu that the
/// item names (MenuExport), and on Wayland every panel that can is asked to. Main thread only. Nothing here
/// blocks. Without a panel `hostPresenceKnown` is called with false.
class StatusNotifier {
 public:
  struct Events {
    std::function<void()> clicked;  ///< with a button for which the panel opens no menu
    /// Whether a panel shows items now; called at every change. A panel that does not answer is asked until
    /// it does.
    std::function<void(bool)> hostPresenceKnown;
  };

  StatusNotifier(GDBusConnection* bus, Events events);
  ~StatusNotifier();
  StatusNotifier(const StatusNotifier&) = delete;
  StatusNotifier& operator=(const StatusNotifier&) = delete;

  /// A panel takes the icon by its name and colors it, or takes the picture where there is no name.
  struct Icon {
    std::string name;       ///< in the theme of icons; empty where it is not installed
    std::string themePath;  ///< the folder "icons" that holds it
    QList<QImage> sizes;
    std::string description;
  };
  void setIcon(Icon icon);
  void setToolTip(std::string title, std::string text);

 private:
  static void methodCalled(GDBusConnection* bus, const char* sender, const char* path, const char* interface,
                           const char* method, GVariant* arguments, GDBusMethodInvocation* invocation,
                           void* self);
  static GVariant* propertyAsked(GDBusConnection* bus, const char* sender, const char* path,
                                 const char* interface, const char* property, GError** error, void* self);
  static void watcherAppeared(GDBusConnection* bus, const char* name, const char* owner, void* self);
  static void watcherVanished(GDBusConnection* bus, const char* name, void* self);
  static void hostsChanged(GDBusConnection* bus, const char* sender, const char* path, const char* interface,
                           const char* signal, GVariant* arguments, void* self);
  static void hostsTold(GObject* source, GAsyncResult* result, void* self);
  void registerWithWatcher();
  void askForHosts();
  void askForHostsAgain();
  void announce(const char* signal, GVariant* arguments = nullptr);

  GDBusConnection* bus_;
  Events events_;
  GObjectRef<GCancellable> cancellable_{g_cancellable_new()};
  guint object_ = 0;
  guint watch_ = 0;
  guint subscription_ = 0;
  guint askingAgain_ = 0;
  Icon icon_;
  std::string toolTipTitle_;
  std::string toolTipText_;
};

}  // namespace lexwend::platform
