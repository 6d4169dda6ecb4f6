// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/wayland/connection.h"

struct zwlr_data_control_device_v1;
struct zwlr_data_control_manager_v1;
struct zwlr_data_control_offer_v1;
struct zwlr_data_control_source_v1;

namespace lexwend::platform {

/// The clipboards of a seat for a program without the focus: ext-data-control or its forerunner of wlroots,
/// whichever the compositor offers. Lives on a connection of its own. One thread at a time.
class DataControl {
 public:
  /// What a program offers to give. Gone with the last reference.
  class Offer {
   public:
    explicit Offer(zwlr_data_control_offer_v1* offer) : offer_(offer) {}
    ~Offer();
    Offer(const Offer&) = delete;
    Offer& operator=(const Offer&) = delete;
    /// Each once, in the order in which they were offered.
    const std::vector<std::string>& types() const { return types_; }
    /// Asks for a type, which is to be written to that end of a pipe. Keeps no copy of it.
    void receive(const std::string& type, int writeEnd);

   private:
    friend class DataControl;
    zwlr_data_control_offer_v1* offer_;
    std::vector<std::string> types_;
  };
  using OfferRef = std::shared_ptr<Offer>;
  /// Told of what is on a clipboard now (null: nothing), at first and with each change.
  using Changed = std::function<void(OfferRef offer)>;

  /// Null when there is no compositor or it has no data control.
  static std::unique_ptr<DataControl> open();
  ~DataControl();
  DataControl(const DataControl&) = delete;
  DataControl& operator=(const DataControl&) = delete;

  /// Whether the compositor that this connection reaches has data control.
  static bool isOffered(const WaylandConnection& connection);

  WaylandConnection& connection() { return *connection_; }
  /// From now on changes are told, within the calls of the connection. Where the compositor has no primary
  /// selection for this, nothing is ever told of it.
  void watch(Changed clipboard, Changed primary = {});
  /// Ends that. While nobody watches the compositor sends nothing.
  void stopWatching();
  bool isWatching() const { return device_ != nullptr; }

  zwlr_data_control_manager_v1* manager() const { return manager_; }
  /// Null while nobody watches.
  zwlr_data_control_device_v1* device() const { return device_; }

 private:
  DataControl(std::unique_ptr<WaylandConnection> connection, zwlr_data_control_manager_v1* manager);
  static void offerAppears(void* self, zwlr_data_control_device_v1* device,
                           zwlr_data_control_offer_v1* offer);
  static void typeIsOffered(void* offer, zwlr_data_control_offer_v1* proxy, const char* type);
  static void clipboardChanges(void* self, zwlr_data_control_device_v1* device,
                               zwlr_data_control_offer_v1* offer);
  static void primaryChanges(void* self, zwlr_data_control_device_v1* device,
                             zwlr_data_control_offer_v1* offer);
  static void seatGoes(void* self, zwlr_data_control_device_v1* device);
  OfferRef take(zwlr_data_control_offer_v1* offer);

  std::unique_ptr<WaylandConnection> connection_;
  zwlr_data_control_manager_v1* manager_;
  zwlr_data_control_device_v1* device_ = nullptr;
  Changed clipboard_;
  Changed primary_;
  std::vector<OfferRef> announced_;  // until it is told what they are of
};

}  // namespace lexwend::platform
