// SPDX-License-Identifier: MIT
#include "tests/linux/kwin/fake_kwin.h"

#include <utility>

#include <linux/input-event-codes.h>

#include "platform/linux/session/glib_ref.h"

namespace lexwend::platform {
namespace {

constexpr const char* kComponentPath = "/component/of_a_test";

/// A list of texts in a method's arguments, at the place.
std::string textAt(GVariant* arguments, gsize place) {
  const GVariantRef list(g_variant_get_child_value(arguments, 0));
  const char* text = "";
  g_variant_get_child(list.get(), place, "&s", &text);
  return text;
}

}  // namespace

FakeKWin::Session::Session() {
  static const PrivateBus kBus;  // one for the tests of a process, which has one connection to its session's
}

FakeKWin::FakeKWin() {
  peer_.answer([this](const std::string& method, GVariant* arguments) { return answer(method, arguments); });
  for (const char* name : {"org.kde.KWin", "org.kde.kglobalaccel", "org.kde.keyboard"}) peer_.ownName(name);
  kwin_ = KWin::open();
}

GVariant* FakeKWin::answer(const std::string& method, GVariant* arguments) {
  const std::lock_guard lock(mutex_);
  const GText text(arguments != nullptr ? g_variant_print(arguments, FALSE) : g_strdup("()"));
  calls_.push_back(method + text.get());
  if (method == "doRegister" || method == "unRegister") return g_variant_new("()");
  if (method == "setShortcut") {
    component_ = textAt(arguments, 0);
    action_ = textAt(arguments, 1);
    const GVariantRef keys(g_variant_get_child_value(arguments, 1));
    const GVariantRef nothing(g_variant_ref_sink(g_variant_new_parsed("[0]")));
    return g_variant_new("(@ai)", shortcutsAreTaken_ ? nothing.get() : keys.get());
  }
  if (method == "getComponent") return g_variant_new("(o)", kComponentPath);
  if (method == "GetActive") return g_variant_new("(b)", isLocked_ ? TRUE : FALSE);
  if (method == "getLayout") return g_variant_new("(u)", layout_);
  if (method == "setLayout") {
    g_variant_get(arguments, "(u)", &layout_);
    return g_variant_new("(b)", TRUE);
  }
  return nullptr;
}

void FakeKWin::setLayouts(const std::string& layouts) {
  sway_.setLayouts(layouts);
  sway_.tap(KEY_F20);  // sway sends the keymap of the keyboard that is typed on
}

void FakeKWin::takeShortcuts() {
  const std::lock_guard lock(mutex_);
  shortcutsAreTaken_ = true;
}

void FakeKWin::lockScreen() {
  const std::lock_guard lock(mutex_);
  isLocked_ = true;
}

void FakeKWin::shortcut(const char* signal) {
  const auto [component, action] = [this] {
    const std::lock_guard lock(mutex_);
    return std::pair(component_, action_);
  }();
  peer_.emit(kComponentPath, "org.kde.kglobalaccel.Component", signal,
             g_variant_new("(ssx)", component.c_str(), action.c_str(), gint64{0}));
}

std::vector<std::string> FakeKWin::calls(const std::string& method) {
  const std::lock_guard lock(mutex_);
  std::vector<std::string> found;
  for (const std::string& call : calls_) {
    if (call.starts_with(method + "(")) found.push_back(call);
  }
  return found;
}

}  // namespace lexwend::platform
