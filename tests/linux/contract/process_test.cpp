// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <sys/prctl.h>

#include "tests/contract/host_under_test.h"

namespace lexwend::contract {
namespace {

TEST(ProcessOfTheAgent, isNeitherDumpedNorReadByOthers) {
  const auto underTest = makeHostUnderTest();
  EXPECT_EQ(::prctl(PR_GET_DUMPABLE), 0);
}

}  // namespace
}  // namespace lexwend::contract
