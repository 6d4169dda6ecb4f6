// SPDX-License-Identifier: MIT
#include "tests/linux/contract/bells.h"

#include <cstdlib>

#include "platform/linux/display/xcb_xkb.h"
#include "tests/linux/testing/virtual_display.h"

namespace lexwend::contract {

Bells::Bells() {
  xcb_connection_t* c = x11_->get();
  std::free(xcb_xkb_use_extension_reply(c, xcb_xkb_use_extension(c, 1, 0), nullptr));
  constexpr std::uint16_t kBell = XCB_XKB_EVENT_TYPE_BELL_NOTIFY;
  xcb_xkb_select_events(c, XCB_XKB_ID_USE_CORE_KBD, kBell, 0, kBell, 0, 0, nullptr);
  platform::roundTrip(c);
  const std::uint8_t xkbEvent = xcb_get_extension_data(c, &xcb_xkb_id)->first_event;
  observation_ = x11_->observe([this, xkbEvent](const xcb_generic_event_t& event) {
    const bool isBell = platform::eventType(event) == xkbEvent && event.pad0 == XCB_XKB_BELL_NOTIFY;
    if (isBell) ++rung_;
  });
}

}  // namespace lexwend::contract
