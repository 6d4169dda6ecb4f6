// SPDX-License-Identifier: MIT
// A user's keyboard on a Wayland compositor: reads lines on its standard input, and answers each with "done"
// as soon as the compositor has handled it.
//   keymap us,il                    the layouts of the keyboard
//   key EVDEV_CODE 1|0              a key goes down or up
//   modifiers DEPRESSED LOCKED GROUP  the state that the keys make, as bits of the core protocol, and the
//   layout
#include <iostream>
#include <memory>
#include <sstream>
#include <string>

#include <sys/mman.h>
#include <unistd.h>
#include <virtual-keyboard.h>
#include <wayland-client.h>
#include <xkbcommon/xkbcommon.h>

#include "platform/linux/wayland/connection.h"

namespace {

/// Whether the machine has such layouts.
bool uploadKeymap(zwp_virtual_keyboard_v1* keyboard, const std::string& layouts) {
  // "us(dvorak),il" as a list of layouts and one of variants
  std::string names;
  std::string variants;
  std::istringstream list(layouts);
  for (std::string entry; std::getline(list, entry, ',');) {
    const std::size_t variant = entry.find('(');
    const char* separator = names.empty() ? "" : ",";
    names += separator + entry.substr(0, variant);
    variants += separator +
                (variant == std::string::npos ? "" : entry.substr(variant + 1, entry.size() - variant - 2));
  }
  xkb_context* context = xkb_context_new(XKB_CONTEXT_NO_FLAGS);
  const xkb_rule_names rules{"evdev", "pc105", names.c_str(), variants.c_str(), ""};
  xkb_keymap* keymap = xkb_keymap_new_from_names(context, &rules, XKB_KEYMAP_COMPILE_NO_FLAGS);
  xkb_context_unref(context);
  if (keymap == nullptr) return false;
  char* text = xkb_keymap_get_as_string(keymap, XKB_KEYMAP_FORMAT_TEXT_V1);
  xkb_keymap_unref(keymap);
  const std::string held = text;
  free(text);
  const int file = memfd_create("keymap", MFD_CLOEXEC);
  const bool written = write(file, held.c_str(), held.size() + 1) == static_cast<ssize_t>(held.size() + 1);
  zwp_virtual_keyboard_v1_keymap(keyboard, WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, file,
                                 static_cast<std::uint32_t>(held.size() + 1));
  close(file);
  return written;
}

}  // namespace

int main() {
  const auto connection = lexwend::platform::WaylandConnection::open();
  auto* manager = connection ? static_cast<zwp_virtual_keyboard_manager_v1*>(
                                   connection->bind(zwp_virtual_keyboard_manager_v1_interface, 1))
                             : nullptr;
  if (manager == nullptr) {
    std::cerr << "wayland_typist: no compositor takes keys here\n";
    return 1;
  }
  zwp_virtual_keyboard_v1* keyboard =
      zwp_virtual_keyboard_manager_v1_create_virtual_keyboard(manager, connection->seat());
  std::uint32_t time = 0;
  for (std::string line; std::getline(std::cin, line);) {
    std::istringstream words(line);
    std::string command;
    words >> command;
    if (command == "keymap") {
      std::string layouts;
      words >> layouts;
      if (!uploadKeymap(keyboard, layouts)) return 1;
    } else if (command == "key") {
      std::uint32_t code = 0;
      std::uint32_t state = 0;
      words >> code >> state;
      zwp_virtual_keyboard_v1_key(keyboard, ++time, code, state);
    } else if (command == "modifiers") {
      std::uint32_t depressed = 0;
      std::uint32_t locked = 0;
      std::uint32_t group = 0;
      words >> depressed >> locked >> group;
      zwp_virtual_keyboard_v1_modifiers(keyboard, depressed, 0, locked, group);
    }
    if (!connection->roundTrip()) return 1;
    std::cout << "done" << std::endl;
  }
  return 0;
}
