// SPDX-License-Identifier: MIT
#include "platform/linux/gnome/shell.h"

#include <memory>
#include <utility>

#include "platform/linux/session/identity.h"

namespace lexwend::platform {
namespace {

constexpr char kShell[] = "org.lexwend.Shell";  // its name and its interface
constexpr char kPath[] = "/org/lexwend/Shell";
constexpr char kBus[] = "org.freedesktop.DBus";
constexpr char kBusPath[] = "/org/freedesktop/DBus";

}  // namespace

GnomeShell::GnomeShell(bool isAgent) : isAgent_(isAgent) {
  useBus(sessionBus());  // now, since the first question may follow at once
  observation_ = observeSessionBus([this](GDBusConnection* bus) {
    if (bus != bus_.get()) useBus(bus);
  });
}

GnomeShell::~GnomeShell() {
  useBus(nullptr);
}

void GnomeShell::useBus(GDBusConnection* bus) {
  if (bus_) {
    g_bus_unwatch_name(watch_);
    g_dbus_connection_signal_unsubscribe(bus_.get(), subscription_);
  }
  isThere_ = false;
  bus_.reset(bus != nullptr ? static_cast<GDBusConnection*>(g_object_ref(bus)) : nullptr);
  if (!bus_) return;
  if (isAgent_) {
    // Waits for the answer, since the extension asks the bus for the name's owner.
    constexpr guint32 kNoFlags = 0;
    const GVariantRef answer(
        g_dbus_connection_call_sync(bus_.get(), kBus, kBusPath, kBus, "RequestName",
                                    g_variant_new("(su)", std::string(kIdentifier).c_str(), kNoFlags),
                                    nullptr, G_DBUS_CALL_FLAGS_NONE, kBusCallTimeout, nullptr, nullptr));
  }
  subscription_ =
      g_dbus_connection_signal_subscribe(bus_.get(), kShell, kShell, nullptr, kPath, nullptr,
                                         G_DBUS_SIGNAL_FLAGS_NONE, &GnomeShell::heard, this, nullptr);
  isThere_ = isOwned(kShell);
  watch_ = g_bus_watch_name_on_connection(
      bus_.get(), kShell, G_BUS_NAME_WATCHER_FLAGS_NONE,
      [](GDBusConnection*, const char*, const char*, void* self) {
        auto& shell = *static_cast<GnomeShell*>(self);
        if (std::exchange(shell.isThere_, true)) return;  // what was known before the watch
        shell.tell({ShellEventKind::appeared});
      },
      [](GDBusConnection*, const char*, void* self) { static_cast<GnomeShell*>(self)->isThere_ = false; },
      this, nullptr);
}

bool GnomeShell::isOwned(const char* name) {
  if (!bus_) return false;
  const GVariantRef answer(g_dbus_connection_call_sync(
      bus_.get(), kBus, kBusPath, kBus, "NameHasOwner", g_variant_new("(s)", name), G_VARIANT_TYPE("(b)"),
      G_DBUS_CALL_FLAGS_NONE, kBusCallTimeout, nullptr, nullptr));
  gboolean isOwned = FALSE;
  if (answer) g_variant_get(answer.get(), "(b)", &isOwned);
  return isOwned != FALSE;
}

bool GnomeShell::notesLayouts() {
  return isOwned("org.freedesktop.IBus");
}

bool GnomeShell::agentRuns() {
  return isOwned(std::string(kIdentifier).c_str());
}

GVariantRef GnomeShell::ask(const char* method, GVariant* arguments, const char* answerType) {
  const GVariantRef sunk(g_variant_ref_sink(arguments));
  if (!serves()) return nullptr;
  return GVariantRef(g_dbus_connection_call_sync(bus_.get(), kShell, kPath, kShell, method, sunk.get(),
                                                 G_VARIANT_TYPE(answerType), G_DBUS_CALL_FLAGS_NO_AUTO_START,
                                                 kBusCallTimeout, nullptr, nullptr));
}

std::optional<GnomeShell::Layouts> GnomeShell::layouts() {
  const GVariantRef answer = ask("Layouts", g_variant_new("()"), "(a(ss)u)");
  if (!answer) return std::nullopt;
  Layouts layouts;
  GVariantIter* sources = nullptr;
  guint32 active = 0;
  g_variant_get(answer.get(), "(a(ss)u)", &sources, &active);
  const char* kind = nullptr;
  const char* identifier = nullptr;
  while (g_variant_iter_next(sources, "(&s&s)", &kind, &identifier) != FALSE) {
    layouts.sources.emplace_back(kind, identifier);
  }
  g_variant_iter_free(sources);
  layouts.active = active;
  return layouts;
}

void GnomeShell::selectLayout(std::uint32_t place) {
  ask("SelectLayout", g_variant_new("(u)", place), "()");
}

std::optional<FrontWindow> GnomeShell::frontWindow() {
  const GVariantRef answer = ask("FrontWindow", g_variant_new("()"), "(tus)");
  if (!answer) return std::nullopt;
  guint64 id = 0;
  guint32 process = 0;
  const char* windowClass = nullptr;
  g_variant_get(answer.get(), "(tu&s)", &id, &process, &windowClass);
  if (id == 0) return std::nullopt;
  FrontWindow front{static_cast<std::int64_t>(id), std::nullopt, windowClass};
  if (process != 0) front.process = process;
  return front;
}

bool GnomeShell::screenIsLocked() {
  if (!bus_) return false;
  constexpr char kSaver[] = "org.gnome.ScreenSaver";
  const GVariantRef answer(g_dbus_connection_call_sync(
      bus_.get(), kSaver, "/org/gnome/ScreenSaver", kSaver, "GetActive", nullptr, G_VARIANT_TYPE("(b)"),
      G_DBUS_CALL_FLAGS_NO_AUTO_START, kBusCallTimeout, nullptr, nullptr));
  gboolean isLocked = FALSE;
  if (answer) g_variant_get(answer.get(), "(b)", &isLocked);
  return isLocked != FALSE;
}

std::optional<std::uint32_t> GnomeShell::bindKey(const std::string& accelerator) {
  const GVariantRef answer = ask("BindKey", g_variant_new("(s)", accelerator.c_str()), "(u)");
  guint32 key = 0;
  if (answer) g_variant_get(answer.get(), "(u)", &key);
  return key != 0 ? std::optional(key) : std::nullopt;
}

void GnomeShell::unbindKey(std::uint32_t key) {
  ask("UnbindKey", g_variant_new("(u)", key), "()");
}

void GnomeShell::afterEvents(std::function<void()> then) {
  if (!serves()) {
    then();
    return;
  }
  // A key that nobody has: GNOME Shell's main loop answers, after the presses that it has told.
  constexpr guint32 kNoKey = 0;
  g_dbus_connection_call(
      bus_.get(), kShell, kPath, kShell, "UnbindKey", g_variant_new("(u)", kNoKey), nullptr,
      G_DBUS_CALL_FLAGS_NO_AUTO_START, kBusCallTimeout, nullptr,
      [](GObject* source, GAsyncResult* result, void* data) {
        const GVariantRef answer(g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, nullptr));
        const std::unique_ptr<std::function<void()>> waiting(static_cast<std::function<void()>*>(data));
        (*waiting)();
      },
      new std::function<void()>(std::move(then)));
}

Registration GnomeShell::observe(std::function<void(const ShellEvent&)> handler) {
  return handlers_.add(std::move(handler));
}

void GnomeShell::tell(const ShellEvent& event) {
  for (const auto& handler : handlers_.all()) (*handler)(event);
}

void GnomeShell::heard(GDBusConnection* /*bus*/, const char* /*sender*/, const char* /*path*/,
                       const char* /*interface*/, const char* signal, GVariant* arguments, void* self) {
  auto& shell = *static_cast<GnomeShell*>(self);
  if (g_str_equal(signal, "LayoutsChanged") != FALSE) shell.tell({ShellEventKind::layoutsChanged});
  const bool isPress = g_str_equal(signal, "KeyPressed") != FALSE &&
                       g_variant_is_of_type(arguments, G_VARIANT_TYPE("(u)")) != FALSE;
  if (!isPress) return;
  guint32 key = 0;
  g_variant_get(arguments, "(u)", &key);
  shell.tell({ShellEventKind::keyPressed, key});
}

}  // namespace lexwend::platform
