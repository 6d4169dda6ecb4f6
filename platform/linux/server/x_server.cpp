// SPDX-License-Identifier: MIT
#include "platform/linux/server/x_server.h"

#include <utility>

#include "platform/linux/keyboard/hot_key_service.h"
#include "platform/linux/keyboard/input_sources.h"
#include "platform/linux/keyboard/key_events.h"
#include "platform/linux/session/buses.h"

namespace lexwend::platform {

XServer::XServer(std::function<void(KeyCode, EventFlags)> play)
    : play_(std::move(play)), x11_(X11Connection::open()) {}

std::unique_ptr<InputSourceService> XServer::makeInputSources() {
  return std::make_unique<LinuxInputSources>(x11_, sessionBus, play_);
}

std::unique_ptr<HotKeyKeeper> XServer::makeHotKeyService() {
  return std::make_unique<LinuxHotKeyService>(x11_);
}

std::unique_ptr<ShortcutKeyEvents> XServer::makeKeyEvents(std::function<bool()> mayCopy,
                                                          std::function<bool()> mayPaste) {
  return std::make_unique<LinuxKeyEvents>(x11_, std::move(mayCopy), std::move(mayPaste));
}

Selections XServer::selections() {
  return selectionsOfX();
}

bool XServer::mayControl() {
  return x11_ && x11_->hasXTest() && x11_->hasXFixes() && x11_->hasXkb();
}

std::optional<std::uint32_t> XServer::frontProcess() {
  return x11_ ? x11_->activeWindowProcess() : std::nullopt;
}

std::optional<std::string> XServer::frontWindowClass() {
  return x11_ ? x11_->activeWindowClass() : std::nullopt;
}

}  // namespace lexwend::platform
