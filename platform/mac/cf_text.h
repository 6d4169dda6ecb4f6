// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

#include <CoreFoundation/CoreFoundation.h>

#include "platform/mac/cf_ref.h"

namespace lexwend::platform::mac {

/// UTF-8 of a string of the system, U+0000 included. Half a surrogate pair has no UTF-8 and becomes U+FFFD.
std::string utf8(CFStringRef text);

/// A string of the system from UTF-8; null when the bytes are no UTF-8.
CFRef<CFStringRef> cfText(std::string_view text);

/// The same for a text that is only shown or looked up: empty instead of null.
CFRef<CFStringRef> cfTextOrEmpty(std::string_view text);

}  // namespace lexwend::platform::mac
