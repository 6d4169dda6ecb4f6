// SPDX-License-Identifier: MIT
#include "platform/linux/accessibility/atspi_bus.h"

#include <algorithm>
#include <memory>
#include <utility>

#include <glib-unix.h>

#include "platform/linux/session/buses.h"
#include "platform/linux/session/end_request.h"

namespace lexwend::platform {
namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* kLauncher = "org.a11y.Bus";
constexpr const char* kLauncherPath = "/org/a11y/bus";
constexpr const char* kObjectEvents = "org.a11y.atspi.Event.Object";
constexpr const char* kWindowEvents = "org.a11y.atspi.Event.Window";
constexpr int kNoLimit = G_MAXINT;
// More applications than a person uses; one that floods the bus with events must not fill the memory.
constexpr std::size_t kMaxApplicationsHeard = 64;

struct SourceDestroy {
  void operator()(GSource* source) const {
    g_source_destroy(source);
    g_source_unref(source);
  }
};
using SourceRef = std::unique_ptr<GSource, SourceDestroy>;

/// The answers to many calls, as they come.
struct Round {
  std::vector<GVariantRef> answers;
  std::vector<std::string> unanswered;  // the bus name of each call; empty when its answer is there
  std::size_t waiting = 0;
  bool wasCancelled = false;
  std::function<void(const std::vector<GVariantRef>&)> then;
};

/// Sends every valid call that `mayAsk` allows; the answers come to the thread's default context.
std::shared_ptr<Round> ask(GDBusConnection* connection, const std::vector<AtspiCall>& calls,
                           GCancellable* cancellable, const std::function<bool(const AtspiCall&)>& mayAsk) {
  struct Slot {
    std::shared_ptr<Round> round;
    std::size_t index;
  };
  auto round = std::make_shared<Round>();
  round->answers.resize(calls.size());
  round->unanswered.resize(calls.size());
  for (std::size_t i = 0; i < calls.size(); ++i) {
    const AtspiCall& call = calls[i];
    if (!call.object.isValid() || !mayAsk(call)) continue;
    ++round->waiting;
    round->unanswered[i] = call.object.bus;
    g_dbus_connection_call(
        connection, call.object.bus.c_str(), call.object.path.c_str(), call.interface, call.method,
        call.arguments.get(), G_VARIANT_TYPE(call.replyType), G_DBUS_CALL_FLAGS_NO_AUTO_START, kNoLimit,
        cancellable,
        [](GObject* source, GAsyncResult* result, gpointer data) {
          const std::unique_ptr<Slot> slot(static_cast<Slot*>(data));
          Round& asked = *slot->round;
          GError* error = nullptr;
          asked.answers[slot->index].reset(
              g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error));
          const GErrorRef owned(error);
          if (error != nullptr && g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED) != FALSE) {
            asked.wasCancelled = true;
          } else {
            asked.unanswered[slot->index].clear();
          }
          if (--asked.waiting == 0 && asked.then && !asked.wasCancelled) asked.then(asked.answers);
        },
        new Slot{round, i});
  }
  return round;
}

/// Iterates the context until no answer is missing or the time is over. The bus is not trusted with that: a
/// timer of the context itself ends the wait, and a request to end this program shortens it.
void waitFor(const Round& round, GMainContext* context, Clock::time_point deadline) {
  const GSourceFunc wakeOnce = [](gpointer) -> gboolean { return G_SOURCE_REMOVE; };
  SourceRef ending;
  if (end_request::descriptor() >= 0) {
    const GUnixFDSourceFunc wakeAtTheEnd = [](gint, GIOCondition, gpointer) -> gboolean {
      return G_SOURCE_REMOVE;
    };
    ending.reset(g_unix_fd_source_new(end_request::descriptor(), G_IO_IN));
    g_source_set_callback(ending.get(),
                          reinterpret_cast<GSourceFunc>(reinterpret_cast<void (*)()>(wakeAtTheEnd)), nullptr,
                          nullptr);
    g_source_attach(ending.get(), context);
  }
  while (round.waiting > 0) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(end_request::limited(deadline) - Clock::now());
    if (left.count() <= 0) return;
    const SourceRef timer(g_timeout_source_new(static_cast<guint>(left.count())));
    g_source_set_callback(timer.get(), wakeOnce, nullptr, nullptr);
    g_source_attach(timer.get(), context);
    g_main_context_iteration(context, TRUE);
  }
}

bool wasCancelled(const GError* error) {
  return error != nullptr && g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED) != FALSE;
}

}  // namespace

AtspiBus::~AtspiBus() {
  if (launcherWatch_ != 0) g_bus_unwatch_name(launcherWatch_);
  if (connecting_) g_cancellable_cancel(connecting_.get());
  disconnected();
  while (g_main_context_iteration(waitingContext_.get(), FALSE) != FALSE) continue;
}

void AtspiBus::start() {
  if (isConnected()) return;
  GDBusConnection* const session = sessionBus();
  if (session == nullptr) return;
  if (launcherWatch_ != 0 && session == session_) {
    if (!connecting_) askForAddress(session);
    return;
  }
  if (launcherWatch_ != 0) g_bus_unwatch_name(launcherWatch_);  // of a session bus that is gone
  session_ = session;
  launcherWatch_ = g_bus_watch_name_on_connection(
      session, kLauncher, G_BUS_NAME_WATCHER_FLAGS_AUTO_START,
      [](GDBusConnection* connection, const char*, const char*, gpointer self) {
        static_cast<AtspiBus*>(self)->launcherAppeared(connection);
      },
      nullptr, this, nullptr);
}

void AtspiBus::launcherAppeared(GDBusConnection* session) {
  if (connecting_) g_cancellable_cancel(connecting_.get());  // the one that was asked is gone
  askForAddress(session);
}

void AtspiBus::askForAddress(GDBusConnection* session) {
  // Toolkits offer their objects only while somebody has asked for it; no reader library does this by itself.
  g_dbus_connection_call(session, kLauncher, kLauncherPath, "org.freedesktop.DBus.Properties", "Set",
                         g_variant_new("(ssv)", "org.a11y.Status", "IsEnabled", g_variant_new_boolean(TRUE)),
                         nullptr, G_DBUS_CALL_FLAGS_NONE, kNoLimit, nullptr, nullptr, nullptr);
  connecting_.reset(g_cancellable_new());
  g_dbus_connection_call(
      session, kLauncher, kLauncherPath, "org.a11y.Bus", "GetAddress", nullptr, G_VARIANT_TYPE("(s)"),
      G_DBUS_CALL_FLAGS_NONE, kNoLimit, connecting_.get(),
      [](GObject* source, GAsyncResult* result, gpointer self) {
        GError* error = nullptr;
        const GVariantRef reply(g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error));
        const GErrorRef owned(error);
        if (wasCancelled(error)) return;
        const auto address = textIn(reply);
        static_cast<AtspiBus*>(self)->connectTo(address.value_or(std::string()));
      },
      this);
}

void AtspiBus::connectTo(const std::string& address) {
  if (g_dbus_is_supported_address(address.c_str(), nullptr) == FALSE ||
      (isConnected() && address == address_)) {
    connecting_.reset();
    return;
  }
  address_ = address;
  g_dbus_connection_new_for_address(
      address.c_str(),
      static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                        G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
      nullptr, connecting_.get(),
      [](GObject*, GAsyncResult* result, gpointer self) {
        GError* error = nullptr;
        GDBusConnection* connection = g_dbus_connection_new_for_address_finish(result, &error);
        const GErrorRef owned(error);
        if (wasCancelled(error)) return;
        auto* bus = static_cast<AtspiBus*>(self);
        bus->connecting_.reset();
        if (connection != nullptr) bus->connected(connection);
      },
      this);
}

void AtspiBus::connected(GDBusConnection* connection) {
  disconnected();  // from the bus of an earlier launcher
  connection_.reset(connection);
  connectedUntil_.reset(g_cancellable_new());
  g_dbus_connection_set_exit_on_close(connection, FALSE);
  closedHandler_ = g_signal_connect(connection, "closed",
                                    G_CALLBACK(+[](GDBusConnection*, gboolean, GError*, gpointer self) {
                                      static_cast<AtspiBus*>(self)->disconnected();
                                    }),
                                    this);
  subscribe(kObjectEvents, "StateChanged", "focused",
            [](GDBusConnection*, const char* sender, const char* path, const char*, const char*,
               GVariant* parameters, gpointer self) {
              // "(siiv...)": what changed, and whether it is so now.
              if (g_variant_n_children(parameters) < 2 || sender == nullptr) return;
              const GVariantRef isSo(g_variant_get_child_value(parameters, 1));
              if (g_variant_is_of_type(isSo.get(), G_VARIANT_TYPE_INT32) == FALSE ||
                  g_variant_get_int32(isSo.get()) == 0) {
                return;
              }
              static_cast<AtspiBus*>(self)->hearFocus({sender, path});
            });
  subscribe(kWindowEvents, "Activate", nullptr,
            [](GDBusConnection*, const char* sender, const char* path, const char*, const char*, GVariant*,
               gpointer self) {
              auto& bus = *static_cast<AtspiBus*>(self);
              if (sender == nullptr) return;
              if (bus.windowsHeard_.size() == kMaxApplicationsHeard) bus.windowsHeard_.clear();
              bus.windowsHeard_[sender] = {sender, path};
              bus.lastWindowHeard_ = {sender, path};
            });
  registryWatch_ = g_bus_watch_name_on_connection(
      connection, kAtspiRegistry, G_BUS_NAME_WATCHER_FLAGS_AUTO_START,
      [](GDBusConnection*, const char*, const char*, gpointer self) {
        static_cast<AtspiBus*>(self)->registryAppeared();
      },
      nullptr, this, nullptr);
}

void AtspiBus::subscribe(const char* interface, const char* signal, const char* detail,
                         GDBusSignalCallback heard) {
  subscriptions_.push_back(g_dbus_connection_signal_subscribe(connection_.get(), nullptr, interface, signal,
                                                              nullptr, detail, G_DBUS_SIGNAL_FLAGS_NONE,
                                                              heard, this, nullptr));
}

/// Applications send an event only when somebody is registered for it.
void AtspiBus::registryAppeared() {
  for (const char* event : {"object:state-changed:focused", "window:activate"}) {
    g_dbus_connection_call(connection_.get(), kAtspiRegistry, "/org/a11y/atspi/registry", kAtspiRegistry,
                           "RegisterEvent", g_variant_new("(sass)", event, nullptr, ""), nullptr,
                           G_DBUS_CALL_FLAGS_NONE, kNoLimit, nullptr, nullptr, nullptr);
  }
}

void AtspiBus::disconnected() {
  if (!connection_) return;
  g_cancellable_cancel(connectedUntil_.get());
  if (registryWatch_ != 0) g_bus_unwatch_name(registryWatch_);
  for (const guint subscription : subscriptions_) {
    g_dbus_connection_signal_unsubscribe(connection_.get(), subscription);
  }
  subscriptions_.clear();
  if (closedHandler_ != 0) g_signal_handler_disconnect(connection_.get(), closedHandler_);
  registryWatch_ = 0;
  closedHandler_ = 0;
  connection_.reset();
  focusHeard_.clear();
  windowsHeard_.clear();
  lastWindowHeard_.reset();
  processes_.clear();
  toolkits_.clear();
}

void AtspiBus::hearFocus(AtspiObject object) {
  const auto known = std::find_if(focusHeard_.begin(), focusHeard_.end(),
                                  [&](const AtspiObject& heard) { return heard.bus == object.bus; });
  if (known != focusHeard_.end()) {
    focusHeard_.erase(known);
  } else {
    learnAbout(object);
  }
  focusHeard_.insert(focusHeard_.begin(), std::move(object));
  if (focusHeard_.size() > kMaxApplicationsHeard) focusHeard_.pop_back();
}

std::optional<AtspiObject> AtspiBus::windowHeard(const std::string& bus) const {
  const auto found = windowsHeard_.find(bus);
  return found != windowsHeard_.end() ? std::optional(found->second) : std::nullopt;
}

void AtspiBus::beginRound() {
  roundStart_ = Clock::now();
  waitsOfRound_ = 0;
  silent_.clear();
}

void AtspiBus::joinRound() {
  if (roundStart_ == Clock::time_point::min() || Clock::now() - roundStart_ > kSameFix) beginRound();
}

std::chrono::milliseconds AtspiBus::roundAge() {
  if (roundStart_ == Clock::time_point::min()) beginRound();
  return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - roundStart_);
}

GVariantRef AtspiBus::call(const AtspiCall& call) {
  return std::move(callAll({call}).front());
}

std::vector<GVariantRef> AtspiBus::callAll(const std::vector<AtspiCall>& calls,
                                           std::chrono::milliseconds limit) {
  const auto left = kRoundLimit - roundAge();
  if (!isConnected() || left.count() <= 0) return std::vector<GVariantRef>(calls.size());

  // The answers come to a context of these calls alone, so that nothing else of the program runs meanwhile.
  GMainContext* const context = waitingContext_.get();
  const GObjectRef<GCancellable> cancellable(g_cancellable_new());
  g_main_context_push_thread_default(context);
  const auto round = ask(connection_.get(), calls, cancellable.get(),
                         [this](const AtspiCall& call) { return !timedOut(call.object); });
  if (round->waiting > 0) ++waitsOfRound_;
  waitFor(*round, context, Clock::now() + std::min(left, limit));
  for (const std::string& bus : round->unanswered) {
    if (!bus.empty()) silent_.insert(bus);
  }
  // What is left is cleared away by this or a later iteration of the context.
  if (round->waiting > 0) g_cancellable_cancel(cancellable.get());
  while (round->waiting > 0 && g_main_context_iteration(context, FALSE) != FALSE) continue;
  g_main_context_pop_thread_default(context);
  return std::move(round->answers);
}

void AtspiBus::whenAnswered(const std::vector<AtspiCall>& calls,
                            std::function<void(const std::vector<GVariantRef>&)> then) {
  if (!isConnected()) return;
  ask(connection_.get(), calls, connectedUntil_.get(), [](const AtspiCall&) { return true; })->then =
      std::move(then);
}

void AtspiBus::send(const AtspiCall& call) {
  if (!isConnected() || !call.object.isValid()) return;
  g_dbus_connection_call(connection_.get(), call.object.bus.c_str(), call.object.path.c_str(), call.interface,
                         call.method, call.arguments.get(), nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START,
                         kNoLimit, nullptr, nullptr, nullptr);
}

namespace {

AtspiCall askProcess(const std::string& bus) {
  return {{"org.freedesktop.DBus", "/org/freedesktop/DBus"},
          "org.freedesktop.DBus",
          "GetConnectionUnixProcessID",
          g_variant_new("(s)", bus.c_str()),
          "(u)"};
}

/// The root object that an object names as its application. Some name themselves by an empty bus name.
AtspiObject rootIn(const GVariantRef& reply, const std::string& bus) {
  if (!reply) return {};
  const char* name = nullptr;
  const char* path = nullptr;
  g_variant_get(reply.get(), "((&s&o))", &name, &path);
  return {*name != '\0' ? name : bus, path};
}

}  // namespace

/// Asks beforehand what does not change, so that a fix need not wait for it.
void AtspiBus::learnAbout(const AtspiObject& object) {
  whenAnswered({askProcess(object.bus), askApplication(object)},
               [this, bus = object.bus](const std::vector<GVariantRef>& answers) {
                 if (const auto process = unsignedIn(answers[0])) processes_[bus] = *process;
                 whenAnswered({askToolkit(rootIn(answers[1], bus))},
                              [this, bus](const std::vector<GVariantRef>& toolkit) {
                                if (const auto name = textIn(toolkit[0])) toolkits_[bus] = *name;
                              });
               });
}

std::optional<std::uint32_t> AtspiBus::processOf(const std::string& bus) {
  if (const auto known = processes_.find(bus); known != processes_.end()) return known->second;
  const auto process = unsignedIn(call(askProcess(bus)));
  if (process) processes_[bus] = *process;
  return process;
}

std::optional<std::string> AtspiBus::toolkitOf(const AtspiObject& object) {
  if (const auto known = toolkits_.find(object.bus); known != toolkits_.end()) return known->second;
  auto toolkit = textIn(call(askToolkit(rootIn(call(askApplication(object)), object.bus))));
  if (toolkit) toolkits_[object.bus] = *toolkit;
  return toolkit;
}

std::vector<AtspiObject> AtspiBus::applications() {
  return objectsIn(call(askChildren({kAtspiRegistry, kAtspiRootPath})));
}

std::vector<AtspiObject> AtspiBus::applicationsOf(std::uint32_t process) {
  std::vector<AtspiObject> applications = this->applications();
  std::vector<std::string> unknown;
  std::vector<AtspiCall> questions;
  for (const AtspiObject& application : applications) {
    if (processes_.count(application.bus) != 0) continue;
    unknown.push_back(application.bus);
    questions.push_back(askProcess(application.bus));
  }
  const auto answers = callAll(questions);
  for (std::size_t i = 0; i < unknown.size(); ++i) {
    if (const auto answer = unsignedIn(answers[i])) processes_[unknown[i]] = *answer;
  }
  std::erase_if(applications, [&](const AtspiObject& application) {
    const auto known = processes_.find(application.bus);
    return known == processes_.end() || known->second != process;
  });
  return applications;
}

}  // namespace lexwend::platform
