// SPDX-License-Identifier: MIT
#include "platform/linux/wayland/virtual_keyboard.h"

#include <cstdlib>
#include <string>

#include <sys/mman.h>
#include <unistd.h>
#include <virtual-keyboard.h>
#include <wayland-client.h>
#include <xkbcommon/xkbcommon.h>

namespace lexwend::platform {
namespace {

/// A US keymap as text, with the layout's name replaced; empty when the machine has no keymaps.
std::string keymapText() {
  const std::unique_ptr<xkb_context, decltype(&xkb_context_unref)> context(
      xkb_context_new(XKB_CONTEXT_NO_FLAGS), xkb_context_unref);
  const xkb_rule_names names{"evdev", "pc105", "us", "", ""};
  const std::unique_ptr<xkb_keymap, decltype(&xkb_keymap_unref)> keymap(
      xkb_keymap_new_from_names(context.get(), &names, XKB_KEYMAP_COMPILE_NO_FLAGS), xkb_keymap_unref);
  if (!keymap) return {};
  const std::unique_ptr<char, decltype(&std::free)> text(
      xkb_keymap_get_as_string(keymap.get(), XKB_KEYMAP_FORMAT_TEXT_V1), std::free);
  std::string replaced = text ? text.get() : "";
  const std::string name = '"' + std::string(xkb_keymap_layout_get_name(keymap.get(), 0)) + '"';
  const std::size_t place = replaced.find(name);
  if (place != std::string::npos) {
    replaced.replace(place, name.size(), '"' + std::string(VirtualKeyboard::kLayoutName) + '"');
  }
  return replaced;
}

/// Milliseconds of the clock that compositors use, as they wrap around.
std::uint32_t now() {
  return static_cast<std::uint32_t>(std::chrono::duration_cast<std::chrono::milliseconds>(
                                        std::chrono::steady_clock::now().time_since_epoch())
                                        .count());
}

}  // namespace

bool VirtualKeyboard::isOffered(const WaylandConnection& connection) {
  return connection.versionOf(zwp_virtual_keyboard_manager_v1_interface.name).has_value();
}

VirtualKeyboard::~VirtualKeyboard() {
  disconnect();
}

bool VirtualKeyboard::connect() {
  if (connection_) return true;
  auto connection = WaylandConnection::open();
  void* manager = connection ? connection->bind(zwp_virtual_keyboard_manager_v1_interface, 1) : nullptr;
  if (manager == nullptr) return false;
  connection_ = std::move(connection);
  manager_ = static_cast<zwp_virtual_keyboard_manager_v1*>(manager);
  return true;
}

/// The compositor lets go of the keys of a connection that has closed. What it has not yet read of it, it
/// drops.
void VirtualKeyboard::disconnect() {
  if (!connection_) return;
  if (keyboard_ != nullptr) zwp_virtual_keyboard_v1_destroy(keyboard_);
  zwp_virtual_keyboard_manager_v1_destroy(manager_);
  keyboard_ = nullptr;
  manager_ = nullptr;
  modifiers_ = 0;
  connection_.reset();
}

bool VirtualKeyboard::create() {
  if (keyboard_ != nullptr) return true;
  if (!connect()) return false;
  const std::string keymap = keymapText();
  if (keymap.empty()) return false;
  const auto size = keymap.size() + 1;  // with the NUL
  const int file = memfd_create("keymap", MFD_CLOEXEC);
  if (file < 0) return false;
  bool isReady = false;
  if (write(file, keymap.c_str(), size) == static_cast<ssize_t>(size)) {
    keyboard_ = zwp_virtual_keyboard_manager_v1_create_virtual_keyboard(manager_, connection_->seat());
    zwp_virtual_keyboard_v1_keymap(keyboard_, WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, file,
                                   static_cast<std::uint32_t>(size));
    isReady = settle();  // before the file is closed, and before its first key
  }
  close(file);
  return isReady;
}

bool VirtualKeyboard::play(std::uint16_t evdevKey, bool down, std::uint32_t modifiersAfter) {
  if (!create()) return false;
  zwp_virtual_keyboard_v1_key(keyboard_, now(), evdevKey,
                              down ? WL_KEYBOARD_KEY_STATE_PRESSED : WL_KEYBOARD_KEY_STATE_RELEASED);
  if (modifiersAfter != modifiers_) {
    modifiers_ = modifiersAfter;
    zwp_virtual_keyboard_v1_modifiers(keyboard_, modifiers_, 0, 0, 0);
  }
  return true;
}

bool VirtualKeyboard::settle() {
  const bool isTaken = connection_ && connection_->roundTrip();
  if (!isTaken) disconnect();
  return isTaken;
}

}  // namespace lexwend::platform
