// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/session/glib_ref.h"
// After GLib, whose macros it uses.
#include <atspi/atspi-constants.h>

namespace lexwend::platform {

/// Interfaces of the AT-SPI2 protocol.
inline constexpr const char* kAtspiAccessible = "org.a11y.atspi.Accessible";
inline constexpr const char* kAtspiApplication = "org.a11y.atspi.Application";
inline constexpr const char* kAtspiText = "org.a11y.atspi.Text";
inline constexpr const char* kAtspiEditableText = "org.a11y.atspi.EditableText";
/// The bus's registry of applications, and the path of every root object.
inline constexpr const char* kAtspiRegistry = "org.a11y.atspi.Registry";
inline constexpr const char* kAtspiRootPath = "/org/a11y/atspi/accessible/root";

/// A state as its bit in a set of states.
constexpr std::uint64_t stateBit(AtspiStateType state) {
  return std::uint64_t{1} << static_cast<unsigned>(state);
}

/// One accessible object: the bus name of its application and its path there (AT-SPI2's "(so)").
struct AtspiObject {
  std::string bus;
  std::string path;
  bool operator==(const AtspiObject&) const = default;
  /// Whether a call may be sent there. Applications do hand out references that name nobody; GDBus never
  /// answers a call to a name that is none.
  bool isValid() const;
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

// What every accessible is asked.
AtspiCall askStates(const AtspiObject& object);
AtspiCall askInterfaces(const AtspiObject& object);
AtspiCall askRole(const AtspiObject& object);
AtspiCall askRoleName(const AtspiObject& object);
AtspiCall askChildren(const AtspiObject& object);
AtspiCall askChildCount(const AtspiObject& object);
AtspiCall askApplication(const AtspiObject& object);
AtspiCall askToolkit(const AtspiObject& application);
// What a text is asked. Offsets are in the toolkit's own units.
AtspiCall askLength(const AtspiObject& object);
AtspiCall askSelectionCount(const AtspiObject& object);
AtspiCall askFirstSelection(const AtspiObject& object);
AtspiCall askText(const AtspiObject& object, std::int32_t start, std::int32_t end);

// What the answers say: nothing for no answer and for one of another type.
std::optional<std::uint64_t> statesIn(const GVariantRef& reply);
bool interfacesHave(const GVariantRef& reply, const char* interface);
std::optional<std::uint32_t> unsignedIn(const GVariantRef& reply);
std::optional<std::int32_t> integerIn(const GVariantRef& reply);
std::optional<std::string> textIn(const GVariantRef& reply);
/// The reply to a call that says whether it was done.
bool succeeded(const GVariantRef& reply);
/// References that name an object, a thousand at most; the others are left out.
std::vector<AtspiObject> objectsIn(const GVariantRef& reply);

}  // namespace lexwend::platform
