// SPDX-License-Identifier: MIT
#include <string_view>
#include <utility>

#include <xkbcommon/xkbcommon.h>

#include "platform/linux/server/compositor.h"
#include "platform/linux/wayland/connection_watch.h"
#include "platform/linux/wayland/keymap_input_sources.h"
#include "platform/linux/wayland/seat_keymap.h"
#include "platform/linux/wayland/virtual_keyboard.h"

namespace lexwend::platform {
namespace {

/// Takes no key: the user binds one to `lexwend --fix`.
class NoHotKeys : public HotKeyKeeper {
 public:
  NoHotKeys() = default;
  ~NoHotKeys() override { stop(); }
  std::string_view whyNoPressComes() override { return kNoHotKey.what.hebrew; }

 private:
  OSStatus take(const HotKey& /*hotKey*/) override { return kNoErr; }
  void giveBack(const HotKey& /*hotKey*/) override {}
  void markEndOfPause() override {}
};

/// The keymap of the user's keyboard, as the compositor sends it. It also sends that of whichever keyboard
/// was used last, and so the one of the keys that this program presses.
class UserKeymap {
 public:
  explicit UserKeymap(std::unique_ptr<WaylandConnection> connection)
      : connection_(std::move(connection)),
        watch_(*connection_),
        sent_(*connection_, [this] { noteSent(); }) {
    connection_->roundTrip();  // that there is a keyboard
    connection_->roundTrip();  // its keymap
  }

  std::shared_ptr<xkb_keymap> current() {
    connection_->roundTrip();
    return keymap_;
  }
  [[nodiscard]] Registration observe(std::function<void()> handler) {
    return handlers_.add(std::move(handler));
  }

 private:
  void noteSent() {
    const char* name = xkb_keymap_layout_get_name(sent_.keymap().get(), 0);
    if (name != nullptr && std::string_view(name) == VirtualKeyboard::kLayoutName) return;
    keymap_ = sent_.keymap();
    for (const auto& handler : handlers_.all()) (*handler)();
  }

  std::unique_ptr<WaylandConnection> connection_;
  std::shared_ptr<xkb_keymap> keymap_;
  Handlers<std::function<void()>> handlers_;
  ConnectionWatch watch_;
  SeatKeymap sent_;
};

class UserInputSources : public KeymapInputSources {
 public:
  explicit UserInputSources(const std::shared_ptr<UserKeymap>& keymap)
      : KeymapInputSources([keymap] { return keymap->current(); }),
        observation_(keymap->observe([this] { reportChange(); })) {}

 private:
  Registration observation_;
};

/// A compositor of which nothing is known except the protocols of wlroots.
class OtherCompositor : public Compositor {
 public:
  OtherCompositor(const Needs& needs, std::unique_ptr<WaylandConnection> connection)
      : activeProcess_(needs.activeProcess), keymap_(std::make_shared<UserKeymap>(std::move(connection))) {}

  std::unique_ptr<InputSourceService> makeInputSources() override {
    return std::make_unique<UserInputSources>(keymap_);
  }
  std::unique_ptr<HotKeyKeeper> makeHotKeyService() override { return std::make_unique<NoHotKeys>(); }
  bool tellsFront() override { return false; }

 private:
  std::optional<FrontWindow> frontWindow() override { return windowOf(activeProcess_()); }
  std::unique_ptr<KeyPlayer> makeKeyPlayer() override { return std::make_unique<VirtualKeyboard>(); }
  bool refusesUnknownWindows() const override { return true; }

  std::function<std::optional<std::uint32_t>()> activeProcess_;
  std::shared_ptr<UserKeymap> keymap_;
};

}  // namespace

std::unique_ptr<DisplayServer> openOtherCompositor(const DisplayServer::Needs& needs) {
  auto connection = WaylandConnection::open();
  if (!connection || !offersClipboardAndKeys(*connection)) return nullptr;
  return std::make_unique<OtherCompositor>(needs, std::move(connection));
}

}  // namespace lexwend::platform
