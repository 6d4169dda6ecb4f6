// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace lexwend {

/// Cuts a stream that arrives in chunks of any size into records that end in a separator. Linear in the
/// stream, however long a record and however small the chunks.
class RecordSplitter {
 public:
  explicit RecordSplitter(char separator) : separator_(separator) {}

  /// Takes the next chunk and calls `onRecord(std::string_view record)` for every record that ends in it,
  /// without its separator. The view lives for the call.
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

  /// What follows the last separator; empty when the stream ended with one, or was empty.
  std::string_view unfinished() const { return unfinished_; }

 private:
  char separator_;
  std::string unfinished_;
};

}  // namespace lexwend
