// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/selection/reader.h"
#include "platform/linux/wayland/data_control.h"

namespace lexwend::platform {

/// A clipboard of a Wayland compositor. A type that its owner promises and does
/// not give is empty. Between
/// reads the compositor tells this program nothing. Everybody is one and the same XApplication.
class DataControlReader : public ClipboardReader {
 public:
  /// Null when there is no compositor or it has no data control.
  static std::unique_ptr<ClipboardReader> open(std::string_view selection);

  XApplication application(xcb_window_t /*window*/) override { return {}; }
  /// No clipboard manager is known to own anything.
  xcb_window_t ownerOf(std::string_view selection) override;

 private:
  DataControlReader(std::unique_ptr<DataControl> control, bool isPrimary)
      : control_(std::move(control)), isPrimary_(isPrimary) {}
  void begin() override;
  void end() override;
  xcb_window_t owner() override;
  bool answers() const override { return isTold_ && control_->connection().isConnected(); }
  void giveUp() override {}
  Answer readTargetNames(Limits& limits, std::vector<std::string>& names) override;
  Answer convert(const std::string& target, Limits& limits, ClipboardTarget& answer) override;
  bool beginWatching();
  bool isReplaced();

  std::unique_ptr<DataControl> control_;
  bool isPrimary_;
  bool isTold_ = false;            // what is there
  DataControl::OfferRef offer_;    // what is there now
  DataControl::OfferRef reading_;  // what is being read
};

}  // namespace lexwend::platform
