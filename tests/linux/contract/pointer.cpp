// SPDX-License-Identifier: MIT
#include "tests/linux/contract/pointer.h"

#include <xcb/xtest.h>

#include "platform/linux/display/x11_connection.h"
#include "tests/linux/testing/virtual_display.h"

namespace lexwend::contract {
namespace {

constexpr std::uint8_t kFirstButton = 1;

}  // namespace

void Pointer::moveTo(const QWidget& widget, QPoint place) {
  fake(XCB_MOTION_NOTIFY, 0, widget.mapToGlobal(place));
}

void Pointer::click() {
  fake(XCB_BUTTON_PRESS, kFirstButton);
  fake(XCB_BUTTON_RELEASE, kFirstButton);
}

void Pointer::closeBox(const QWidget& window) {
  xcb_client_message_event_t event{};
  event.response_type = XCB_CLIENT_MESSAGE;
  event.format = 32;
  event.window = static_cast<xcb_window_t>(window.winId());
  event.type = platform::internAtom(connection_, "WM_PROTOCOLS");
  event.data.data32[0] = platform::internAtom(connection_, "WM_DELETE_WINDOW");
  event.data.data32[1] = XCB_CURRENT_TIME;
  xcb_send_event(connection_, 0, event.window, XCB_EVENT_MASK_NO_EVENT,
                 reinterpret_cast<const char*>(&event));
  xcb_flush(connection_);
}

void Pointer::fake(std::uint8_t type, std::uint8_t detail, QPoint place) {
  xcb_test_fake_input(connection_, type, detail, 0, root_, static_cast<std::int16_t>(place.x()),
                      static_cast<std::int16_t>(place.y()), 0);
  platform::roundTrip(connection_);
}

}  // namespace lexwend::contract
