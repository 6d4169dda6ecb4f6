// SPDX-License-Identifier: MIT
#include "tests/faults/wayland_owner.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <data-control.h>
#include <unistd.h>

namespace lexwend::platform {
namespace {

constexpr int kNoPiece = 1 << 20;

}  // namespace

WaylandOwner::WaylandOwner(CopyingApplication::Behaviour behaviour)
    : behaviour_(std::move(behaviour)), control_(DataControl::open()) {
  if (!control_) throw std::runtime_error("no compositor has data-control here");
  std::signal(SIGPIPE, SIG_IGN);
  control_->watch({});
  copyAgain();
}

WaylandOwner::~WaylandOwner() {
  for (zwlr_data_control_source_v1* source : sources_) zwlr_data_control_source_v1_destroy(source);
}

void WaylandOwner::copyAgain() {
  static constexpr zwlr_data_control_source_v1_listener kListener = {isAsked, isReplaced};
  zwlr_data_control_source_v1* source = zwlr_data_control_manager_v1_create_data_source(control_->manager());
  zwlr_data_control_source_v1_add_listener(source, &kListener, this);
  for (const auto& [name, value] : behaviour_.targets) {
    zwlr_data_control_source_v1_offer(source, name.c_str());
  }
  zwlr_data_control_device_v1_set_selection(control_->device(), source);
  sources_.insert(source);
  control_->connection().roundTrip();
}

void WaylandOwner::serve(std::chrono::milliseconds time) {
  const auto until = WaylandConnection::Clock::now() + time;
  while (control_->connection().waitForEvents(until)) {
  }
  if (!control_->connection().isConnected()) _exit(EXIT_SUCCESS);
}

void WaylandOwner::isReplaced(void* self, zwlr_data_control_source_v1* source) {
  static_cast<WaylandOwner*>(self)->sources_.erase(source);
  zwlr_data_control_source_v1_destroy(source);
}

void WaylandOwner::isAsked(void* self, zwlr_data_control_source_v1* /*source*/, const char* type,
                           int descriptor) {
  static_cast<WaylandOwner*>(self)->answer(type, descriptor);
}

void WaylandOwner::answer(const std::string& type, int descriptor) {
  std::this_thread::sleep_for(behaviour_.delay);
  if (behaviour_.deadlyTargets.contains(type)) _exit(EXIT_FAILURE);
  if (behaviour_.silentTargets.contains(type)) return;  // the descriptor stays open: no end is told
  const auto found = std::find_if(behaviour_.targets.begin(), behaviour_.targets.end(),
                                  [&](const auto& target) { return target.first == type; });
  if (found == behaviour_.targets.end() || behaviour_.refusedTargets.contains(type)) {
    close(descriptor);
  } else {
    write(found->second.bytes, descriptor);
  }
}

void WaylandOwner::write(const std::string& bytes, int descriptor) const {
  std::string_view rest = bytes;
  const bool isShort = rest.size() <= behaviour_.pieceSize;  // and goes in no pieces
  for (int piece = isShort ? kNoPiece : 0; !rest.empty(); ++piece) {
    if (piece == behaviour_.deadlyPiece) _exit(EXIT_FAILURE);
    if (piece == behaviour_.lastPiece) return;  // and open it stays
    const ssize_t written = ::write(descriptor, rest.data(), std::min(rest.size(), behaviour_.pieceSize));
    if (written < 0 && errno != EINTR) break;  // nobody wants it any more
    rest.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
  }
  close(descriptor);
}

}  // namespace lexwend::platform
