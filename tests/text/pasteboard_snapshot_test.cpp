// SPDX-License-Identifier: MIT
#include "text/pasteboard_snapshot.h"

#include <gtest/gtest.h>

#include "platform/fake/fake_host.h"

namespace lexwend {
namespace {

using platform::FakePasteboardEntry;
using Contents = std::vector<platform::FakePasteboardItemContents>;

struct PasteboardSnapshotTest : testing::Test {
  platform::FakeHost host;
  platform::HostScope scope{host};
  platform::FakePasteboard& pasteboard = host.pasteboard();

  Contents afterRoundTrip(Contents contents) {
    pasteboard.otherAppWrites(std::move(contents));
    const PasteboardSnapshot snapshot(pasteboard);
    pasteboard.otherAppCopies("something else");
    snapshot.restoreTo(pasteboard);
    return pasteboard.contents();
  }
};

TEST_F(PasteboardSnapshotTest, restoresEveryItemTypeByTypeWithIdenticalBytes) {
  const Contents rich = {{FakePasteboardEntry::text("שלום"),
                          FakePasteboardEntry::data("public.rtf", std::string_view("{\\rtf\0x", 7)),
                          FakePasteboardEntry::data("public.html", "<b>שלום</b>")},
                         {FakePasteboardEntry::data("public.png", "\x89PNG\r\n"),
                          FakePasteboardEntry::data("com.example.empty", "")}};
  EXPECT_EQ(afterRoundTrip(rich), rich);
  EXPECT_EQ(host.calls().count("pasteboard.writeItems"), 1u) << "all items go in one write";
}

TEST_F(PasteboardSnapshotTest, emptyPasteboardIsClearedAndNothingIsWritten) {
  EXPECT_EQ(afterRoundTrip({}), Contents{});
  EXPECT_EQ(host.calls().count("pasteboard.clearContents"), 1u);
  EXPECT_EQ(host.calls().count("pasteboard.writeItems"), 0u);
}

TEST_F(PasteboardSnapshotTest, entryWithoutAnyTypeIsKeptInTheSnapshotAndNotRestored) {
  pasteboard.otherAppWrites(
      {{FakePasteboardEntry::brokenPromise("public.tiff")}, {FakePasteboardEntry::text("kept")}});
  const PasteboardSnapshot snapshot(pasteboard);
  EXPECT_EQ(snapshot.items.size(), 2u);
  EXPECT_TRUE(snapshot.items[0].empty());
  snapshot.restoreTo(pasteboard);
  EXPECT_EQ(pasteboard.contents(), (Contents{{FakePasteboardEntry::text("kept")}}));
}

TEST_F(PasteboardSnapshotTest, onlyEntriesWithoutTypesLeaveThePasteboardEmpty) {
  EXPECT_EQ(afterRoundTrip({{FakePasteboardEntry::brokenPromise("public.tiff")}}), Contents{});
  EXPECT_EQ(host.calls().count("pasteboard.writeItems"), 0u);
}

/// An item that names a type twice and gives other bytes each time.
struct StutteringPasteboard final : platform::Pasteboard {
  struct Item final : platform::PasteboardItem {
    char next = '1';
    std::vector<std::string> types() override { return {"a", "b", "a"}; }
    std::optional<platform::Bytes> data(const std::string&) override {
      return platform::Bytes(std::vector<std::byte>{static_cast<std::byte>(next++)});
    }
  };
  std::optional<std::vector<std::unique_ptr<platform::PasteboardItem>>> items() override {
    std::vector<std::unique_ptr<platform::PasteboardItem>> list;
    list.push_back(std::make_unique<Item>());
    return list;
  }
  std::int64_t changeCount() override { return 0; }
  void clearContents() override {}
  std::optional<std::string> string() override { return std::nullopt; }
  void setString(std::string_view) override {}
  void writeItems(const std::vector<platform::PasteboardItemData>&) override {}
};

TEST_F(PasteboardSnapshotTest, laterDuplicateOfATypeReplacesTheEarlierOne) {
  StutteringPasteboard stuttering;
  const platform::PasteboardItemData expected = {{"a", platform::bytesOf("3")},
                                                 {"b", platform::bytesOf("2")}};
  EXPECT_EQ(PasteboardSnapshot(stuttering).items, (std::vector<platform::PasteboardItemData>{expected}));
}

TEST_F(PasteboardSnapshotTest, promisedDataIsFetchedWhenTheSnapshotIsMade) {
  FakePasteboardEntry slow = FakePasteboardEntry::data("public.tiff", "pixels");
  slow.fetchTime = std::chrono::milliseconds(70);
  pasteboard.otherAppWrites({{slow}});
  const PasteboardSnapshot snapshot(pasteboard);
  EXPECT_EQ(host.clock().now(), std::chrono::milliseconds(70));
  pasteboard.otherAppClears();
  snapshot.restoreTo(pasteboard);
  EXPECT_EQ(pasteboard.contents(), (Contents{{FakePasteboardEntry::data("public.tiff", "pixels")}}));
}

}  // namespace
}  // namespace lexwend
