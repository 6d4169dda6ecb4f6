// SPDX-License-Identifier: MIT
#pragma once

#include <mutex>
#include <string>

#include "tests/linux/testing/private_bus.h"

namespace lexwend::contract {

/// A panel that shows status notifier items; there from its construction.
class Panel {
 public:
  Panel();
  /// The bus name of the item that registered last; empty before.
  std::string item();
  /// Whether that item is still there.
  bool showsItem();
  /// The user clicks on the item. This panel draws no menus.
  void click();

 private:
  std::mutex mutex_;
  std::string item_;
  platform::BusPeer peer_;
};

}  // namespace lexwend::contract
