// SPDX-License-Identifier: MIT
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "platform/fake/fake_call_log.h"

namespace lexwend::tests {

/// Whether the program made every one of these calls, and the first of each before the first of the next. A
/// call is meant by how it begins.
inline testing::AssertionResult inOrder(const platform::FakeCallLog& calls,
                                        std::initializer_list<std::string_view> prefixes) {
  std::string previous;
  std::size_t next = 0;
  for (const std::string_view prefix : prefixes) {
    const auto place = calls.indexOf(prefix);
    if (!place) return testing::AssertionFailure() << "nobody called " << prefix;
    if (*place < next) return testing::AssertionFailure() << prefix << " did not come after " << previous;
    previous = prefix;
    next = *place + 1;
  }
  return testing::AssertionSuccess();
}

}  // namespace lexwend::tests
