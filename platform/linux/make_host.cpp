// SPDX-License-Identifier: MIT
#include "platform/linux/linux_host.h"

namespace lexwend::platform {

std::unique_ptr<Host> makeHost() {
  return std::make_unique<LinuxHost>();
}

}  // namespace lexwend::platform
