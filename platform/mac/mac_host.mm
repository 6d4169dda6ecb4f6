// SPDX-License-Identifier: MIT
#include "platform/mac/mac_host.h"

namespace lexwend::platform {

std::unique_ptr<Host> makeHost() { return std::make_unique<mac::MacHost>(); }

}  // namespace lexwend::platform
