// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/display/front_window.h"
#include "platform/linux/server/display_server.h"
#include "platform/linux/wayland/connection.h"
#include "platform/linux/wayland/key_player.h"

namespace lexwend::platform {

/// What the Wayland compositors have in common.
class Compositor : public DisplayServer {
 public:
  std::unique_ptr<ShortcutKeyEvents> makeKeyEvents(std::function<bool()> mayCopy,
                                                   std::function<bool()> mayPaste) final;
  Selections selections() override;
  bool mayControl() final { return true; }
  std::optional<std::uint32_t> frontProcess() final;
  std::optional<std::string> frontWindowClass() final;
  bool isCompositor() const final { return true; }

 protected:
  /// The window in front where only its process is known: two windows of one process are the same then.
  static std::optional<FrontWindow> windowOf(std::optional<std::uint32_t> process);

 private:
  virtual std::optional<FrontWindow> frontWindow() = 0;
  /// Null where the compositor does not let this program press keys.
  virtual std::unique_ptr<KeyPlayer> makeKeyPlayer() = 0;
  /// Whether no key goes to a window that frontWindow() does not know.
  virtual bool refusesUnknownWindows() const { return false; }
  /// Nothing where the compositor knows no such key.
  virtual std::optional<FocusKey> focusKey(std::int64_t /*window*/) { return std::nullopt; }
};

/// Null where there is no session of it, or it offers less than the services need.
std::unique_ptr<DisplayServer> openSwayServer(const DisplayServer::Needs& needs);
std::unique_ptr<DisplayServer> openKWinServer();
std::unique_ptr<DisplayServer> openMutterServer(const DisplayServer::Needs& needs);
std::unique_ptr<DisplayServer> openOtherCompositor(const DisplayServer::Needs& needs);

/// Whether the compositor lets a program use the clipboard and press keys, by the protocols of wlroots.
bool offersClipboardAndKeys(const WaylandConnection& connection);

}  // namespace lexwend::platform
