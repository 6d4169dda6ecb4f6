// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

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
  /// The user clicks on the item.
  void click();

  /// An entry of the menu that a panel draws itself.
  struct Entry {
    std::int32_t id = 0;
    std::string title;  ///< without the marks of its direction
    std::string key;    ///< "q" for Control+Q
    bool isSeparator = false;
    bool isChecked = false;
    bool isEnabled = true;
  };
  /// Those that are visible; empty while the item names no menu.
  std::vector<Entry> menu();
  /// The user clicks on the first one with that title, also where it cannot be chosen; false when there is
  /// none that can.
  bool choose(std::string_view title);

 private:
  std::mutex mutex_;
  std::string item_;
  platform::BusPeer peer_;
};

}  // namespace lexwend::contract
