// SPDX-License-Identifier: MIT
#include "tools/record_splitter.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace lexwend {
namespace {

struct Split {
  std::vector<std::string> records;
  std::string unfinished;

  friend bool operator==(const Split&, const Split&) = default;
};

Split splitInChunks(const std::string& stream, std::size_t chunkSize) {
  RecordSplitter splitter('\n');
  Split split;
  for (std::size_t begin = 0; begin < stream.size(); begin += chunkSize) {
    splitter.feed(std::string_view(stream).substr(begin, chunkSize),
                  [&](std::string_view record) { split.records.emplace_back(record); });
  }
  split.unfinished = splitter.unfinished();
  return split;
}

TEST(RecordSplitter, givesTheSameRecordsForChunksOfAnySize) {
  const std::string stream = "one\n\ntwo three\nlast";
  const Split expected{{"one", "", "two three"}, "last"};
  for (std::size_t chunkSize = 1; chunkSize <= stream.size(); ++chunkSize) {
    EXPECT_EQ(splitInChunks(stream, chunkSize), expected) << chunkSize;
  }
}

TEST(RecordSplitter, hasNothingUnfinishedAfterASeparator) {
  EXPECT_EQ(splitInChunks("a\n", 64), (Split{{"a"}, ""}));
  EXPECT_EQ(splitInChunks("\n\n", 1), (Split{{"", ""}, ""}));
}

TEST(RecordSplitter, hasNoRecordsInAnEmptyStream) {
  EXPECT_EQ(splitInChunks("", 1), (Split{{}, ""}));
}

}  // namespace
}  // namespace lexwend
