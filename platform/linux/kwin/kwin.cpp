// SPDX-License-Identifier: MIT
#include "platform/linux/kwin/kwin.h"

#include <utility>

#include <unistd.h>
#include <xkbcommon/xkbcommon.h>

#include "platform/linux/kwin/fake_input.h"
#include "platform/linux/kwin/windows.h"
#include "platform/linux/wayland/data_control.h"
#include "platform/linux/wayland/seat_keymap.h"

namespace lexwend::platform {
namespace {

constexpr BusObject kBus = {"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus"};
constexpr BusObject kScreenSaver = {"org.kde.KWin", "/ScreenSaver", "org.freedesktop.ScreenSaver"};

GVariantRef callOnBus(const BusObject& object, const char* method, GVariant* arguments,
                      const char* answerType) {
  const GVariantRef owned(g_variant_ref_sink(arguments));
  GDBusConnection* bus = sessionBus();
  if (bus == nullptr) return nullptr;
  return GVariantRef(g_dbus_connection_call_sync(
      bus, object.name, object.path, object.interface, method, owned.get(), G_VARIANT_TYPE(answerType),
      G_DBUS_CALL_FLAGS_NO_AUTO_START, kBusCallTimeout, nullptr, nullptr));
}

/// The connection that has the name; empty where nobody has it.
std::string ownerOf(const char* name) {
  const auto answer = callOnBus(kBus, "GetNameOwner", g_variant_new("(s)", name), "(s)");
  if (!answer) return {};
  const char* owner = "";
  g_variant_get(answer.get(), "(&s)", &owner);
  return owner;
}

}  // namespace

std::shared_ptr<KWin> KWin::open() {
  // A daemon of its own serves the global shortcuts in a session of X11, and may run under another
  // compositor.
  const std::string owner = ownerOf("org.kde.KWin");
  if (owner.empty() || owner != ownerOf("org.kde.kglobalaccel")) return nullptr;
  auto connection = WaylandConnection::open();
  if (!connection || !DataControl::isOffered(*connection)) return nullptr;
  return std::shared_ptr<KWin>(new KWin(std::move(connection)));
}

KWin::KWin(std::unique_ptr<WaylandConnection> connection)
    : connection_(std::move(connection)),
      watch_(*connection_),
      seatKeymap_(std::make_unique<SeatKeymap>(*connection_,
                                               [this] {
                                                 for (const auto& handler : keymapHandlers_.all()) {
                                                   (*handler)();
                                                 }
                                               })),
      windows_(KWinWindows::open(*connection_)) {
  connection_->roundTrip();  // that there is a keyboard
  connection_->roundTrip();  // its keymap
}

KWin::~KWin() = default;

std::unique_ptr<KeyPlayer> KWin::keyPlayer() {
  return FakeInput::open(*connection_);
}

bool KWin::grantsAll() const {
  return windows_ != nullptr && FakeInput::isOffered(*connection_);
}

std::optional<FrontWindow> KWin::frontWindow() {
  if (!windows_ || !connection_->roundTrip()) return std::nullopt;
  return windows_->active();
}

void KWin::focusOwnWindow() {
  if (!windows_ || !connection_->roundTrip()) return;
  windows_->activate(static_cast<std::uint32_t>(getpid()));
  connection_->flush();
}

bool KWin::screenIsLocked() {
  const auto answer = call(kScreenSaver, "GetActive", g_variant_new("()"), "(b)");
  gboolean isLocked = FALSE;
  if (answer) g_variant_get(answer.get(), "(b)", &isLocked);
  return isLocked != FALSE;
}

std::shared_ptr<xkb_keymap> KWin::keymap() {
  connection_->roundTrip();
  return seatKeymap_->keymap();
}

Registration KWin::observeKeymap(std::function<void()> handler) {
  return keymapHandlers_.add(std::move(handler));
}

GVariantRef KWin::call(const BusObject& object, const char* method, GVariant* arguments,
                       const char* answerType) {
  return callOnBus(object, method, arguments, answerType);
}

}  // namespace lexwend::platform
