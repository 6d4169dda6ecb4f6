// SPDX-License-Identifier: MIT
#include "platform/linux/diagnosis/diagnosis.h"

#include <QFontDatabase>
#include <QGuiApplication>
#include <algorithm>
#include <array>
#include <cstdlib>

#include "platform/linux/session/buses.h"
#include "platform/linux/session/glib_ref.h"
#include "platform/linux/session/login_item.h"
#include "platform/linux/session/session_notice.h"
#include "platform/linux/session/user_defaults.h"

namespace lexwend::platform {
namespace {

/// How long the accessibility bus may take until the host is connected to it.
constexpr std::chrono::milliseconds kConnecting(1000);

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

GVariantRef ask(GDBusConnection* bus, const std::array<const char*, 4>& address, GVariant* arguments) {
  const auto& [name, path, interface, method] = address;
  if (bus == nullptr) {
    g_variant_unref(g_variant_ref_sink(arguments));
    return nullptr;
  }
  return GVariantRef(g_dbus_connection_call_sync(bus, name, path, interface, method, arguments, nullptr,
                                                 G_DBUS_CALL_FLAGS_NONE, kBusCallTimeout, nullptr, nullptr));
}

/// A panel that shows items by the StatusNotifierItem specification.
bool panelShowsItems(GDBusConnection* bus) {
  constexpr const char* kWatcher = "org.kde.StatusNotifierWatcher";
  const auto answer = ask(bus, {kWatcher, "/StatusNotifierWatcher", "org.freedesktop.DBus.Properties", "Get"},
                          g_variant_new("(ss)", kWatcher, "IsStatusNotifierHostRegistered"));
  if (answer == nullptr || g_variant_is_of_type(answer.get(), G_VARIANT_TYPE("(v)")) == FALSE) return false;
  const GVariantRef boxed(g_variant_get_child_value(answer.get(), 0));
  const GVariantRef value(g_variant_get_variant(boxed.get()));
  return g_variant_is_of_type(value.get(), G_VARIANT_TYPE_BOOLEAN) != FALSE &&
         g_variant_get_boolean(value.get()) != FALSE;
}

/// A tray that embeds windows owns a selection of the screen (System Tray Protocol Specification). Only the
/// first screen is asked.
bool trayEmbedsWindows(X11Connection& x11) {
  const auto cookie = xcb_get_selection_owner(x11.get(), x11.atom("_NET_SYSTEM_TRAY_S0"));
  const XcbReply<xcb_get_selection_owner_reply_t> owner(
      xcb_get_selection_owner_reply(x11.get(), cookie, nullptr));
  return owner != nullptr && owner->owner != XCB_WINDOW_NONE;
}

/// Asked in an application object of its own, which needs no display.
bool someFontHasHebrew() {
  static char name[] = "lexwend-doctor";
  static char option[] = "-platform";
  static char platform[] = "offscreen";
  static char* arguments[] = {name, option, platform, nullptr};
  static int count = 3;
  // What the toolkit says of the environment is no finding.
  const auto silent = [](QtMsgType, const QMessageLogContext&, const QString&) {};
  const QtMessageHandler before = qInstallMessageHandler(silent);
  const std::unique_ptr<QGuiApplication> own(
      QCoreApplication::instance() == nullptr ? new QGuiApplication(count, arguments) : nullptr);
  const bool found = !QFontDatabase::families(QFontDatabase::Hebrew).isEmpty();
  qInstallMessageHandler(before);
  return found;
}

std::vector<std::string> missingExtensions(const X11Connection& x11) {
  std::vector<std::string> missing;
  if (!x11.hasXTest()) missing.emplace_back("XTEST");
  if (!x11.hasXFixes()) missing.emplace_back("XFIXES");
  if (!x11.hasXkb()) missing.emplace_back("XKB");
  return missing;
}

Sentence sentence(const SessionNotice& notice) {
  return {std::string(notice.english), std::string(notice.hebrew)};
}

void readAutostart(SessionFacts& facts) {
  facts.autostartPath = LinuxLoginItem::standardPath();
  const auto command = LinuxLoginItem::commandOf(facts.autostartPath);
  facts.autostartIsOn = command.has_value();
  if (!command) return;
  facts.autostartProgram = command->empty() ? "" : command->front();
  facts.autostartProgramIsThere = GText(g_find_program_in_path(facts.autostartProgram.c_str())) != nullptr;
}

}  // namespace

SessionFacts LinuxDiagnosis::facts() {
  SessionFacts facts;
  facts.desktop = environment("XDG_CURRENT_DESKTOP");
  facts.display = environment("DISPLAY");
  const auto x11 = needs_.x11();
  const bool isCompositor = needs_.compositorServes();
  facts.displayAnswers = x11 != nullptr || isCompositor;
  if (isCompositor) facts.display = environment("WAYLAND_DISPLAY");
  if (x11 != nullptr) facts.missingExtensions = missingExtensions(*x11);
  if (sessionIsWayland() && !isCompositor) {
    const SessionNotice& notice = x11 != nullptr ? kWaylandWithX11 : kWaylandOnly;
    facts.limit = sentence(notice);
  }
  if (isCompositor && needs_.grantIsMissing()) {
    facts.limit = sentence(kNoGrant);
    facts.wayOut = sentence(kHowToGetGrant);
  }
  if (const SessionLimit* limit = isCompositor ? needs_.hotKeyLimit() : nullptr) {
    facts.limit = sentence(limit->what);
    facts.wayOut = sentence(limit->wayOut);
  }
  GDBusConnection* bus = sessionBus();
  facts.sessionBus = bus != nullptr;
  facts.accessibilityBus = ask(bus, {"org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress"},
                               g_variant_new("()")) != nullptr;
  if (facts.accessibilityBus) {
    constexpr std::chrono::milliseconds kStep(10);
    for (auto waited = kStep; !needs_.accessibilityIsConnected() && waited < kConnecting; waited += kStep) {
      waitFor(kStep);
    }
    facts.accessibilityBus = needs_.accessibilityIsConnected();
  }
  facts.tray = panelShowsItems(bus) || (x11 != nullptr && trayEmbedsWindows(*x11));
  facts.hebrewFont = someFontHasHebrew();
  facts.agentProcess = needs_.runningAgent();
  facts.settingsPath = LinuxUserDefaults::standardPath();
  readAutostart(facts);
  return facts;
}

void LinuxDiagnosis::waitFor(std::chrono::milliseconds time) {
  bool over = false;
  const auto end = [](void* flag) -> gboolean {
    *static_cast<bool*>(flag) = true;
    return G_SOURCE_REMOVE;
  };
  g_timeout_add(static_cast<guint>(time.count()), end, &over);
  while (!over) g_main_context_iteration(nullptr, TRUE);
}

}  // namespace lexwend::platform
