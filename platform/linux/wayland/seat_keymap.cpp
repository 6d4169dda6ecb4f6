// SPDX-License-Identifier: MIT
#include "platform/linux/wayland/seat_keymap.h"

#include <utility>

#include <sys/mman.h>
#include <unistd.h>
#include <wayland-client.h>
#include <xkbcommon/xkbcommon.h>

namespace lexwend::platform {

SeatKeymap::SeatKeymap(WaylandConnection& connection, std::function<void()> changed)
    : changed_(std::move(changed)),
      context_(xkb_context_new(XKB_CONTEXT_NO_FLAGS), xkb_context_unref),
      seat_(static_cast<wl_seat*>(connection.bind(wl_seat_interface, 1))) {
  static constexpr wl_seat_listener kListener = {capabilitiesChange, [](void*, wl_seat*, const char*) {}};
  if (seat_ != nullptr) wl_seat_add_listener(seat_, &kListener, this);
}

SeatKeymap::~SeatKeymap() {
  if (keyboard_ != nullptr) wl_keyboard_destroy(keyboard_);
  if (seat_ != nullptr) wl_seat_destroy(seat_);
}

void SeatKeymap::capabilitiesChange(void* self, wl_seat* seat, std::uint32_t capabilities) {
  auto& keymap = *static_cast<SeatKeymap*>(self);
  const bool hasKeyboard = (capabilities & WL_SEAT_CAPABILITY_KEYBOARD) != 0;
  if (hasKeyboard == (keymap.keyboard_ != nullptr)) return;
  if (!hasKeyboard) {
    wl_keyboard_destroy(std::exchange(keymap.keyboard_, nullptr));  // it stays silent when one comes again
    return;
  }
  // This program's window is never in front on this connection: of the keyboard only the keymap comes.
  static constexpr wl_keyboard_listener kListener = {
      .keymap = keymapComes,
      .enter = [](void*, wl_keyboard*, std::uint32_t, wl_surface*, wl_array*) {},
      .leave = [](void*, wl_keyboard*, std::uint32_t, wl_surface*) {},
      .key = [](void*, wl_keyboard*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t) {},
      .modifiers = [](void*, wl_keyboard*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                      std::uint32_t) {},
      .repeat_info = [](void*, wl_keyboard*, std::int32_t, std::int32_t) {}};
  keymap.keyboard_ = wl_seat_get_keyboard(seat);
  wl_keyboard_add_listener(keymap.keyboard_, &kListener, &keymap);
}

void SeatKeymap::keymapComes(void* self, wl_keyboard* /*keyboard*/, std::uint32_t format, std::int32_t file,
                             std::uint32_t size) {
  if (format == WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1) static_cast<SeatKeymap*>(self)->read(file, size);
  close(file);
}

void SeatKeymap::read(std::int32_t file, std::uint32_t size) {
  void* text = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file, 0);
  if (text == MAP_FAILED || !context_) return;
  std::shared_ptr<xkb_keymap> keymap(
      xkb_keymap_new_from_buffer(context_.get(), static_cast<const char*>(text), size - 1,
                                 XKB_KEYMAP_FORMAT_TEXT_V1, XKB_KEYMAP_COMPILE_NO_FLAGS),
      xkb_keymap_unref);
  munmap(text, size);
  if (!keymap) return;
  keymap_ = std::move(keymap);
  if (changed_) changed_();
}

}  // namespace lexwend::platform
