// SPDX-License-Identifier: MIT
#include "platform/linux/kwin/entry.h"

#include <string_view>

#include <gio/gdesktopappinfo.h>

#include "platform/linux/session/glib_ref.h"
#include "platform/linux/session/identity.h"
#include "platform/linux/session/user_folders.h"

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

constexpr const char* kInterfaces = "org_kde_kwin_fake_input,org_kde_plasma_window_management";

}  // namespace

bool entryCanName(std::string_view program) {
  constexpr std::string_view kPlain = "/._-+0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
  return program.starts_with('/') && program.find_first_not_of(kPlain) == std::string_view::npos;
}

bool writeEntryThatGrantsKeys(const std::string& program) {
  if (!entryCanName(program)) return false;
  const std::string name(kIdentifier);
  const std::string entry = "[Desktop Entry]\nType=Application\nName=" + std::string(kDisplayName) +
                            "\nExec=" + program + "\nIcon=" + name +
                            "\nTerminal=false\nCategories=Utility;\nX-KDE-Wayland-Interfaces=" + kInterfaces +
                            "\n";
  return user_folders::replaceFile(std::string(g_get_user_data_dir()) + "/applications/" + name + ".desktop",
                                   entry);
}

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
