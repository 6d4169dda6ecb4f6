// SPDX-License-Identifier: MIT
#include "platform/linux/wayland/selections.h"

#include "platform/linux/wayland/data_control_owner.h"
#include "platform/linux/wayland/data_control_reader.h"

namespace lexwend::platform {

Selections selectionsOfWayland() {
  return {&DataControlOwner::open, &DataControlReader::open};
}

}  // namespace lexwend::platform
