// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace lexwend {

/// Takes converted text piece by piece.
class TextOutput {
 public:
  virtual ~TextOutput() = default;
  /// The view lives for the call.
  virtual void take(std::string_view piece) = 0;
};

}  // namespace lexwend
