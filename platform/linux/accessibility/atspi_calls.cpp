// SPDX-License-Identifier: MIT
#include "platform/linux/accessibility/atspi_calls.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace lexwend::platform {
namespace {

constexpr std::size_t kMaxObjects = 1000;
constexpr const char* kNullPath = "/org/a11y/atspi/null";

/// The answer is a variant of the property's own type.
AtspiCall askProperty(const AtspiObject& object, const char* interface, const char* name) {
  return {object, "org.freedesktop.DBus.Properties", "Get", g_variant_new("(ss)", interface, name), "(v)"};
}

/// The one value of a reply, out of its variant where it is a property's.
GVariantRef valueIn(const GVariantRef& reply, const GVariantType* type) {
  if (!reply) return nullptr;
  GVariantRef value(g_variant_get_child_value(reply.get(), 0));
  if (g_variant_is_of_type(value.get(), G_VARIANT_TYPE_VARIANT) != FALSE) {
    value.reset(g_variant_get_variant(value.get()));
  }
  return g_variant_is_of_type(value.get(), type) != FALSE ? std::move(value) : nullptr;
}

}  // namespace

bool AtspiObject::isValid() const {
  return g_dbus_is_name(bus.c_str()) != FALSE && g_variant_is_object_path(path.c_str()) != FALSE &&
         path != kNullPath;
}

AtspiCall::AtspiCall(AtspiObject to, const char* interfaceName, const char* methodName,
                     GVariant* withArguments, const char* answerType)
    : object(std::move(to)), interface(interfaceName), method(methodName), replyType(answerType) {
  if (withArguments != nullptr) arguments.reset(g_variant_ref_sink(withArguments), GVariantUnref());
}

AtspiCall askStates(const AtspiObject& object) {
  return {object, kAtspiAccessible, "GetState", nullptr, "(au)"};
}

AtspiCall askInterfaces(const AtspiObject& object) {
  return {object, kAtspiAccessible, "GetInterfaces", nullptr, "(as)"};
}

AtspiCall askRole(const AtspiObject& object) {
  return {object, kAtspiAccessible, "GetRole", nullptr, "(u)"};
}

AtspiCall askRoleName(const AtspiObject& object) {
  return {object, kAtspiAccessible, "GetRoleName", nullptr, "(s)"};
}

AtspiCall askChildren(const AtspiObject& object) {
  return {object, kAtspiAccessible, "GetChildren", nullptr, "(a(so))"};
}

AtspiCall askChildCount(const AtspiObject& object) {
  return askProperty(object, kAtspiAccessible, "ChildCount");
}

AtspiCall askApplication(const AtspiObject& object) {
  return {object, kAtspiAccessible, "GetApplication", nullptr, "((so))"};
}

AtspiCall askToolkit(const AtspiObject& application) {
  return askProperty(application, kAtspiApplication, "ToolkitName");
}

AtspiCall askLength(const AtspiObject& object) {
  return askProperty(object, kAtspiText, "CharacterCount");
}

AtspiCall askSelectionCount(const AtspiObject& object) {
  return {object, kAtspiText, "GetNSelections", nullptr, "(i)"};
}

AtspiCall askFirstSelection(const AtspiObject& object) {
  return {object, kAtspiText, "GetSelection", g_variant_new("(i)", 0), "(ii)"};
}

AtspiCall askText(const AtspiObject& object, std::int32_t start, std::int32_t end) {
  return {object, kAtspiText, "GetText", g_variant_new("(ii)", start, end), "(s)"};
}

std::optional<std::uint64_t> statesIn(const GVariantRef& reply) {
  const GVariantRef words = valueIn(reply, G_VARIANT_TYPE("au"));
  if (!words) return std::nullopt;
  std::uint64_t bits = 0;
  for (gsize i = 0; i < std::min<gsize>(2, g_variant_n_children(words.get())); ++i) {
    const GVariantRef word(g_variant_get_child_value(words.get(), i));
    bits |= std::uint64_t{g_variant_get_uint32(word.get())} << (32 * i);
  }
  return bits;
}

bool interfacesHave(const GVariantRef& reply, const char* interface) {
  const GVariantRef names = valueIn(reply, G_VARIANT_TYPE("as"));
  if (!names) return false;
  GVariantIter iterator;
  g_variant_iter_init(&iterator, names.get());
  const char* name = nullptr;
  while (g_variant_iter_next(&iterator, "&s", &name) != FALSE) {
    if (std::strcmp(name, interface) == 0) return true;
  }
  return false;
}

std::optional<std::uint32_t> unsignedIn(const GVariantRef& reply) {
  const GVariantRef value = valueIn(reply, G_VARIANT_TYPE_UINT32);
  return value ? std::optional(g_variant_get_uint32(value.get())) : std::nullopt;
}

std::optional<std::int32_t> integerIn(const GVariantRef& reply) {
  const GVariantRef value = valueIn(reply, G_VARIANT_TYPE_INT32);
  return value ? std::optional(g_variant_get_int32(value.get())) : std::nullopt;
}

std::optional<std::string> textIn(const GVariantRef& reply) {
  const GVariantRef value = valueIn(reply, G_VARIANT_TYPE_STRING);
  return value ? std::optional<std::string>(g_variant_get_string(value.get(), nullptr)) : std::nullopt;
}

bool succeeded(const GVariantRef& reply) {
  const GVariantRef value = valueIn(reply, G_VARIANT_TYPE_BOOLEAN);
  return value && g_variant_get_boolean(value.get()) != FALSE;
}

std::vector<AtspiObject> objectsIn(const GVariantRef& reply) {
  std::vector<AtspiObject> objects;
  const GVariantRef array = valueIn(reply, G_VARIANT_TYPE("a(so)"));
  if (!array) return objects;
  GVariantIter iterator;
  g_variant_iter_init(&iterator, array.get());
  const char* bus = nullptr;
  const char* path = nullptr;
  while (objects.size() < kMaxObjects && g_variant_iter_next(&iterator, "(&s&o)", &bus, &path) != FALSE) {
    AtspiObject object{bus, path};
    if (object.isValid()) objects.push_back(std::move(object));
  }
  return objects;
}

}  // namespace lexwend::platform
