// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/linux/gnome/remote_desktop.h"
#include "platform/linux/selection/reader.h"

namespace lexwend::platform {

/// The clipboard of mutter, by a session of remote control, which a read opens. What the session itself has
/// put there is not asked for over the bus: mutter refuses that. Everybody is one and the same XApplication.
class MutterReader : public ClipboardReader {
 public:
  explicit MutterReader(std::shared_ptr<MutterRemoteDesktop> remote) : remote_(std::move(remote)) {}

  XApplication application(xcb_window_t /*window*/) override { return {}; }
  /// No clipboard manager is known to own anything.
  xcb_window_t ownerOf(std::string_view selection) override;

 private:
  void begin() override;
  xcb_window_t owner() override;
  bool answers() const override { return remote_->isOpen(); }
  void giveUp() override {}
  Answer readTargetNames(Limits& limits, std::vector<std::string>& names) override;
  Answer convert(const std::string& target, Limits& limits, ClipboardTarget& answer) override;

  std::shared_ptr<MutterRemoteDesktop> remote_;
  std::shared_ptr<const MutterRemoteDesktop::Offer> reading_;
};

}  // namespace lexwend::platform
