// SPDX-License-Identifier: MIT
#include "tests/linux/testing/scripted_application.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

namespace lexwend::platform {
namespace {

std::string utf8(const icu::UnicodeString& text) {
  std::string bytes;
  return text.toUTF8String(bytes);
}

GVariant* boolean(bool value) {
  return g_variant_new("(b)", value ? TRUE : FALSE);
}

GVariant* property(GVariant* value) {
  return g_variant_new("(v)", value);
}

}  // namespace

ScriptedApplication::ScriptedApplication() {
  constexpr auto kFlags = GDBusConnectionFlags(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                               G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
  connection_ = g_dbus_connection_new_for_address_sync(std::getenv("DBUS_SESSION_BUS_ADDRESS"), kFlags,
                                                       nullptr, nullptr, nullptr);
  if (connection_ == nullptr) throw std::runtime_error("no connection to the private bus");
  g_dbus_connection_add_filter(connection_, &ScriptedApplication::seen, this, nullptr);
  for (const char* name : {"org.a11y.Bus", "org.a11y.atspi.Registry"}) {
    const GVariantRef reply(g_dbus_connection_call_sync(
        connection_, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
        g_variant_new("(su)", name, 0U), nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
    if (!reply) throw std::runtime_error("the name is taken");
  }
}

ScriptedApplication::~ScriptedApplication() {
  g_dbus_connection_close_sync(connection_, nullptr, nullptr);
  g_object_unref(connection_);
  for (GDBusMessage* message : waiting_) g_object_unref(message);
}

void ScriptedApplication::show(ScriptedField field, std::map<std::string, ScriptedObject> others) {
  const std::lock_guard lock(mutex_);
  field_ = std::move(field);
  others_ = std::move(others);
  others_.insert({kRoot, {.children = {kWindow}}});
  others_.insert({kWindow, {.children = {field_.path}}});
  calls_.clear();
  wasOverrun_ = false;
}

void ScriptedApplication::resume() {
  const std::lock_guard lock(mutex_);
  hasStopped_ = false;
  field_.stopsBefore.clear();
  field_.hangs.clear();
  field_.hangsAt.clear();
  for (GDBusMessage* message : waiting_) handle(message);
  waiting_.clear();
}

void ScriptedApplication::sayFocused(const std::string& path) {
  say(path, "org.a11y.atspi.Event.Object", "StateChanged", "focused", 1);
}

void ScriptedApplication::sayActive(const std::string& window) {
  say(window, "org.a11y.atspi.Event.Window", "Activate", "", 0);
}

void ScriptedApplication::say(const std::string& path, const char* interface, const char* event,
                              const char* detail, int isSo) {
  GVariant* arguments = g_variant_new("(siiva{sv})", detail, isSo, 0, g_variant_new_int32(0), nullptr);
  g_dbus_connection_emit_signal(connection_, nullptr, path.c_str(), interface, event, arguments, nullptr);
  g_dbus_connection_flush_sync(connection_, nullptr, nullptr);
}

std::string ScriptedApplication::text() {
  const std::lock_guard lock(mutex_);
  return utf8(field_.text);
}

std::vector<std::pair<int, int>> ScriptedApplication::selections() {
  const std::lock_guard lock(mutex_);
  return field_.selections;
}

bool ScriptedApplication::hasStopped() {
  const std::lock_guard lock(mutex_);
  return hasStopped_;
}

bool ScriptedApplication::wasOverrun() {
  const std::lock_guard lock(mutex_);
  return wasOverrun_;
}

int ScriptedApplication::calls(const std::string& method, const std::string& path) {
  const std::lock_guard lock(mutex_);
  return static_cast<int>(std::count_if(calls_.begin(), calls_.end(), [&](const auto& call) {
    return call.second == method && (path.empty() || call.first == path);
  }));
}

GDBusMessage* ScriptedApplication::seen(GDBusConnection* /*connection*/, GDBusMessage* message, int incoming,
                                        void* data) {
  if (incoming == FALSE || g_dbus_message_get_message_type(message) != G_DBUS_MESSAGE_TYPE_METHOD_CALL) {
    return message;
  }
  auto* self = static_cast<ScriptedApplication*>(data);
  const std::lock_guard lock(self->mutex_);
  const std::string method = g_dbus_message_get_member(message);
  self->hasStopped_ |= self->field_.stopsBefore == method || self->field_.hangs.count(method) != 0 ||
                       self->field_.hangsAt.count({g_dbus_message_get_path(message), method}) != 0;
  if (self->hasStopped_) {
    self->waiting_.push_back(message);
  } else {
    self->handle(message);
  }
  return nullptr;
}

void ScriptedApplication::handle(GDBusMessage* message) {
  const std::string path = g_dbus_message_get_path(message);
  std::string method = g_dbus_message_get_member(message);
  GVariant* arguments = g_dbus_message_get_body(message);
  if (method == "Get") {
    const char* name = nullptr;
    g_variant_get(arguments, "(&s&s)", nullptr, &name);
    method += std::string(" ") + name;
  }
  calls_.emplace_back(path, method);
  if (const auto done = field_.meanwhile.find(method); done != field_.meanwhile.end()) {
    const auto change = done->second;
    field_.meanwhile.erase(done);
    change(field_);
  }
  GVariant* value = answer(path, method, arguments);
  GDBusMessage* reply =
      value != nullptr ? g_dbus_message_new_method_reply(message)
                       : g_dbus_message_new_method_error_literal(message, "org.lexwend.Broken", "broken");
  if (value != nullptr) g_dbus_message_set_body(reply, value);
  g_dbus_connection_send_message(connection_, reply, G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr, nullptr);
  g_object_unref(reply);
  g_object_unref(message);
}

GVariant* ScriptedApplication::answer(const std::string& path, const std::string& method,
                                      GVariant* arguments) {
  if (method == "GetAddress") return g_variant_new("(s)", std::getenv("DBUS_SESSION_BUS_ADDRESS"));
  if (method == "Set" || method == "RegisterEvent") return g_variant_new("()");
  if (path == field_.path && field_.broken.count(method) != 0) return nullptr;
  if (path == field_.path && field_.answersNonsense.count(method) != 0) {
    return method.starts_with("Get ") ? property(g_variant_new_double(0.5)) : g_variant_new("(d)", 0.5);
  }
  if (method == "GetState") {
    const std::uint64_t states = statesOf(path);
    const auto low = static_cast<guint32>(states & 0xFFFFFFFFU);
    const auto high = static_cast<guint32>(states >> 32U);
    const guint32 words[] = {low, high};
    return g_variant_new("(@au)", g_variant_new_fixed_array(G_VARIANT_TYPE_UINT32, words, 2, sizeof low));
  }
  if (path != field_.path && method == "GetRole") {
    const auto other = others_.find(path);
    return other != others_.end() ? g_variant_new("(u)", other->second.role) : nullptr;
  }
  if (method == "GetChildren") {
    GVariantBuilder children;
    g_variant_builder_init(&children, G_VARIANT_TYPE("a(so)"));
    if (const auto other = others_.find(path); other != others_.end()) {
      for (const auto& [bus, child] : other->second.malformedChildren) {
        g_variant_builder_add(&children, "(so)", bus, child);
      }
    }
    for (const std::string& child : childrenOf(path)) {
      g_variant_builder_add_value(&children, reference(child));
    }
    return g_variant_new("(a(so))", &children);
  }
  if (method == "Get ChildCount") {
    const auto other = others_.find(path);
    const int real = static_cast<int>(childrenOf(path).size());
    return property(
        g_variant_new_int32(other != others_.end() ? other->second.promisedChildren.value_or(real) : real));
  }
  if (method == "Get ToolkitName") return property(g_variant_new_string(field_.toolkit.c_str()));
  if (method == "GetApplication" && field_.application) {
    return g_variant_new("((so))", field_.application->first.c_str(), field_.application->second.c_str());
  }
  if (method == "GetApplication") return g_variant_new("(@(so))", reference(kRoot));
  return path == field_.path ? answerOfField(method, arguments) : nullptr;
}

GVariant* ScriptedApplication::answerOfField(const std::string& method, GVariant* arguments) {
  if (field_.refused.count(method) != 0) return boolean(false);
  if (method == "GetInterfaces") {
    return g_variant_new(
        "(@as)", g_variant_new_strv(field_.interfaces.data(), static_cast<gssize>(field_.interfaces.size())));
  }
  if (method == "GetRole") return g_variant_new("(u)", field_.role);
  if (method == "GetRoleName") return g_variant_new("(s)", field_.roleName.c_str());
  if (method == "Get CharacterCount") {
    if (field_.claimedLength) return property(g_variant_new_int32(*field_.claimedLength));
    return property(g_variant_new_int32(isQt() ? field_.text.length() : field_.text.countChar32()));
  }
  if (method == "GetNSelections") return g_variant_new("(i)", static_cast<int>(field_.selections.size()));
  if (method == "GetSelection") {
    const auto range = field_.selections.empty() ? std::pair(0, 0) : field_.selections.front();
    return g_variant_new("(ii)", range.first, range.second);
  }
  int start = 0;
  int end = 0;
  if (method == "GetText") {
    g_variant_get(arguments, "(ii)", &start, &end);
    if (end < 0 && !field_.knowsItsEnd) return g_variant_new("(s)", "");
    return g_variant_new("(s)", utf8(field_.text.tempSubStringBetween(index(start), index(end))).c_str());
  }
  if (method == "InsertText") {
    const char* text = nullptr;
    g_variant_get(arguments, "(i&si)", &start, &text, &end);
    return insert(start, text, end);
  }
  if (method == "DeleteText") {
    g_variant_get(arguments, "(ii)", &start, &end);
    field_.text.removeBetween(index(start), index(end));
    std::erase_if(field_.selections, [&](const auto& range) { return range.second > start; });
    return boolean(true);
  }
  if (method == "AddSelection" || method == "SetSelection") {
    if ((method == "AddSelection") != field_.selections.empty()) return boolean(false);
    if (method == "AddSelection") g_variant_get(arguments, "(ii)", &start, &end);
    if (method == "SetSelection") g_variant_get(arguments, "(iii)", nullptr, &start, &end);
    field_.selections = {{start, end}};
    return boolean(true);
  }
  if (method == "SetCaretOffset") {
    field_.selections.clear();
    g_variant_get(arguments, "(i)", &field_.caret);
    return boolean(true);
  }
  return nullptr;
}

/// As the toolkits do it: the length is in UTF-8 bytes, in Qt in UTF-16 units, and nobody looks whether that
/// much was given. An entry of GTK 3 also puts the caret behind what it inserted, which ends the selection.
GVariant* ScriptedApplication::insert(int position, const std::string& text, int length) {
  const icu::UnicodeString units = icu::UnicodeString::fromUTF8(text);
  const int given = isQt() ? units.length() : static_cast<int>(text.size());
  wasOverrun_ |= length > given;
  const int taken = std::min(length, given);
  icu::UnicodeString inserted =
      isQt() ? icu::UnicodeString(units, 0, taken)
             : icu::UnicodeString::fromUTF8(text.substr(0, static_cast<std::size_t>(taken)));
  if (field_.filter) inserted = field_.filter(inserted);
  const int room = std::max(0, field_.maxLength - field_.text.countChar32());
  inserted.truncate(inserted.moveIndex32(0, room));
  field_.text.insert(index(position), inserted);
  if (!field_.selectionGrows) {
    field_.selections.clear();
  } else if (!field_.selections.empty() && field_.selections.front().second == position) {
    field_.selections.front().second += inserted.countChar32();
  }
  return boolean(true);
}

int ScriptedApplication::index(int offset) const {
  if (offset < 0) return field_.text.length();
  return isQt() ? std::min(offset, field_.text.length()) : field_.text.moveIndex32(0, offset);
}

std::uint64_t ScriptedApplication::statesOf(const std::string& path) {
  if (path == field_.path) {
    if (field_.answersUnfocused == 0) return field_.states;
    --field_.answersUnfocused;
    return field_.states & ~stateBit(ATSPI_STATE_FOCUSED);
  }
  const auto other = others_.find(path);
  return other != others_.end() ? other->second.states : 0;
}

std::vector<std::string> ScriptedApplication::childrenOf(const std::string& path) const {
  if (path == "/org/a11y/atspi/accessible/root") return {kRoot};
  const auto other = others_.find(path);
  return other != others_.end() ? other->second.children : std::vector<std::string>();
}

GVariant* ScriptedApplication::reference(const std::string& path) const {
  return g_variant_new("(so)", g_dbus_connection_get_unique_name(connection_), path.c_str());
}

}  // namespace lexwend::platform
