// SPDX-License-Identifier: MIT
#include <string>
#include <utility>

#include <unistd.h>

#include "platform/linux/server/compositor.h"
#include "platform/linux/sway/front_window.h"
#include "platform/linux/sway/hot_key_service.h"
#include "platform/linux/sway/input_sources.h"
#include "platform/linux/sway/ipc.h"
#include "platform/linux/wayland/virtual_keyboard.h"

namespace lexwend::platform {
namespace {

class SwayServer : public Compositor {
 public:
  SwayServer(std::shared_ptr<SwayIpc> sway, std::function<bool()> anotherIsTheAgent)
      : sway_(std::move(sway)), anotherIsTheAgent_(std::move(anotherIsTheAgent)) {}

  std::unique_ptr<InputSourceService> makeInputSources() override {
    return std::make_unique<SwayInputSources>(sway_, VirtualKeyboard::kLayoutName);
  }
  std::unique_ptr<HotKeyKeeper> makeHotKeyService() override {
    return std::make_unique<SwayHotKeyService>(sway_, anotherIsTheAgent_);
  }
  void focusOwnWindow() override { sway_->run("[pid=" + std::to_string(getpid()) + "] focus"); }

 private:
  std::optional<FrontWindow> frontWindow() override { return frontWindowOf(*sway_); }
  std::unique_ptr<KeyPlayer> makeKeyPlayer() override { return std::make_unique<VirtualKeyboard>(); }
  std::optional<FocusKey> focusKey(std::int64_t window) override { return focusKeyOf(sway_, window); }

  std::shared_ptr<SwayIpc> sway_;
  std::function<bool()> anotherIsTheAgent_;
};

}  // namespace

std::unique_ptr<DisplayServer> openSwayServer(const DisplayServer::Needs& needs) {
  auto sway = SwayIpc::open();
  const auto connection = sway ? WaylandConnection::open() : nullptr;
  if (!connection || !offersClipboardAndKeys(*connection)) return nullptr;
  return std::make_unique<SwayServer>(std::move(sway), needs.anotherIsTheAgent);
}

}  // namespace lexwend::platform
