// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

#include "platform/linux/display/x11_connection.h"

namespace lexwend::contract {

/// Counts the bells of the display from its construction on, while the main context is iterated.
class Bells {
 public:
  Bells();
  int rung() const { return rung_; }

 private:
  int rung_ = 0;
  std::shared_ptr<platform::X11Connection> x11_ = platform::X11Connection::open();
  platform::X11Connection::Observation observation_;
};

}  // namespace lexwend::contract
