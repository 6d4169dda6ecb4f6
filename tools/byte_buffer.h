// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>

namespace lexwend {

/// Bytes that are read at the end and used up from the start. Memory that nobody has read into costs nothing.
class ByteBuffer {
 public:
  std::string_view bytes() const { return {bytes_.get(), used_}; }

  /// Room for so many bytes behind the others, valid until the next call.
  char* room(std::size_t count) {
    if (size_ - used_ < count) grow(std::max(2 * size_, used_ + count));
    return bytes_.get() + used_;
  }
  /// So many bytes were put into the room.
  void add(std::size_t count) { used_ += count; }

  void drop(std::size_t count) {
    used_ -= count;
    if (used_ != 0) std::memmove(bytes_.get(), bytes_.get() + count, used_);
  }

 private:
  void grow(std::size_t size) {
    std::unique_ptr<char[]> larger(new char[size]);
    if (used_ != 0) std::memcpy(larger.get(), bytes_.get(), used_);
    bytes_ = std::move(larger);
    size_ = size;
  }

  std::unique_ptr<char[]> bytes_;
  std::size_t size_ = 0;
  std::size_t used_ = 0;
};

}  // namespace lexwend
