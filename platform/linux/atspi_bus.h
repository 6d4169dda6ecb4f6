// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/linux/glib_ref.h"

namespace lexwend::platform {

/// One accessible object: the bus name of its application and its path there (AT-SPI2's "(so)").
struct AtspiObject {
  std::string bus;
  std::string path;
  bool operator==(const AtspiObject&) const = default;
};

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

  /// A method call; the arguments (floating or null) are consumed. Null on an error, on a reply of another
  /// type, and when the round's time is used up.
  GVariantRef call(const AtspiObject& object, const char* interface, const char* method, GVariant* arguments,
                   const char* replyType);
  /// The same for a call that changes something: it may take all that is left of the round.
  GVariantRef callToWrite(const AtspiObject& object, const char* interface, const char* method,
                          GVariant* arguments, const char* replyType);
  /// The same argumentless call to many objects at once: as long as the slowest of them, not as all together.
  /// One answer per object in their order, null like call().
  std::vector<GVariantRef> callAll(const std::vector<AtspiObject>& objects, const char* interface,
                                   const char* method, const char* replyType);
  /// Sends a call and does not wait for its answer. Calls to one application arrive in the order in which
  /// they were sent.
  void send(const AtspiObject& object, const char* interface, const char* method, GVariant* arguments);
  /// Whether that application let a call of this round time out: what was asked may still happen.
  bool timedOut(const AtspiObject& object) const { return silent_.count(object.bus) != 0; }
  /// A property; null like call().
  GVariantRef property(const AtspiObject& object, const char* interface, const char* name);

  // What every accessible answers. Nothing on any error.
  std::optional<std::uint64_t> states(const AtspiObject& object);
  std::optional<std::vector<AtspiObject>> children(const AtspiObject& object);
  std::vector<std::optional<std::uint64_t>> statesOf(const std::vector<AtspiObject>& objects);
  std::vector<std::optional<std::vector<AtspiObject>>> childrenOf(const std::vector<AtspiObject>& objects);
  bool hasInterface(const AtspiObject& object, const char* interface);
  /// The process that owns a name on the accessibility bus.
  std::optional<std::uint32_t> processOf(const std::string& bus);
  /// The root object of each application of that process.
  std::vector<AtspiObject> applicationsOf(std::uint32_t process);

 private:
  static constexpr std::chrono::milliseconds kCallLimit{250};
  static constexpr std::chrono::milliseconds kRoundLimit{700};
  static constexpr std::chrono::milliseconds kSameFix{1500};

  GVariantRef callName(const std::string& bus, const char* path, const char* interface, const char* method,
                       GVariant* arguments, const char* replyType,
                       std::chrono::milliseconds limit = kCallLimit);
  /// What is left of the round; begins one where there was none yet.
  std::chrono::milliseconds timeLeft();
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
  std::map<std::string, std::uint32_t> processes_;  // unique bus names are never used again
  std::chrono::steady_clock::time_point roundStart_{std::chrono::steady_clock::time_point::min()};
  std::set<std::string> silent_;  // bus names that let a call of this round time out
};

/// AtspiStateType bits.
inline constexpr std::uint64_t kAtspiStateEditable = std::uint64_t{1} << 7;
inline constexpr std::uint64_t kAtspiStateFocused = std::uint64_t{1} << 12;
inline constexpr std::uint64_t kAtspiStateShowing = std::uint64_t{1} << 25;
inline constexpr std::uint64_t kAtspiStateVisible = std::uint64_t{1} << 30;
inline constexpr std::uint64_t kAtspiStateReadOnly = std::uint64_t{1} << 43;
/// AtspiRole ATSPI_ROLE_PASSWORD_TEXT.
inline constexpr std::uint32_t kAtspiRolePasswordText = 40;
inline constexpr std::uint32_t kAtspiRoleParagraph = 73;

}  // namespace lexwend::platform
