// SPDX-License-Identifier: MIT
// What load_host.cpp loads.
#include "platform/linux/linux_host.h"

/// A new host, which the caller owns.
extern "C" lexwend::platform::Host* lexwendMakeHost() {
  return new lexwend::platform::LinuxHost;
}
