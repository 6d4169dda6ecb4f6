// SPDX-License-Identifier: MIT
#include "platform/mac/secure_input.h"

#import <Carbon/Carbon.h>

namespace lexwend::platform::mac {

bool MacSecureInput::isSecureEventInputEnabled() { return IsSecureEventInputEnabled(); }

}  // namespace lexwend::platform::mac
