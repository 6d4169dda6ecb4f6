// SPDX-License-Identifier: MIT
#include "platform/linux/wayland/connection.h"

#include <algorithm>
#include <cstdlib>

#include <wayland-client.h>

namespace lexwend::platform {
namespace {

constexpr std::chrono::milliseconds kAnswerTime{1000};
constexpr std::chrono::milliseconds kAnswerTimeWhileSilent{100};
constexpr int kForEver = -1;

void noteAnswer(void* answered, wl_callback* /*callback*/, std::uint32_t /*serial*/) {
  *static_cast<bool*>(answered) = true;
}
constexpr wl_callback_listener kAnswerListener = {noteAnswer};

}  // namespace

std::unique_ptr<WaylandConnection> WaylandConnection::open() {
  // The library would try a name of its own, and meet the compositor of another session.
  const char* name = std::getenv("WAYLAND_DISPLAY");
  if (name == nullptr || *name == '\0') return nullptr;
  wl_display* display = wl_display_connect(name);
  if (display == nullptr) return nullptr;
  std::unique_ptr<WaylandConnection> connection(new WaylandConnection(display));
  if (!connection->roundTrip()) return nullptr;
  connection->seat_ = static_cast<wl_seat*>(connection->bind(wl_seat_interface, 1));
  return connection->seat_ != nullptr ? std::move(connection) : nullptr;
}

WaylandConnection::WaylandConnection(wl_display* display) : display_(display) {
  static constexpr wl_registry_listener kListener = {globalAppears, globalGoes};
  registry_ = wl_display_get_registry(display_);
  wl_registry_add_listener(registry_, &kListener, this);
}

WaylandConnection::~WaylandConnection() {
  if (seat_ != nullptr) wl_seat_destroy(seat_);
  wl_registry_destroy(registry_);
  wl_display_disconnect(display_);
}

void WaylandConnection::globalAppears(void* self, wl_registry* /*registry*/, std::uint32_t name,
                                      const char* interface, std::uint32_t version) {
  static_cast<WaylandConnection*>(self)->globals_.insert({interface, {name, version}});  // the first of them
}

void WaylandConnection::globalGoes(void* self, wl_registry* /*registry*/, std::uint32_t name) {
  auto& globals = static_cast<WaylandConnection*>(self)->globals_;
  std::erase_if(globals, [name](const auto& global) { return global.second.name == name; });
}

std::optional<std::uint32_t> WaylandConnection::versionOf(const std::string& interface) const {
  const auto found = globals_.find(interface);
  return found == globals_.end() ? std::nullopt : std::optional(found->second.version);
}

void* WaylandConnection::bind(const wl_interface& interface, std::uint32_t version) {
  const auto found = globals_.find(interface.name);
  if (found == globals_.end()) return nullptr;
  return wl_registry_bind(registry_, found->second.name, &interface,
                          std::min(version, found->second.version));
}

bool WaylandConnection::isConnected() const {
  return !isLost_ && wl_display_get_error(display_) == 0;
}

int WaylandConnection::descriptor() const {
  return wl_display_get_fd(display_);
}

void WaylandConnection::flush() {
  if (isConnected()) wl_display_flush(display_);
}

bool WaylandConnection::handleEvents() {
  return waitForEvents(Clock::time_point::min());
}

void WaylandConnection::wait(std::vector<pollfd>& others, std::optional<Clock::time_point> until) {
  const bool reads = isConnected();
  if (reads && wl_display_prepare_read(display_) != 0) return;  // there are some to be handled
  flush();
  int timeout = kForEver;
  if (until) {
    const auto left = *until > Clock::now()
                          ? std::chrono::ceil<std::chrono::milliseconds>(*until - Clock::now())
                          : std::chrono::milliseconds(0);
    timeout = static_cast<int>(left.count());
  }
  // A lost connection stays readable for ever; a negative descriptor is passed over.
  others.push_back({reads ? wl_display_get_fd(display_) : -1, POLLIN, 0});
  poll(others.data(), others.size(), timeout);
  const bool came = others.back().revents != 0;
  others.pop_back();
  if (reads && came) wl_display_read_events(display_);
  if (reads && !came) wl_display_cancel_read(display_);
}

bool WaylandConnection::waitForEvents(Clock::time_point until) {
  if (!isConnected()) return false;
  std::vector<pollfd> nothingElse;
  wait(nothingElse, until);
  return wl_display_dispatch_pending(display_) > 0;
}

bool WaylandConnection::roundTrip() {
  if (!isConnected()) return false;
  bool answered = false;
  wl_callback* callback = wl_display_sync(display_);
  wl_callback_add_listener(callback, &kAnswerListener, &answered);
  const Clock::time_point end = Clock::now() + (isSilent_ ? kAnswerTimeWhileSilent : kAnswerTime);
  while (!answered && isConnected() && Clock::now() < end) waitForEvents(end);
  wl_callback_destroy(callback);
  isSilent_ = !answered;
  return answered;
}

}  // namespace lexwend::platform
