// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>

#include "tests/mac/host_fixture.h"

namespace lexwend::platform::mac {
namespace {

namespace dbl = doubles::pasteboard;
using doubles::bytesOf;
using ::testing::ElementsAre;

constexpr const char* kText = "public.utf8-plain-text";
constexpr const char* kRtf = "public.rtf";
constexpr const char* kPng = "public.png";

Bytes sharedBytesOf(const std::string& text) {
  return Bytes(bytesOf(text));
}

struct MacPasteboardService : InMacApplication {
  PasteboardRef pasteboard = host->generalPasteboard();

  void TearDown() override {
    pasteboard = nullptr;
    OnMac::TearDown();
  }
};

TEST_F(MacPasteboardService, isTheSamePasteboardEachTime) {
  EXPECT_EQ(host->generalPasteboard(), pasteboard);
}

TEST_F(MacPasteboardService, readsItemByItemAndTypeByType) {
  dbl::otherAppCopies(
      {{{kRtf, bytesOf("{\\rtf1}")}, {kText, bytesOf("שלום")}}, {{kPng, bytesOf("\x89PNG")}}});
  const auto items = pasteboard->items().value();
  ASSERT_EQ(items.size(), 2u);
  EXPECT_THAT(items[0]->types(), ElementsAre(kRtf, kText));
  EXPECT_EQ(items[0]->data(kRtf), sharedBytesOf("{\\rtf1}"));
  EXPECT_EQ(items[0]->data(kText), sharedBytesOf("שלום"));
  EXPECT_THAT(items[1]->types(), ElementsAre(kPng));
  EXPECT_EQ(items[1]->data(kPng), sharedBytesOf("\x89PNG"));
}

TEST_F(MacPasteboardService, keepsNothingOfWhatItCopiedUntilTheEventEnds) {
  dbl::otherAppCopies({{{kPng, bytesOf("\x89PNG")}}});
  const auto items = pasteboard->items().value();
  const std::size_t before = doubles::liveObjects();
  items.at(0)->data(kPng);
  EXPECT_EQ(doubles::liveObjects(), before);

  pasteboard->writeItems({{{kPng, sharedBytesOf("mine")}}});
  const std::size_t written = doubles::liveObjects();
  pasteboard->writeItems({{{kPng, sharedBytesOf("mine")}}});
  EXPECT_EQ(doubles::liveObjects(), written);
}

TEST_F(MacPasteboardService, fetchesPromisedDataFromItsOwner) {
  dbl::otherAppCopies({{{kText, bytesOf("promised"), true}}});
  const auto items = pasteboard->items().value();
  EXPECT_EQ(dbl::promisesKept(), 0);
  EXPECT_EQ(items.at(0)->data(kText), sharedBytesOf("promised"));
  EXPECT_EQ(dbl::promisesKept(), 1);
}

TEST_F(MacPasteboardService, tellsDataThatCannotBeHadFromEmptyData) {
  dbl::otherAppCopies({{{kText, std::nullopt}, {kRtf, bytesOf("")}}});
  const auto items = pasteboard->items().value();
  EXPECT_EQ(items.at(0)->data(kText), std::nullopt);
  EXPECT_EQ(items.at(0)->data(kRtf), Bytes());
  EXPECT_EQ(items.at(0)->data(kPng), std::nullopt);
}

TEST_F(MacPasteboardService, tellsNoItemsFromNoList) {
  pasteboard->clearContents();
  EXPECT_EQ(pasteboard->items().value().size(), 0u);
  dbl::itemsAreAbsent(true);
  EXPECT_FALSE(pasteboard->items().has_value());
}

TEST_F(MacPasteboardService, countsEveryChangeWhoeverMadeIt) {
  const std::int64_t before = pasteboard->changeCount();
  EXPECT_EQ(before, dbl::changeCount());
  dbl::otherAppCopiesText("text");
  const std::int64_t afterOther = pasteboard->changeCount();
  EXPECT_GT(afterOther, before);
  pasteboard->clearContents();
  EXPECT_GT(pasteboard->changeCount(), afterOther);
}

TEST_F(MacPasteboardService, readsPlainTextAndNothingElseAsText) {
  dbl::otherAppCopiesText("akuo שלום 😀");
  EXPECT_EQ(pasteboard->string(), "akuo שלום 😀");
  dbl::otherAppCopies({{{kPng, bytesOf("picture")}}});
  EXPECT_EQ(pasteboard->string(), std::nullopt);
  dbl::otherAppCopiesText("");
  EXPECT_EQ(pasteboard->string(), "");
}

TEST_F(MacPasteboardService, writesPlainText) {
  dbl::otherAppCopiesText("before");
  pasteboard->clearContents();
  pasteboard->setString("שלום 😀");
  const auto contents = dbl::contents();
  ASSERT_EQ(contents.size(), 1u);
  ASSERT_EQ(contents[0].size(), 1u);
  EXPECT_EQ(contents[0][0].type, kText);
  EXPECT_EQ(contents[0][0].data, bytesOf("שלום 😀"));
}

TEST_F(MacPasteboardService, writesNoTextWhoseBytesAreNoText) {
  pasteboard->clearContents();
  pasteboard->setString("\xFF");
  EXPECT_TRUE(dbl::contents().empty());
}

TEST_F(MacPasteboardService, writesAllItemsAtOnceAndNewOnesEachTime) {
  const std::vector<PasteboardItemData> items = {
      {{kRtf, sharedBytesOf("{\\rtf1}")}, {kText, sharedBytesOf("text")}},
      {{kPng, sharedBytesOf("picture")}},
      {{kText, Bytes()}}};
  for (int round = 0; round < 2; ++round) {
    pasteboard->clearContents();
    doubles::forgetCalls();
    pasteboard->writeItems(items);
    EXPECT_EQ(doubles::callsNamed("-[NSPasteboard writeObjects:]").size(), 1u);
    const auto contents = dbl::contents();
    ASSERT_EQ(contents.size(), 3u);
    EXPECT_EQ(contents[0].at(0).type, kRtf);
    EXPECT_EQ(contents[0].at(0).data, bytesOf("{\\rtf1}"));
    EXPECT_EQ(contents[0].at(1).type, kText);
    EXPECT_EQ(contents[0].at(1).data, bytesOf("text"));
    EXPECT_EQ(contents[1].at(0).data, bytesOf("picture"));
    EXPECT_EQ(contents[2].at(0).data, doubles::Bytes());
  }
}

TEST_F(MacPasteboardService, outlivesTheHostsReference) {
  const PasteboardRef kept = host->generalPasteboard();
  host = nullptr;
  dbl::otherAppCopiesText("still there");
  EXPECT_EQ(kept->string(), "still there");
}

}  // namespace
}  // namespace lexwend::platform::mac
