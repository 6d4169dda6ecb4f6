// SPDX-License-Identifier: MIT
#include "platform/linux/selection/selections.h"

#include "platform/linux/selection/x_owner.h"
#include "platform/linux/selection/x_reader.h"

namespace lexwend::platform {

Selections selectionsOfX() {
  return {&XSelectionOwner::open, &XClipboardReader::open};
}

}  // namespace lexwend::platform
