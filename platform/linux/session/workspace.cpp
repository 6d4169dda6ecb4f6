// SPDX-License-Identifier: MIT
#include "platform/linux/session/workspace.h"

#include <cstdlib>
#include <string>
#include <vector>

#include "platform/linux/session/buses.h"

namespace lexwend::platform {
namespace {

constexpr std::string_view kMacSettingsScheme = "x-apple.systempreferences";

struct ParsedUrl : Url {
  ParsedUrl(std::string urlText, std::string urlScheme)
      : text(std::move(urlText)), scheme(std::move(urlScheme)) {}
  std::string text;
  std::string scheme;
};

/// Applications look at this switch when they decide whether to answer assistive programs.
void switchAccessibilityOn() {
  GDBusConnection* bus = sessionBus();
  if (bus == nullptr) return;
  g_dbus_connection_call(bus, "org.a11y.Bus", "/org/a11y/bus", "org.freedesktop.DBus.Properties", "Set",
                         g_variant_new("(ssv)", "org.a11y.Status", "IsEnabled", g_variant_new_boolean(TRUE)),
                         nullptr, G_DBUS_CALL_FLAGS_NONE, kBusCallTimeout, nullptr, nullptr, nullptr);
}

void spawn(std::vector<std::string> arguments) {
  std::vector<char*> argv;
  argv.reserve(arguments.size() + 1);
  for (auto& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);
  g_spawn_async(nullptr, argv.data(), nullptr, G_SPAWN_SEARCH_PATH, nullptr, nullptr, nullptr, nullptr);
}

void showAccessibilitySettings() {
  const char* desktop = std::getenv("XDG_CURRENT_DESKTOP");
  const std::string_view name = desktop != nullptr ? desktop : "";
  if (name.find("GNOME") != std::string_view::npos) spawn({"gnome-control-center", "universal-access"});
  if (name.find("KDE") != std::string_view::npos) spawn({"systemsettings", "kcm_access"});
}

struct WakeObserver {
  std::function<void()> handler;
};

void preparedForSleep(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*,
                      GVariant* arguments, gpointer observer) {
  if (!g_variant_is_of_type(arguments, G_VARIANT_TYPE("(b)"))) return;
  gboolean goingToSleep = TRUE;
  g_variant_get(arguments, "(b)", &goingToSleep);
  if (goingToSleep == FALSE) static_cast<WakeObserver*>(observer)->handler();
}

}  // namespace

LinuxWorkspace::LinuxWorkspace(std::function<std::optional<std::string>()> activeWindowClass)
    : activeWindowClass_(std::move(activeWindowClass)) {}

LinuxWorkspace::~LinuxWorkspace() {
  for (const guint observation : observations_) {
    g_dbus_connection_signal_unsubscribe(systemBus(), observation);
  }
}

std::optional<FrontApplication> LinuxWorkspace::frontmostApplication() {
  auto windowClass = activeWindowClass_();
  if (!windowClass) return std::nullopt;
  return FrontApplication{std::move(windowClass)};
}

UrlRef LinuxWorkspace::urlFromString(std::string_view text) {
  const std::string url(text);
  char* scheme = g_uri_parse_scheme(url.c_str());
  if (scheme == nullptr) return nullptr;
  auto parsed = std::make_shared<ParsedUrl>(url, scheme);
  g_free(scheme);
  return parsed;
}

void LinuxWorkspace::open(const UrlRef& url) {
  const auto* parsed = dynamic_cast<const ParsedUrl*>(url.get());
  if (parsed == nullptr) return;
  if (parsed->scheme == kMacSettingsScheme) {
    switchAccessibilityOn();
    showAccessibilitySettings();
  } else {
    g_app_info_launch_default_for_uri_async(parsed->text.c_str(), nullptr, nullptr, nullptr, nullptr);
  }
}

void LinuxWorkspace::observeDidWake(std::function<void()> handler) {
  GDBusConnection* bus = systemBus();
  if (bus == nullptr) return;
  observations_.push_back(g_dbus_connection_signal_subscribe(
      bus, "org.freedesktop.login1", "org.freedesktop.login1.Manager", "PrepareForSleep",
      "/org/freedesktop/login1", nullptr, G_DBUS_SIGNAL_FLAGS_NONE, &preparedForSleep,
      new WakeObserver{std::move(handler)},
      [](gpointer observer) { delete static_cast<WakeObserver*>(observer); }));
}

}  // namespace lexwend::platform
