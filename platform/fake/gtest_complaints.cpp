// SPDX-License-Identifier: MIT
// Linked into a GoogleTest program: a complaint of the in-memory host fails the running test.
#include <gtest/gtest.h>

#include "platform/fake/fake_complaints.h"

namespace {

[[maybe_unused]] const bool kInstalled = [] {
  lexwend::platform::setComplaintHandler([](const std::vector<std::string>& complaints) {
    for (const auto& complaint : complaints) ADD_FAILURE() << "in-memory host: " << complaint;
  });
  return true;
}();

}  // namespace
