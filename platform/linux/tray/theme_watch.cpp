// SPDX-License-Identifier: MIT
#include "platform/linux/tray/theme_watch.h"

#include <utility>

namespace lexwend::platform {
namespace {

constexpr std::string_view kSelection = "_XSETTINGS_S0";

}  // namespace

ThemeWatch::ThemeWatch(std::shared_ptr<X11Connection> x11, std::function<void()> changed)
    : x11_(std::move(x11)), changed_(std::move(changed)) {
  if (x11_ == nullptr) return;
  x11_->selectRootEvents(XCB_EVENT_MASK_STRUCTURE_NOTIFY);
  observation_ =
      x11_->observe([this, manager = x11_->atom("MANAGER"),
                     settings = x11_->atom("_XSETTINGS_SETTINGS")](const xcb_generic_event_t& event) {
        const bool hasNewOwner = eventType(event) == XCB_CLIENT_MESSAGE &&
                                 reinterpret_cast<const xcb_client_message_event_t&>(event).type == manager;
        if (hasNewOwner) followOwner();
        const bool hasChanged = eventType(event) == XCB_PROPERTY_NOTIFY &&
                                reinterpret_cast<const xcb_property_notify_event_t&>(event).atom == settings;
        if (hasNewOwner || hasChanged) changed_();
      });
  followOwner();
}

void ThemeWatch::follow(GDBusConnection* bus) {
  if (subscription_ != 0) g_dbus_connection_signal_unsubscribe(bus_, subscription_);
  bus_ = bus;
  subscription_ = 0;
  if (bus == nullptr) return;
  const auto told = [](GDBusConnection*, const char*, const char*, const char*, const char*, GVariant*,
                       gpointer self) { static_cast<ThemeWatch*>(self)->changed_(); };
  subscription_ = g_dbus_connection_signal_subscribe(bus, nullptr, "org.kde.KGlobalSettings", "notifyChange",
                                                     "/KGlobalSettings", nullptr, G_DBUS_SIGNAL_FLAGS_NONE,
                                                     told, this, nullptr);
}

void ThemeWatch::followOwner() {
  const XcbReply<xcb_get_selection_owner_reply_t> reply(xcb_get_selection_owner_reply(
      x11_->get(), xcb_get_selection_owner(x11_->get(), x11_->atom(kSelection)), nullptr));
  if (reply == nullptr || reply->owner == XCB_WINDOW_NONE) return;
  const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
  xcb_change_window_attributes(x11_->get(), reply->owner, XCB_CW_EVENT_MASK, &mask);
  x11_->flush();
}

}  // namespace lexwend::platform
