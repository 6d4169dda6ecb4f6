// SPDX-License-Identifier: MIT
#include "platform/linux/gnome/remote_desktop.h"

#include <thread>
#include <utility>

#include <gio/gunixfdlist.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include "platform/linux/session/buses.h"

namespace lexwend::platform {
namespace {

constexpr char kName[] = "org.gnome.Mutter.RemoteDesktop";  // and the interface
constexpr char kPath[] = "/org/gnome/Mutter/RemoteDesktop";
constexpr char kSession[] = "org.gnome.Mutter.RemoteDesktop.Session";
constexpr char kBus[] = "org.freedesktop.DBus";
constexpr char kBusPath[] = "/org/freedesktop/DBus";

std::string rule() {
  return std::string("type='signal',sender='") + kName + "',interface='" + kSession + "'";
}

GVariantRef call(GDBusConnection* bus, const char* name, const char* path, const char* interface,
                 const char* method, GVariant* arguments, const char* answerType) {
  return GVariantRef(g_dbus_connection_call_sync(bus, name, path, interface, method, arguments,
                                                 answerType != nullptr ? G_VARIANT_TYPE(answerType) : nullptr,
                                                 G_DBUS_CALL_FLAGS_NO_AUTO_START, kBusCallTimeout, nullptr,
                                                 nullptr));
}

/// "{'mime-types': <(['text/plain'],)>, 'session-is-owner': <true>}", or an empty list.
std::vector<std::string> typesIn(GVariant* options) {
  std::vector<std::string> types;
  const GVariantRef boxed(g_variant_lookup_value(options, "mime-types", G_VARIANT_TYPE("(as)")));
  if (!boxed) return types;
  const GVariantRef list(g_variant_get_child_value(boxed.get(), 0));
  for (gsize i = 0; i < g_variant_n_children(list.get()); ++i) {
    const GVariantRef type(g_variant_get_child_value(list.get(), i));
    types.emplace_back(g_variant_get_string(type.get(), nullptr));
  }
  return types;
}

}  // namespace

MutterRemoteDesktop::MutterRemoteDesktop() : wakeDescriptor_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

MutterRemoteDesktop::~MutterRemoteDesktop() {
  close();
  if (filter_ != 0) g_dbus_connection_remove_filter(filteredSession_.bus.get(), filter_);
  ::close(wakeDescriptor_);
}

bool MutterRemoteDesktop::isOffered() {
  GDBusConnection* bus = sessionBus();
  if (bus == nullptr) return false;
  const GVariantRef answer =
      call(bus, kBus, kBusPath, kBus, "NameHasOwner", g_variant_new("(s)", kName), "(b)");
  gboolean isOwned = FALSE;
  if (answer) g_variant_get(answer.get(), "(b)", &isOwned);
  return isOwned != FALSE;
}

bool MutterRemoteDesktop::open() {
  GDBusConnection* bus = sessionBus();
  if (bus == nullptr) return false;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    lastUse_ = Clock::now();
    if (session_.bus.get() == bus) return true;
  }
  if (filteredSession_.bus.get() != bus) {
    if (filter_ != 0) g_dbus_connection_remove_filter(filteredSession_.bus.get(), filter_);
    filteredSession_.bus.reset(static_cast<GDBusConnection*>(g_object_ref(bus)), g_object_unref);
    filter_ = g_dbus_connection_add_filter(bus, &MutterRemoteDesktop::heard, this, nullptr);
    call(bus, kBus, kBusPath, kBus, "AddMatch", g_variant_new("(s)", rule().c_str()), nullptr);
  }
  const GVariantRef created = call(bus, kName, kPath, kName, "CreateSession", g_variant_new("()"), "(o)");
  if (!created) return false;
  const char* path = nullptr;
  g_variant_get(created.get(), "(&o)", &path);
  const Session session{filteredSession_.bus, path};
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    session_ = session;
    isOpening_ = true;
    offer_.reset();
    owned_.reset();
  }
  // What stands on the clipboard is told before the answer to the second.
  const bool isOpen =
      ask(session, "EnableClipboard", g_variant_new("(a{sv})", nullptr)) && ask(session, "Start", nullptr);
  if (!isOpen) close();
  const std::lock_guard<std::mutex> lock(mutex_);
  lastUse_ = Clock::now();
  isOpening_ = false;
  note({.kind = EventKind::opened, .time = Clock::now()});
  return isOpen;
}

void MutterRemoteDesktop::close() {
  const Session open = session();
  forget();
  if (open.bus) ask(open, "Stop", nullptr);
}

void MutterRemoteDesktop::closeIfUnusedFor(std::chrono::milliseconds time) {
  Session open;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (isOpening_ || Clock::now() < lastUse_ + time) return;
    open = std::exchange(session_, {});
    offer_.reset();
    owned_.reset();
  }
  if (open.bus) ask(open, "Stop", nullptr);
}

void MutterRemoteDesktop::settle() {
  const Session open = session();
  if (!open.bus) return;
  call(open.bus.get(), kName, open.path.c_str(), "org.freedesktop.DBus.Peer", "Ping", nullptr, nullptr);
}

bool MutterRemoteDesktop::isOpen() const {
  return session().bus != nullptr;
}

void MutterRemoteDesktop::noteUse() {
  const std::lock_guard<std::mutex> lock(mutex_);
  lastUse_ = Clock::now();
}

MutterRemoteDesktop::Clock::time_point MutterRemoteDesktop::lastUse() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return lastUse_;
}

MutterRemoteDesktop::Session MutterRemoteDesktop::session() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return session_;
}

void MutterRemoteDesktop::forget() {
  const std::lock_guard<std::mutex> lock(mutex_);
  session_ = {};
  offer_.reset();
  owned_.reset();
}

bool MutterRemoteDesktop::ask(const Session& session, const char* method, GVariant* arguments) {
  return call(session.bus.get(), kName, session.path.c_str(), kSession, method, arguments, nullptr) !=
         nullptr;
}

bool MutterRemoteDesktop::playKey(std::uint16_t evdevKey, bool down) {
  const Session open = session();
  if (!open.bus) return false;
  noteUse();
  const gboolean isDown = down ? TRUE : FALSE;
  return ask(open, "NotifyKeyboardKeycode", g_variant_new("(ub)", guint32{evdevKey}, isDown));
}

std::shared_ptr<const MutterRemoteDesktop::Offer> MutterRemoteDesktop::offer() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return offer_;
}

int MutterRemoteDesktop::askForDescriptor(const char* method, GVariant* arguments, GError** error) {
  const GVariantRef sunk(g_variant_ref_sink(arguments));
  const Session open = session();
  if (!open.bus) return -1;
  GUnixFDList* list = nullptr;
  const GVariantRef answer(g_dbus_connection_call_with_unix_fd_list_sync(
      open.bus.get(), kName, open.path.c_str(), kSession, method, sunk.get(), G_VARIANT_TYPE("(h)"),
      G_DBUS_CALL_FLAGS_NO_AUTO_START, kBusCallTimeout, nullptr, &list, nullptr, error));
  const GObjectRef<GUnixFDList> descriptors(list);
  if (!answer || !descriptors) return -1;
  gint32 place = 0;
  g_variant_get(answer.get(), "(h)", &place);
  return g_unix_fd_list_get(descriptors.get(), place, nullptr);
}

int MutterRemoteDesktop::read(const std::string& type, Clock::time_point until) {
  constexpr std::chrono::milliseconds kTryAgain{1};
  noteUse();
  while (true) {
    GError* why = nullptr;
    const int descriptor = askForDescriptor("SelectionRead", g_variant_new("(s)", type.c_str()), &why);
    const GErrorRef error(why);
    const bool isBusy =
        error && g_error_matches(error.get(), G_DBUS_ERROR, G_DBUS_ERROR_LIMITS_EXCEEDED) != FALSE;
    if (!isBusy || Clock::now() >= until) return descriptor;
    std::this_thread::sleep_for(kTryAgain);
  }
}

bool MutterRemoteDesktop::own(std::shared_ptr<const ClipboardContents> contents) {
  const Session open = session();
  if (!open.bus) return false;
  GVariantBuilder types;
  g_variant_builder_init(&types, G_VARIANT_TYPE("as"));
  for (const ClipboardTarget& target : *contents) g_variant_builder_add(&types, "s", target.name.c_str());
  GVariantBuilder options;
  g_variant_builder_init(&options, G_VARIANT_TYPE("a{sv}"));
  g_variant_builder_add(&options, "{sv}", "mime-types", g_variant_builder_end(&types));
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    lastUse_ = Clock::now();
    owned_ = std::move(contents);
  }
  return ask(open, "SetSelection", g_variant_new("(a{sv})", &options));
}

std::vector<MutterRemoteDesktop::Event> MutterRemoteDesktop::takeEvents() {
  std::uint64_t count = 0;
  if (::read(wakeDescriptor_, &count, sizeof count) < 0) {
    // there are none
  }
  const std::lock_guard<std::mutex> lock(mutex_);
  return std::exchange(events_, {});
}

int MutterRemoteDesktop::write(std::uint32_t serial) {
  return askForDescriptor("SelectionWrite", g_variant_new("(u)", serial));
}

void MutterRemoteDesktop::finishWrite(std::uint32_t serial, bool isWritten) {
  const Session open = session();
  const gboolean isDone = isWritten ? TRUE : FALSE;
  if (open.bus) ask(open, "SelectionWriteDone", g_variant_new("(ub)", serial, isDone));
}

void MutterRemoteDesktop::note(Event event) {
  events_.push_back(std::move(event));
  const std::uint64_t one = 1;
  if (::write(wakeDescriptor_, &one, sizeof one) < 0) {
    // the counter is full: there is news already
  }
}

/// Runs on the thread of the bus.
GDBusMessage* MutterRemoteDesktop::heard(GDBusConnection* /*bus*/, GDBusMessage* message, gboolean incoming,
                                         void* self) {
  const bool isSignal = incoming != FALSE &&
                        g_dbus_message_get_message_type(message) == G_DBUS_MESSAGE_TYPE_SIGNAL &&
                        g_strcmp0(g_dbus_message_get_interface(message), kSession) == 0;
  if (isSignal) static_cast<MutterRemoteDesktop*>(self)->handle(message);
  return message;
}

void MutterRemoteDesktop::handle(GDBusMessage* message) {
  const Clock::time_point now = Clock::now();
  const std::string_view signal = g_dbus_message_get_member(message);
  GVariant* body = g_dbus_message_get_body(message);
  const std::lock_guard<std::mutex> lock(mutex_);
  if (session_.path != g_dbus_message_get_path(message)) return;
  if (signal == "Closed") {
    session_ = {};
    offer_.reset();
    owned_.reset();
    note({.kind = EventKind::closed, .time = now});
  } else if (body == nullptr) {
    return;
  } else if (signal == "SelectionOwnerChanged" &&
             g_variant_is_of_type(body, G_VARIANT_TYPE("(a{sv})")) != FALSE) {
    const GVariantRef options(g_variant_get_child_value(body, 0));
    gboolean isOwn = FALSE;
    g_variant_lookup(options.get(), "session-is-owner", "b", &isOwn);
    auto types = typesIn(options.get());
    const bool isEmpty = types.empty();
    offer_ = isEmpty
                 ? nullptr
                 : std::make_shared<const Offer>(Offer{std::move(types), isOwn != FALSE ? owned_ : nullptr});
    note({.kind = EventKind::changed,
          .time = now,
          .isEmpty = isEmpty,
          .isOwn = isOwn != FALSE,
          .isInitial = isOpening_});
  } else if (signal == "SelectionTransfer" && g_variant_is_of_type(body, G_VARIANT_TYPE("(su)")) != FALSE) {
    const char* type = nullptr;
    guint32 serial = 0;
    g_variant_get(body, "(&su)", &type, &serial);
    note({.kind = EventKind::fetch, .time = now, .type = type, .serial = serial});
  }
}

}  // namespace lexwend::platform
