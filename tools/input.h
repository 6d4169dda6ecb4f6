// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/byte_buffer.h"
#include "tools/byte_stream.h"

namespace lexwend {

/// A file that could not be read, by its name.
struct ReadError {
  std::string file;
  std::string reason;
};

/// Several files, read one after the other as if they were one. Throws ReadError.
class Input {
 public:
  /// "-" is standard input, and so is an empty list. A file that is missing is an error only when it is read.
  explicit Input(const std::vector<std::string>& files);

  /// Reads the next bytes behind those in the buffer; false at the end. Waits until there are some.
  bool read(ByteBuffer& buffer);

  /// Whether all of it is in files that can be read twice.
  bool canBeReadAgain() const { return canBeReadAgain_; }

  /// Begins anew. A file that was read to its end will end there again, however it has grown; one that has
  /// become shorter is an error.
  void readAgain();

 private:
  struct Source {
    std::string file;
    std::unique_ptr<ByteReader> reader;
    std::uint64_t read = 0;               // bytes
    std::optional<std::uint64_t> length;  // once its end was seen
  };

  static std::size_t readFrom(Source& source, ByteBuffer& buffer);

  std::vector<Source> sources_;
  std::size_t next_ = 0;
  bool canBeReadAgain_ = true;
};

}  // namespace lexwend
