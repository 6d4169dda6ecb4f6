// SPDX-License-Identifier: MIT
#include <algorithm>

#include "platform/pasteboard.h"
#include "platform/run_loop.h"
#include "tests/contract/contract_test.h"

namespace lexwend::contract {
namespace {

using platform::Bytes;

Bytes bytes(std::string_view text) {
  const auto* first = reinterpret_cast<const std::byte*>(text.data());
  return {first, first + text.size()};
}

constexpr const char* kOne = "application/x-lexwend-one";
constexpr const char* kTwo = "application/x-lexwend-two";
constexpr const char* kThree = "application/x-lexwend-three";

/// A type that the host adds by itself.
bool isForeign(const std::string& type) {
  return !type.starts_with("application/x-lexwend-");
}

/// A pasteboard that reports no list of items needs a system of its own: PasteboardWithoutDisplay in
/// tests/linux/, MacPasteboardService in tests/mac/.
class PasteboardContract : public ContractTest {
 protected:
  platform::PasteboardRef pasteboard = host().generalPasteboard();
  void write(std::string_view text) {
    pasteboard->clearContents();
    pasteboard->setString(text);
  }
  /// The one item that another application has promised, once it is there.
  std::unique_ptr<platform::PasteboardItem> promised(const HostUnderTest::Promises& promises) {
    underTest->otherApplicationPromises(promises);
    std::optional<std::vector<std::unique_ptr<platform::PasteboardItem>>> items;
    EXPECT_TRUE(underTest->waitUntil([&] {
      items = pasteboard->items();
      return items && items->size() == 1;
    }));
    return items && items->size() == 1 ? std::move(items->front()) : nullptr;
  }
};

TEST_F(PasteboardContract, textThatWasWrittenIsThere) {
  const std::string text = "שלום עולם\nsecond line — ₪ 👋🏽";
  write(text);
  EXPECT_EQ(pasteboard->string(), text);
}

TEST_F(PasteboardContract, anotherApplicationReadsTheTextThatWasWritten) {
  write("יקךךם");
  EXPECT_EQ(underTest->otherApplicationPastes(), "יקךךם");
}

TEST_F(PasteboardContract, aCopyOfAnotherApplicationIsSeen) {
  underTest->otherApplicationCopies("akuo");
  EXPECT_TRUE(underTest->waitUntil([&] { return pasteboard->string() == "akuo"; }));
}

TEST_F(PasteboardContract, everyChangeRaisesTheChangeCount) {
  const auto start = pasteboard->changeCount();
  write("one");
  const auto own = pasteboard->changeCount();
  EXPECT_GT(own, start);
  underTest->otherApplicationCopies("two");
  EXPECT_TRUE(underTest->waitUntil([&] { return pasteboard->changeCount() > own; }));
  const auto first = pasteboard->changeCount();
  underTest->otherApplicationCopies("two");
  EXPECT_TRUE(underTest->waitUntil([&] { return pasteboard->changeCount() > first; }))
      << "the same text again";
}

TEST_F(PasteboardContract, readingDoesNotChangeTheCount) {
  write("one");
  const auto before = pasteboard->changeCount();
  (void)pasteboard->string();
  if (const auto items = pasteboard->items()) {
    for (const auto& item : *items) {
      for (const auto& type : item->types()) (void)item->data(type);
    }
  }
  EXPECT_EQ(pasteboard->changeCount(), before);
}

TEST_F(PasteboardContract, aCopyIsSeenWhileTheProgramOnlySleeps) {
  const auto before = pasteboard->changeCount();
  underTest->otherApplicationCopies("akuo");
  for (int i = 0; i < 100 && pasteboard->changeCount() == before; ++i) host().runLoop().sleep(20ms);
  EXPECT_NE(pasteboard->changeCount(), before);
  EXPECT_EQ(pasteboard->string(), "akuo");
}

TEST_F(PasteboardContract, clearingLeavesNoTextAndNoItemWithData) {
  write("one");
  pasteboard->clearContents();
  EXPECT_EQ(pasteboard->string(), std::nullopt);
  if (const auto items = pasteboard->items()) {
    EXPECT_TRUE(items->empty());
  }
}

TEST_F(PasteboardContract, anItemKeepsItsTypesInOrderAndItsBytes) {
  std::string large(300'000, '\0');
  for (std::size_t i = 0; i < large.size(); ++i) large[i] = static_cast<char>(i * 7 % 256);
  const platform::PasteboardItemData data = {
      {kOne, bytes(std::string_view("a\0b", 3))}, {kTwo, bytes(large)}, {kThree, Bytes()}};
  pasteboard->clearContents();
  pasteboard->writeItems({data});

  const auto items = pasteboard->items();
  ASSERT_TRUE(items.has_value());
  ASSERT_EQ(items->size(), 1U);
  auto types = items->front()->types();
  std::erase_if(types, isForeign);
  EXPECT_EQ(types, (std::vector<std::string>{kOne, kTwo, kThree}));
  for (const auto& [type, expected] : data) EXPECT_EQ(items->front()->data(type), expected) << type;
}

TEST_F(PasteboardContract, severalItemsAreAllWrittenInTheirOrder) {
  pasteboard->clearContents();
  pasteboard->writeItems({{{kOne, bytes("1")}, {kTwo, bytes("2")}}, {{kThree, bytes("3")}}});
  platform::PasteboardItemData read;
  const auto items = pasteboard->items();
  ASSERT_TRUE(items.has_value());
  for (const auto& item : *items) {
    for (const auto& type : item->types()) {
      if (!isForeign(type)) read.emplace_back(type, item->data(type).value_or(Bytes()));
    }
  }
  EXPECT_EQ(read,
            (platform::PasteboardItemData{{kOne, bytes("1")}, {kTwo, bytes("2")}, {kThree, bytes("3")}}));
}

TEST_F(PasteboardContract, promisedDataIsFetchedFromItsOwnerAndABrokenPromiseIsNoData) {
  const auto item = promised({{kOne, "kept"}, {kTwo, std::nullopt}, {kThree, "kept too"}});
  ASSERT_NE(item, nullptr);
  EXPECT_EQ(item->data(kOne), bytes("kept"));
  EXPECT_EQ(item->data(kTwo), underTest->tellsBrokenPromises() ? std::nullopt : std::optional(Bytes()));
  EXPECT_EQ(item->data(kThree), bytes("kept too"));
}

TEST_F(PasteboardContract, aTypeThatStandsTwiceHasTheDataOfTheFirst) {
  const auto item = promised({{kOne, "first"}, {kTwo, "other"}, {kOne, "second"}});
  ASSERT_NE(item, nullptr);
  const auto types = item->types();
  EXPECT_GE(std::count(types.begin(), types.end(), kOne), 1);
  EXPECT_EQ(item->data(kOne), bytes("first"));
  EXPECT_EQ(item->data(kTwo), bytes("other"));
}

TEST_F(PasteboardContract, aTypeThatIsNotThereHasNoData) {
  write("one");
  const auto items = pasteboard->items();
  ASSERT_TRUE(items.has_value());
  ASSERT_FALSE(items->empty());
  EXPECT_EQ(items->front()->data("application/x-lexwend-nowhere"), std::nullopt);
}

TEST_F(PasteboardContract, theReferenceOutlivesTheCallThatGaveIt) {
  platform::PasteboardRef other = host().generalPasteboard();
  write("kept");
  other.reset();
  EXPECT_EQ(host().generalPasteboard()->string(), "kept");
}

}  // namespace
}  // namespace lexwend::contract
