// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/server/display_server.h"

namespace lexwend::platform {

/// The X server of DISPLAY, which need not be there.
class XServer : public DisplayServer {
 public:
  explicit XServer(std::function<void(KeyCode, EventFlags)> play);

  std::unique_ptr<InputSourceService> makeInputSources() override;
  std::unique_ptr<HotKeyKeeper> makeHotKeyService() override;
  std::unique_ptr<ShortcutKeyEvents> makeKeyEvents(std::function<bool()> mayCopy,
                                                   std::function<bool()> mayPaste) override;
  Selections selections() override;
  bool mayControl() override;
  std::optional<std::uint32_t> frontProcess() override;
  std::optional<std::string> frontWindowClass() override;
  bool isCompositor() const override { return false; }
  std::shared_ptr<X11Connection> x11() override { return x11_; }

 private:
  std::function<void(KeyCode, EventFlags)> play_;
  std::shared_ptr<X11Connection> x11_;
};

}  // namespace lexwend::platform
