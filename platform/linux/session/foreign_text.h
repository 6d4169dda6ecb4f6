// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace lexwend::platform {

/// Words of another program (a window's class or title, the name of a role), fit for a line of the log:
/// UTF-8, at most 200 characters (Unicode scalar values). Control, format and separator characters, which may
/// forge lines, carry escape sequences or turn the direction of what follows, are left out; what is not
/// well-formed becomes U+FFFD.
std::string foreignText(std::string_view text);

}  // namespace lexwend::platform
