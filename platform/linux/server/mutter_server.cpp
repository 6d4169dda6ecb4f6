// SPDX-License-Identifier: MIT
#include <utility>

#include "platform/linux/gnome/hot_key_service.h"
#include "platform/linux/gnome/input_sources.h"
#include "platform/linux/gnome/key_player.h"
#include "platform/linux/gnome/remote_desktop.h"
#include "platform/linux/gnome/selections.h"
#include "platform/linux/gnome/shell.h"
#include "platform/linux/keeper/keeper.h"
#include "platform/linux/selection/selections.h"
#include "platform/linux/server/compositor.h"
#include "platform/linux/session/login_item.h"
#include "platform/linux/wayland/connection.h"

namespace lexwend::platform {
namespace {

/// GNOME Shell's compositor, with this program's extension or without it.
class MutterServer : public Compositor {
 public:
  explicit MutterServer(const Needs& needs)
      : needs_(needs), shell_(std::make_shared<GnomeShell>(needs.thisIsTheAgent())) {}

  std::unique_ptr<InputSourceService> makeInputSources() override {
    return std::make_unique<GnomeInputSources>(shell_, needs_.play);
  }
  std::unique_ptr<HotKeyKeeper> makeHotKeyService() override {
    return std::make_unique<GnomeHotKeyService>(shell_, GnomeKeyBinding(LinuxLoginItem::ownProgram()));
  }
  Selections selections() override {
    return selectionsOfMutter(remote_, selectionsOfX(), [](xcb_timestamp_t xTime) {
      return startClipboardKeeper(clipboardKeeper(), xTime);
    });
  }
  bool tellsFront() override { return shell_->serves(); }
  const SessionLimit& hotKeyLimit() override { return kNoExtension; }
  bool screenIsLocked() override { return shell_->screenIsLocked(); }

 private:
  std::optional<FrontWindow> frontWindow() override {
    return shell_->serves() ? shell_->frontWindow() : windowOf(needs_.activeProcess());
  }
  std::unique_ptr<KeyPlayer> makeKeyPlayer() override { return std::make_unique<MutterKeyPlayer>(remote_); }
  bool refusesUnknownWindows() const override { return true; }

  Needs needs_;
  std::shared_ptr<GnomeShell> shell_;
  std::shared_ptr<MutterRemoteDesktop> remote_ = std::make_shared<MutterRemoteDesktop>();
};

}  // namespace

std::unique_ptr<DisplayServer> openMutterServer(const DisplayServer::Needs& needs) {
  if (!MutterRemoteDesktop::isOffered() || !WaylandConnection::open()) return nullptr;
  return std::make_unique<MutterServer>(needs);
}

}  // namespace lexwend::platform
