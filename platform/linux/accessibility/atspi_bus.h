// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/linux/accessibility/atspi_calls.h"
#include "platform/linux/session/glib_ref.h"

namespace lexwend::platform {

struct GMainContextUnref {
  void operator()(GMainContext* context) const { g_main_context_unref(context); }
};

/// The desktop's accessibility bus, spoken directly over D-Bus so that every wait has a limit. Main thread
/// only.
///
/// The connection is made in the background, from the GLib main context: when the bus's launcher answers,
/// however late that is, and again when the launcher or the bus comes back. The first start() waits for the
/// session bus as sessionBus() does; nothing else here waits for a connection.
class AtspiBus {
 public:
  AtspiBus() : waitingContext_(g_main_context_new()) {}
  ~AtspiBus();
  AtspiBus(const AtspiBus&) = delete;
  AtspiBus& operator=(const AtspiBus&) = delete;

  /// Switches accessibility on for the session and begins to connect. Harmless when connected or connecting
  /// already.
  void start();
  bool isConnected() const { return connection_ != nullptr; }

  /// The object of each application that last said that it got the keyboard focus, the latest first.
  const std::vector<AtspiObject>& focusHeard() const { return focusHeard_; }
  /// The window of that application that last said that it became the active one.
  std::optional<AtspiObject> windowHeard(const std::string& bus) const;
  /// The same of all applications.
  const std::optional<AtspiObject>& lastWindowHeard() const { return lastWindowHeard_; }

  /// Begins a round of calls: together they may take 0.7 s, and an application that let one call time out
  /// gets no other in this round.
  void beginRound();
  /// The same, unless a round began less than 1.5 s ago: then the call is part of the same fix.
  void joinRound();
  /// How long the round has been going on; begins one where there was none yet.
  std::chrono::milliseconds roundAge();
  /// How often this round waited for answers.
  int waitsOfRound() const { return waitsOfRound_; }

  /// A method call: the answer, or null on an error, on a reply of another type, when the application does
  /// not answer in 0.25 s, when the round's time is used up, and for an object that is not valid. A signal
  /// that asks this program to end cuts the wait short (end_request.h).
  GVariantRef call(const AtspiCall& call);
  /// Many calls at once, which take as long as the slowest of them: one answer each, in their order, null
  /// like call(). Those to one application arrive in their order.
  std::vector<GVariantRef> callAll(const std::vector<AtspiCall>& calls) { return callAll(calls, kCallLimit); }
  /// The same for calls that change something: they may take all that is left of the round.
  std::vector<GVariantRef> callAllToWrite(const std::vector<AtspiCall>& calls) {
    return callAll(calls, kRoundLimit);
  }
  /// The same without waiting and without a limit: the answers come from the GLib main context, unless this
  /// object or the connection ends before.
  void whenAnswered(const std::vector<AtspiCall>& calls,
                    std::function<void(const std::vector<GVariantRef>&)> then);
  /// Sends a call and does not wait for its answer.
  void send(const AtspiCall& call);
  /// Whether that application let a call of this round time out: what was asked may still happen.
  bool timedOut(const AtspiObject& object) const { return silent_.count(object.bus) != 0; }

  /// The process that owns a name on the accessibility bus; nothing on any error.
  std::optional<std::uint32_t> processOf(const std::string& bus);
  /// The name of the toolkit of that object's application; nothing on any error.
  std::optional<std::string> toolkitOf(const AtspiObject& object);
  /// The root object of each application.
  std::vector<AtspiObject> applications();
  /// The same of that process alone.
  std::vector<AtspiObject> applicationsOf(std::uint32_t process);

 private:
  static constexpr std::chrono::milliseconds kCallLimit{250};
  static constexpr std::chrono::milliseconds kRoundLimit{700};
  static constexpr std::chrono::milliseconds kSameFix{1500};

  std::vector<GVariantRef> callAll(const std::vector<AtspiCall>& calls, std::chrono::milliseconds limit);
  void launcherAppeared(GDBusConnection* session);
  void askForAddress(GDBusConnection* session);
  void connectTo(const std::string& address);
  void connected(GDBusConnection* connection);
  void registryAppeared();
  void disconnected();
  void subscribe(const char* interface, const char* signal, const char* detail, GDBusSignalCallback heard);
  void hearFocus(AtspiObject object);
  void learnAbout(const AtspiObject& object);

  std::unique_ptr<GMainContext, GMainContextUnref> waitingContext_;  // iterated only while a call waits
  GObjectRef<GCancellable> connecting_;                              // of the attempt under way
  const GDBusConnection* session_ = nullptr;                         // only compared with
  guint launcherWatch_ = 0;                                          // on that connection
  std::string address_;                                              // of the connection
  GObjectRef<GDBusConnection> connection_;
  GObjectRef<GCancellable> connectedUntil_;  // cancelled when the connection ends
  gulong closedHandler_ = 0;
  std::vector<guint> subscriptions_;
  guint registryWatch_ = 0;
  std::vector<AtspiObject> focusHeard_;
  std::map<std::string, AtspiObject> windowsHeard_;
  std::optional<AtspiObject> lastWindowHeard_;
  // By unique bus names, which are never used again on this connection.
  std::map<std::string, std::uint32_t> processes_;
  std::map<std::string, std::string> toolkits_;
  std::chrono::steady_clock::time_point roundStart_{std::chrono::steady_clock::time_point::min()};
  int waitsOfRound_ = 0;
  std::set<std::string> silent_;  // bus names that let a call of this round time out
};

}  // namespace lexwend::platform
