// SPDX-License-Identifier: MIT
// A stream in chunks, put together again from its records: nothing is lost, nothing added, no record holds a
// separator. The first byte is the size of the chunks.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "tools/record_splitter.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string_view stream(reinterpret_cast<const char*>(data) + 1, size - 1);
  const std::size_t chunkSize = data[0] + std::size_t{1};
  lexwend::RecordSplitter splitter('\n');
  std::string joined;
  for (std::size_t begin = 0; begin < stream.size(); begin += chunkSize) {
    splitter.feed(stream.substr(begin, chunkSize), [&](std::string_view record) {
      if (record.find('\n') != std::string_view::npos) std::abort();
      joined += record;
      joined += '\n';
    });
  }
  joined += splitter.unfinished();
  if (joined != stream || splitter.unfinished().find('\n') != std::string_view::npos) std::abort();
  return 0;
}
