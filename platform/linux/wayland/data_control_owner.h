// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <vector>

#include "platform/linux/pipes/anonymous_owner.h"
#include "platform/linux/wayland/data_control.h"

struct zwlr_data_control_source_v1;

namespace lexwend::platform {

/// The clipboard of a Wayland compositor. For a thread on which SIGPIPE is blocked or ignored.
///
/// By the protocol a program copies only while it has the keyboard, except for those with data control.
/// Between the look for other copies and a claim another one may slip through, and be replaced.
class DataControlOwner : public AnonymousOwner {
 public:
  /// Null when there is no compositor or it has no data control.
  static std::unique_ptr<SelectionOwner> open(Changed changed);
  ~DataControlOwner() override;
  DataControlOwner(const DataControlOwner&) = delete;
  DataControlOwner& operator=(const DataControlOwner&) = delete;

  void claim(const ClipboardContents& contents, xcb_timestamp_t time) override;
  bool owns() const override { return source_ != nullptr; }
  bool stillOwns() override;

  bool handleEvents() override;
  void wait(int descriptor, std::optional<Clock::time_point> until) override;
  bool connected() const override { return control_->connection().isConnected(); }

  /// To a process of its own, which serves what is owned until somebody else copies or the compositor is
  /// gone, and does nothing else: no compositor keeps what a program has copied. Here nothing is owned
  /// afterwards.
  bool handOver(Clock::time_point until) override;

  xcb_timestamp_t serverTime() override;

 private:
  DataControlOwner(std::unique_ptr<DataControl> control, Changed changed);
  static void fetchIsAsked(void* self, zwlr_data_control_source_v1* source, const char* type, int descriptor);
  static void sourceIsReplaced(void* self, zwlr_data_control_source_v1* source);
  void letGo();
  void clipboardChanges(bool isEmpty);
  void noteChangeUnlessUnheard(bool isEmpty);
  [[noreturn]] void serveForGood();

  std::unique_ptr<DataControl> control_;
  zwlr_data_control_source_v1* source_ = nullptr;
  ClipboardContents owned_;
  /// While a claim is under way: the changes that have come, of which one is this claim.
  std::vector<bool> emptied_;
  bool isClaiming_ = false;
  /// Claims that the compositor has not told of in time; it will.
  int unheardClaims_ = 0;
};

}  // namespace lexwend::platform
