// SPDX-License-Identifier: MIT
#include <utility>

#include "platform/linux/kwin/entry.h"
#include "platform/linux/kwin/hot_key_service.h"
#include "platform/linux/kwin/input_sources.h"
#include "platform/linux/kwin/kwin.h"
#include "platform/linux/server/compositor.h"

namespace lexwend::platform {
namespace {

class KWinServer : public Compositor {
 public:
  explicit KWinServer(std::shared_ptr<KWin> kwin) : kwin_(std::move(kwin)) {}

  std::unique_ptr<InputSourceService> makeInputSources() override {
    return std::make_unique<KWinInputSources>(kwin_);
  }
  std::unique_ptr<HotKeyKeeper> makeHotKeyService() override {
    return std::make_unique<KWinHotKeyService>(kwin_);
  }
  bool tellsFront() override { return kwin_->grantsAll(); }
  bool screenIsLocked() override { return kwin_->screenIsLocked(); }
  void focusOwnWindow() override { kwin_->focusOwnWindow(); }
  bool grantsAll() override { return kwin_->grantsAll(); }
  bool grantIsMissing() override { return !anEntryGrantsKeys(); }
  bool canGrant(const std::string& program) override { return entryCanName(program); }
  bool grant(const std::string& program) override { return writeEntryThatGrantsKeys(program); }

 private:
  std::optional<FrontWindow> frontWindow() override { return kwin_->frontWindow(); }
  std::unique_ptr<KeyPlayer> makeKeyPlayer() override { return kwin_->keyPlayer(); }

  std::shared_ptr<KWin> kwin_;
};

}  // namespace

std::unique_ptr<DisplayServer> openKWinServer() {
  auto kwin = KWin::open();
  return kwin ? std::make_unique<KWinServer>(std::move(kwin)) : nullptr;
}

}  // namespace lexwend::platform
