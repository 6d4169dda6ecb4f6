// SPDX-License-Identifier: MIT
#include "platform/linux/kwin/entry.h"

#include <string_view>

#include <gio/gdesktopappinfo.h>

#include "platform/linux/session/glib_ref.h"

namespace lexwend::platform {
namespace {

bool grants(GDesktopAppInfo* entry) {
  const GText interfaces(g_desktop_app_info_get_string(entry, "X-KDE-Wayland-Interfaces"));
  if (!interfaces) return false;
  const std::string_view list = interfaces.get();
  const bool asks = list.find("org_kde_kwin_fake_input") != std::string_view::npos &&
                    list.find("org_kde_plasma_window_management") != std::string_view::npos;
  // KWin compares the whole command with the program's path, quotes included.
  const char* command = g_app_info_get_commandline(G_APP_INFO(entry));
  return asks && command != nullptr && std::string_view(command).ends_with("/lexwend") &&
         g_file_test(command, G_FILE_TEST_IS_EXECUTABLE) != FALSE;
}

}  // namespace

bool anEntryGrantsKeys() {
  GList* const entries = g_app_info_get_all();
  bool any = false;
  for (const GList* entry = entries; entry != nullptr; entry = entry->next) {
    any = any || (G_IS_DESKTOP_APP_INFO(entry->data) && grants(G_DESKTOP_APP_INFO(entry->data)));
  }
  g_list_free_full(entries, g_object_unref);
  return any;
}

}  // namespace lexwend::platform
