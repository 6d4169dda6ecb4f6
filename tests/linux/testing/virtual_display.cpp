// SPDX-License-Identifier: MIT
#include "tests/linux/testing/virtual_display.h"

#include <cstdlib>
#include <stdexcept>

#include <glib.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xinput.h>
#include <xcb/xtest.h>

#include "platform/linux/display/x11_connection.h"
#include "platform/linux/display/xcb_xkb.h"

namespace lexwend::platform {
namespace {

constexpr int kXKeyOffset = 8;

xcb_connection_t* connectOrThrow(xcb_window_t& root) {
  int screenNumber = 0;
  xcb_connection_t* connection = xcb_connect(nullptr, &screenNumber);
  if (xcb_connection_has_error(connection) != 0) throw std::runtime_error("no X server");
  root = screenOf(connection, screenNumber)->root;
  return connection;
}

}  // namespace

void roundTrip(xcb_connection_t* connection) {
  std::free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
}

VirtualDisplay::VirtualDisplay() {
  int numberPipe[2];
  if (pipe(numberPipe) != 0) throw std::runtime_error("no pipe");
  const std::string descriptor = std::to_string(numberPipe[1]);
  server_ = fork();
  if (server_ == 0) {
    close(numberPipe[0]);
    execlp("Xvfb", "Xvfb", "-displayfd", descriptor.c_str(), "-screen", "0", "640x480x24", "-nolisten", "tcp",
           "-noreset", static_cast<char*>(nullptr));
    _exit(127);
  }
  close(numberPipe[1]);
  std::string number;
  char c = 0;
  while (read(numberPipe[0], &c, 1) == 1 && c != '\n') number.push_back(c);
  close(numberPipe[0]);
  if (number.empty()) throw std::runtime_error("Xvfb did not start");
  setenv("DISPLAY", (":" + number).c_str(), 1);
}

VirtualDisplay::~VirtualDisplay() {
  unsetenv("DISPLAY");
  // The server heeds a signal only before it waits for events. One that comes right after that look is heard
  // with the next event, and that is the next signal: nobody is connected any more.
  do {
    kill(server_, SIGTERM);
    usleep(10000);
  } while (waitpid(server_, nullptr, WNOHANG) == 0);
}

void VirtualDisplay::setLayouts(const std::string& layouts, const std::string& variants) {
  ASSERT_EQ(
      runProgram("setxkbmap -rules evdev -model pc105 -layout '" + layouts + "' -variant '" + variants + "'"),
      0);
}

int runProgram(const std::string& commandLine) {
  const int status = std::system(commandLine.c_str());
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

bool pumpUntil(const std::function<bool()>& condition, std::chrono::milliseconds time) {
  const auto deadline = std::chrono::steady_clock::now() + time;
  while (!condition()) {
    if (std::chrono::steady_clock::now() >= deadline) return false;
    if (g_main_context_iteration(nullptr, FALSE) == FALSE) usleep(1000);
  }
  return true;
}

Typist::Typist() : connection_(connectOrThrow(root_)) {
  std::free(xcb_xkb_use_extension_reply(connection_, xcb_xkb_use_extension(connection_, 1, 0), nullptr));
}

Typist::~Typist() {
  xcb_disconnect(connection_);
}

void Typist::press(int evdevKey) {
  fake(XCB_KEY_PRESS, evdevKey);
}

void Typist::release(int evdevKey) {
  fake(XCB_KEY_RELEASE, evdevKey);
}

void Typist::tap(int evdevKey) {
  press(evdevKey);
  release(evdevKey);
}

void Typist::pressPhysically(int evdevKey) {
  const std::uint8_t first = xcb_get_extension_data(connection_, &xcb_input_id)->first_event;
  fake(static_cast<std::uint8_t>(first + XCB_INPUT_DEVICE_KEY_PRESS), evdevKey, keyboard(false));
}

void Typist::releasePhysically(int evdevKey) {
  const std::uint8_t first = xcb_get_extension_data(connection_, &xcb_input_id)->first_event;
  fake(static_cast<std::uint8_t>(first + XCB_INPUT_DEVICE_KEY_RELEASE), evdevKey, keyboard(false));
}

void Typist::tapPhysically(int evdevKey) {
  pressPhysically(evdevKey);
  releasePhysically(evdevKey);
}

void Typist::setKeyboardsApart(const std::string& simulated, const std::string& own) {
  // setxkbmap notes the layouts that it set last for the whole server: the user's come last.
  for (const auto& [device, layouts] : {std::pair{keyboard(true), simulated}, {keyboard(false), own}}) {
    ASSERT_EQ(runProgram("setxkbmap -device " + std::to_string(device) +
                         " -rules evdev -model pc105 -layout '" + layouts + "'"),
              0);
  }
}

std::uint8_t Typist::keyboard(bool simulated) {
  std::free(
      xcb_input_xi_query_version_reply(connection_, xcb_input_xi_query_version(connection_, 2, 2), nullptr));
  const XcbReply<xcb_input_xi_query_device_reply_t> devices(xcb_input_xi_query_device_reply(
      connection_, xcb_input_xi_query_device(connection_, XCB_INPUT_DEVICE_ALL), nullptr));
  for (auto it = xcb_input_xi_query_device_infos_iterator(devices.get()); it.rem > 0;
       xcb_input_xi_device_info_next(&it)) {
    const std::string name(xcb_input_xi_device_info_name(it.data),
                           static_cast<std::size_t>(xcb_input_xi_device_info_name_length(it.data)));
    if (it.data->type == XCB_INPUT_DEVICE_TYPE_SLAVE_KEYBOARD &&
        (name.find("XTEST") != std::string::npos) == simulated) {
      return static_cast<std::uint8_t>(it.data->deviceid);
    }
  }
  throw std::runtime_error("the server lacks a keyboard");
}

void Typist::lockModifiers(std::uint8_t mask) {
  xcb_xkb_latch_lock_state(connection_, XCB_XKB_ID_USE_CORE_KBD, 0xFF, mask, 0, 0, 0, 0, 0);
  sync();
}

std::uint8_t Typist::lockedModifiers() {
  const XcbReply<xcb_xkb_get_state_reply_t> state(
      xcb_xkb_get_state_reply(connection_, xcb_xkb_get_state(connection_, XCB_XKB_ID_USE_CORE_KBD), nullptr));
  return state ? state->lockedMods : std::uint8_t{0xFF};
}

void Typist::lockGroup(std::uint8_t group) {
  xcb_xkb_latch_lock_state(connection_, XCB_XKB_ID_USE_CORE_KBD, 0, 0, 1, group, 0, 0, 0);
  sync();
}

int Typist::group() {
  const XcbReply<xcb_xkb_get_state_reply_t> state(
      xcb_xkb_get_state_reply(connection_, xcb_xkb_get_state(connection_, XCB_XKB_ID_USE_CORE_KBD), nullptr));
  return state ? state->group : -1;
}

bool Typist::isDown(int evdevKey) {
  const XcbReply<xcb_query_keymap_reply_t> keymap(
      xcb_query_keymap_reply(connection_, xcb_query_keymap(connection_), nullptr));
  const int key = evdevKey + kXKeyOffset;
  return keymap && (keymap->keys[key / 8] & (1 << (key % 8))) != 0;
}

void Typist::fake(std::uint8_t type, int evdevKey, std::uint8_t device) {
  xcb_test_fake_input(connection_, type, static_cast<std::uint8_t>(evdevKey + kXKeyOffset), 0,
                      XCB_WINDOW_NONE, 0, 0, device);
  sync();
}

void Typist::sync() {
  roundTrip(connection_);
}

PressCounter::PressCounter(int evdevKey) : key_(static_cast<std::uint32_t>(evdevKey + kXKeyOffset)) {
  xcb_window_t root = XCB_WINDOW_NONE;
  connection_ = connectOrThrow(root);
  std::free(
      xcb_input_xi_query_version_reply(connection_, xcb_input_xi_query_version(connection_, 2, 2), nullptr));
  struct {
    xcb_input_event_mask_t head;
    std::uint32_t mask;
  } selection{{XCB_INPUT_DEVICE_ALL, 1}, XCB_INPUT_XI_EVENT_MASK_KEY_PRESS};
  xcb_input_xi_select_events(connection_, root, 1, &selection.head);
  roundTrip(connection_);
}

PressCounter::~PressCounter() {
  xcb_disconnect(connection_);
}

int PressCounter::presses() {
  roundTrip(connection_);
  while (const XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(connection_)}) {
    if (eventType(*event) == XCB_GE_GENERIC &&
        reinterpret_cast<const xcb_input_key_press_event_t&>(*event).detail == key_) {
      ++presses_;
    }
  }
  return presses_;
}

bool PressCounter::reaches(int presses) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (this->presses() < presses) {
    if (std::chrono::steady_clock::now() >= deadline) return false;
    usleep(1000);
  }
  return true;
}

FocusedWindow::FocusedWindow(const std::string& windowClass) {
  xcb_window_t root = XCB_WINDOW_NONE;
  connection_ = connectOrThrow(root);
  window_ = xcb_generate_id(connection_);
  const std::uint32_t values[] = {
      1, XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE | XCB_EVENT_MASK_STRUCTURE_NOTIFY};
  xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window_, root, 0, 0, 100, 100, 0,
                    XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                    XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values);
  if (!windowClass.empty()) {
    const std::string value = std::string("instance") + '\0' + windowClass + '\0';
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window_, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8,
                        static_cast<std::uint32_t>(value.size()), value.data());
  }
  xcb_map_window(connection_, window_);
  roundTrip(connection_);
  focus();
}

void FocusedWindow::focus() {
  xcb_set_input_focus(connection_, XCB_INPUT_FOCUS_PARENT, window_, XCB_CURRENT_TIME);
  roundTrip(connection_);
}

FocusedWindow::~FocusedWindow() {
  xcb_disconnect(connection_);
}

std::string FocusedWindow::keys() {
  roundTrip(connection_);
  while (const XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(connection_)}) {
    const std::uint8_t type = eventType(*event);
    if (type == XCB_KEY_PRESS || type == XCB_KEY_RELEASE) {
      const auto& key = reinterpret_cast<const xcb_key_press_event_t&>(*event);
      keys_ += (keys_.empty() ? "" : " ") + std::string(type == XCB_KEY_PRESS ? "+" : "-") +
               std::to_string(key.detail);
    }
  }
  return keys_;
}

}  // namespace lexwend::platform
