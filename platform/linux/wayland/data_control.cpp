// SPDX-License-Identifier: MIT
#include "platform/linux/wayland/data_control.h"

#include <algorithm>
#include <utility>

#include <data-control.h>
#include <wayland-client.h>

namespace lexwend::platform {
namespace {

constexpr const char* kOldName = "zwlr_data_control_manager_v1";
constexpr const char* kName = "ext_data_control_manager_v1";
constexpr std::uint32_t kVersionWithPrimary = 2;  // of the old one; the new one always has it

/// The manager of ext-data-control: on the wire the two protocols are the same but for the names.
wl_interface renamedManager() {
  wl_interface renamed = zwlr_data_control_manager_v1_interface;
  renamed.name = kName;
  return renamed;
}

}  // namespace

DataControl::Offer::~Offer() {
  zwlr_data_control_offer_v1_destroy(offer_);
}

void DataControl::Offer::receive(const std::string& type, int writeEnd) {
  zwlr_data_control_offer_v1_receive(offer_, type.c_str(), writeEnd);
}

bool DataControl::isOffered(const WaylandConnection& connection) {
  return connection.versionOf(kName) || connection.versionOf(kOldName);
}

std::unique_ptr<DataControl> DataControl::open() {
  auto connection = WaylandConnection::open();
  if (!connection) return nullptr;
  static const wl_interface kRenamed = renamedManager();
  void* manager = connection->bind(kRenamed, 1);
  if (manager == nullptr) {
    manager = connection->bind(zwlr_data_control_manager_v1_interface, kVersionWithPrimary);
  }
  if (manager == nullptr) return nullptr;
  return std::unique_ptr<DataControl>(
      new DataControl(std::move(connection), static_cast<zwlr_data_control_manager_v1*>(manager)));
}

DataControl::DataControl(std::unique_ptr<WaylandConnection> connection, zwlr_data_control_manager_v1* manager)
    : connection_(std::move(connection)), manager_(manager) {}

DataControl::~DataControl() {
  stopWatching();
  zwlr_data_control_manager_v1_destroy(manager_);
}

void DataControl::watch(Changed clipboard, Changed primary) {
  static constexpr zwlr_data_control_device_v1_listener kListener = {offerAppears, clipboardChanges, seatGoes,
                                                                     primaryChanges};
  stopWatching();
  clipboard_ = std::move(clipboard);
  primary_ = std::move(primary);
  device_ = zwlr_data_control_manager_v1_get_data_device(manager_, connection_->seat());
  zwlr_data_control_device_v1_add_listener(device_, &kListener, this);
}

void DataControl::stopWatching() {
  announced_.clear();
  if (device_ != nullptr) zwlr_data_control_device_v1_destroy(device_);
  device_ = nullptr;
  connection_->flush();
}

void DataControl::offerAppears(void* self, zwlr_data_control_device_v1* /*device*/,
                               zwlr_data_control_offer_v1* offer) {
  static constexpr zwlr_data_control_offer_v1_listener kListener = {typeIsOffered};
  auto& announced = static_cast<DataControl*>(self)->announced_;
  announced.push_back(std::make_shared<Offer>(offer));
  zwlr_data_control_offer_v1_add_listener(offer, &kListener, announced.back().get());
}

void DataControl::typeIsOffered(void* offer, zwlr_data_control_offer_v1* /*proxy*/, const char* type) {
  auto& types = static_cast<Offer*>(offer)->types_;
  if (std::find(types.begin(), types.end(), type) == types.end()) types.emplace_back(type);
}

void DataControl::clipboardChanges(void* self, zwlr_data_control_device_v1* /*device*/,
                                   zwlr_data_control_offer_v1* offer) {
  auto& control = *static_cast<DataControl*>(self);
  auto taken = control.take(offer);
  if (control.clipboard_) control.clipboard_(std::move(taken));
}

void DataControl::primaryChanges(void* self, zwlr_data_control_device_v1* /*device*/,
                                 zwlr_data_control_offer_v1* offer) {
  auto& control = *static_cast<DataControl*>(self);
  auto taken = control.take(offer);
  if (control.primary_) control.primary_(std::move(taken));
}

/// Nothing is told any more, as if the clipboards never changed again.
void DataControl::seatGoes(void* self, zwlr_data_control_device_v1* /*device*/) {
  static_cast<DataControl*>(self)->stopWatching();
}

DataControl::OfferRef DataControl::take(zwlr_data_control_offer_v1* offer) {
  const auto found = std::find_if(announced_.begin(), announced_.end(),
                                  [offer](const OfferRef& each) { return each->offer_ == offer; });
  OfferRef taken = found == announced_.end() ? nullptr : *found;
  if (found != announced_.end()) announced_.erase(found);
  return taken;
}

}  // namespace lexwend::platform
