// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace lexwend {

/// Cuts a stream that arrives in chunks of any size into records that end in a separator. Takes time linear
/// in the stream, for any length of records and chunks.
class RecordSplitter {
 public:
  explicit RecordSplitter(char separator) : separator_(separator) {}

  /// Takes the next chunk. Calls `onRecord(std::string_view record)` for every record that ends in it,
  /// without the separator. The view is valid during the call.
  template <typename OnRecord>
  void feed(std::string_view chunk, OnRecord onRecord) {
    while (true) {
      const std::size_t end = chunk.find(separator_);
      if (end == std::string_view::npos) break;
      if (unfinished_.empty()) {
        onRecord(chunk.substr(0, end));
      } else {
        unfinished_ += chunk.substr(0, end);
        onRecord(std::string_view(unfinished_));
        unfinished_.clear();
      }
      chunk.remove_prefix(end + 1);
    }
    unfinished_ += chunk;
  }

  /// What follows the last separator; empty when nothing does.
  std::string_view unfinished() const { return unfinished_; }

 private:
  char separator_;
  std::string unfinished_;
};

}  // namespace lexwend
