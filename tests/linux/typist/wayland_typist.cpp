// SPDX-License-Identifier: MIT
#include "tests/linux/typist/wayland_typist.h"

#include <cstdlib>
#include <sstream>
#include <stdexcept>

#include <sys/mman.h>
#include <unistd.h>
#include <virtual-keyboard.h>
#include <wayland-client.h>
#include <xkbcommon/xkbcommon.h>

namespace lexwend::platform {
namespace {

std::string keymapOf(const std::string& layouts) {
  std::string names;
  std::string variants;
  std::istringstream list(layouts);
  for (std::string entry; std::getline(list, entry, ',');) {
    const std::size_t variant = entry.find('(');
    const char* separator = names.empty() ? "" : ",";
    names += separator + entry.substr(0, variant);
    variants += separator;
    if (variant != std::string::npos) variants += entry.substr(variant + 1, entry.size() - variant - 2);
  }
  xkb_context* context = xkb_context_new(XKB_CONTEXT_NO_FLAGS);
  const xkb_rule_names rules{"evdev", "pc105", names.c_str(), variants.c_str(), ""};
  xkb_keymap* keymap = xkb_keymap_new_from_names(context, &rules, XKB_KEYMAP_COMPILE_NO_FLAGS);
  xkb_context_unref(context);
  if (keymap == nullptr) throw std::runtime_error("no such layouts: " + layouts);
  char* text = xkb_keymap_get_as_string(keymap, XKB_KEYMAP_FORMAT_TEXT_V1);
  xkb_keymap_unref(keymap);
  std::string held = text;
  std::free(text);
  return held;
}

}  // namespace

WaylandTypist::WaylandTypist() : connection_(WaylandConnection::open()) {
  void* manager = connection_ ? connection_->bind(zwp_virtual_keyboard_manager_v1_interface, 1) : nullptr;
  if (manager == nullptr) throw std::runtime_error("no compositor takes keys here");
  keyboard_ = zwp_virtual_keyboard_manager_v1_create_virtual_keyboard(
      static_cast<zwp_virtual_keyboard_manager_v1*>(manager), connection_->seat());
  zwp_virtual_keyboard_manager_v1_destroy(static_cast<zwp_virtual_keyboard_manager_v1*>(manager));
}

WaylandTypist::~WaylandTypist() {
  zwp_virtual_keyboard_v1_destroy(keyboard_);
}

void WaylandTypist::sync() {
  if (!connection_->roundTrip()) throw std::runtime_error("the compositor has gone");
}

void WaylandTypist::setLayouts(const std::string& layouts) {
  const std::string keymap = keymapOf(layouts);
  const std::size_t size = keymap.size() + 1;
  const int file = memfd_create("keymap", MFD_CLOEXEC);
  if (write(file, keymap.c_str(), size) != static_cast<ssize_t>(size)) throw std::runtime_error("no memory");
  zwp_virtual_keyboard_v1_keymap(keyboard_, WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, file,
                                 static_cast<std::uint32_t>(size));
  sync();
  close(file);
}

void WaylandTypist::key(std::uint32_t evdevKey, bool down) {
  zwp_virtual_keyboard_v1_key(keyboard_, ++time_, evdevKey, down ? 1 : 0);
  sync();
}

void WaylandTypist::modifiers(std::uint32_t depressed, std::uint32_t locked, std::uint32_t group) {
  zwp_virtual_keyboard_v1_modifiers(keyboard_, depressed, 0, locked, group);
  sync();
}

}  // namespace lexwend::platform
