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

#include "platform/linux/session/glib_ref.h"

namespace lexwend::platform {

/// One accessible object: the bus name of its application and its path there (AT-SPI2's "(so)").
struct AtspiObject {
  std::string bus;
  std::string path;
  bool operator==(const AtspiObject&) const = default;
};

/// One question to an object.
struct AtspiCall {
  /// The arguments may be null; a floating reference is taken over.
  AtspiCall(AtspiObject to, const char* interfaceName, const char* methodName, GVariant* withArguments,
            const char* answerType);
  AtspiObject object;
  const char* interface;
  const char* method;
  std::shared_ptr<GVariant> arguments;
  const char* replyType;
};
/// What every accessible is asked, and what the answers say: nothing for no answer.
AtspiCall askStates(const AtspiObject& object);
AtspiCall askInterfaces(const AtspiObject& object);
AtspiCall askChildren(const AtspiObject& object);
/// The answer is a variant of the property's own type.
AtspiCall askProperty(const AtspiObject& object, const char* interface, const char* name);
std::optional<std::uint64_t> statesIn(const GVariantRef& reply);
bool interfacesHave(const GVariantRef& reply, const char* interface);
std::vector<AtspiObject> objectsIn(const GVariantRef& reply);
std::optional<std::int32_t> integerIn(const GVariantRef& property);
std::optional<std::string> textIn(const GVariantRef& property);

/// The desktop's accessibility bus, spoken directly over D-Bus so that every wait has a limit. Main thread
/// only. The connection is made in the background from the GLib main context; nothing here waits for it, but
/// for the program's first look at the session bus, where that is here.
class AtspiBus {
 public:
  /// Interfaces of the AT-SPI2 protocol.
  static constexpr const char* kAccessible = "org.a11y.atspi.Accessible";
  static constexpr const char* kApplication = "org.a11y.atspi.Application";
  static constexpr const char* kCollection = "org.a11y.atspi.Collection";
  static constexpr const char* kText = "org.a11y.atspi.Text";
  static constexpr const char* kEditableText = "org.a11y.atspi.EditableText";

  AtspiBus() = default;
  ~AtspiBus();
  AtspiBus(const AtspiBus&) = delete;
  AtspiBus& operator=(const AtspiBus&) = delete;

  /// Switches accessibility on for the session and begins to connect. Harmless when connected or connecting
  /// already.
  void start();
  bool isConnected() const { return connection_ != nullptr; }

  /// The object that last said that it got the keyboard focus.
  const std::optional<AtspiObject>& lastFocus() const { return lastFocus_; }

  /// Begins a round of calls: together they may take kRoundLimit, and an application that let one call time
  /// out gets no other in this round.
  void beginRound();
  /// The same, unless a round began so lately that the call is part of the same fix.
  void joinRound();
  /// How long the round has been going on; begins one where there was none yet.
  std::chrono::milliseconds roundAge();

  /// A method call: the answer, null on an error, on a reply of another type, when the application does not
  /// answer in time, and when the round's time is used up.
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

  // What every accessible answers. Nothing on any error.
  bool hasInterface(const AtspiObject& object, const char* interface);
  /// The process that owns a name on the accessibility bus.
  std::optional<std::uint32_t> processOf(const std::string& bus);
  /// The name of the toolkit of that object's application.
  std::optional<std::string> toolkitOf(const AtspiObject& object);
  /// The root object of each application of that process.
  std::vector<AtspiObject> applicationsOf(std::uint32_t process);

 private:
  static constexpr std::chrono::milliseconds kCallLimit{250};
  static constexpr std::chrono::milliseconds kRoundLimit{700};
  static constexpr std::chrono::milliseconds kSameFix{1500};

  std::vector<GVariantRef> callAll(const std::vector<AtspiCall>& calls, std::chrono::milliseconds limit);
  void askForAddress(GDBusConnection* session);
  void connectTo(const char* address);
  void connected(GDBusConnection* connection);
  void disconnected();

  GObjectRef<GCancellable> cancellable_;
  GObjectRef<GDBusConnection> connection_;
  gulong closedHandler_ = 0;
  guint subscription_ = 0;
  bool connecting_ = false;
  std::optional<AtspiObject> lastFocus_;
  // By unique bus names, which are never used again on this connection.
  std::map<std::string, std::uint32_t> processes_;
  std::map<std::string, std::string> toolkits_;
  std::chrono::steady_clock::time_point roundStart_{std::chrono::steady_clock::time_point::min()};
  std::set<std::string> silent_;  // bus names that let a call of this round time out
};

/// AtspiStateType bits.
inline constexpr std::uint64_t kAtspiStateEditable = std::uint64_t{1} << 7;
inline constexpr std::uint64_t kAtspiStateFocused = std::uint64_t{1} << 12;
inline constexpr std::uint64_t kAtspiStateMultiLine = std::uint64_t{1} << 17;
inline constexpr std::uint64_t kAtspiStateShowing = std::uint64_t{1} << 25;
inline constexpr std::uint64_t kAtspiStateVisible = std::uint64_t{1} << 30;
inline constexpr std::uint64_t kAtspiStateManagesDescendants = std::uint64_t{1} << 31;
inline constexpr std::uint64_t kAtspiStateReadOnly = std::uint64_t{1} << 43;
/// AtspiRole numbers.
inline constexpr std::uint32_t kAtspiRolePasswordText = 40;
inline constexpr std::uint32_t kAtspiRoleTerminal = 60;
inline constexpr std::uint32_t kAtspiRoleParagraph = 73;

}  // namespace lexwend::platform
