// SPDX-License-Identifier: MIT
#include "platform/mac/cf_ref.h"

#include <utility>

#include <gtest/gtest.h>

#include "platform/mac/cf_text.h"
#include "tests/mac/doubles/control.h"

namespace lexwend::platform::mac {
namespace {

using StringRef = CFRef<CFStringRef>;

struct CFReference : ::testing::Test {
  doubles::Session session;

  void TearDown() override { EXPECT_EQ(session.unbalancedObjects(), ""); }
};

TEST_F(CFReference, addsOneForEachCopyAndNoneWhenItIsMoved) {
  StringRef first = cfText("first");
  const StringRef copy = first;
  EXPECT_EQ(CFGetRetainCount(first.get()), 2);
  const StringRef moved = std::move(first);
  EXPECT_EQ(CFGetRetainCount(moved.get()), 2);
  EXPECT_EQ(moved.get(), copy.get());
}

TEST_F(CFReference, givesBackWhatItHeldWhenItIsAssignedAnother) {
  StringRef held = cfText("first");
  const StringRef first = held;
  held = cfText("second");
  EXPECT_EQ(CFGetRetainCount(first.get()), 1);
  EXPECT_EQ(utf8(held.get()), "second");
  held = StringRef();
  EXPECT_FALSE(held);
}

TEST_F(CFReference, toNothingIsCopiedAndSharedLikeAnother) {
  const StringRef nothing;
  const StringRef copy = nothing;
  EXPECT_FALSE(copy);
  EXPECT_FALSE(StringRef::share(nullptr));
  EXPECT_FALSE(StringRef::adopt(nullptr));
}

}  // namespace
}  // namespace lexwend::platform::mac
