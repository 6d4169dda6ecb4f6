// SPDX-License-Identifier: MIT
#include "tools/input.h"

#include <algorithm>
#include <system_error>

namespace lexwend {
namespace {

constexpr std::size_t kChunk = std::size_t{256} * 1024;  // stays in the second cache
constexpr std::size_t kMostKeptOpen = 64;  // files; a process may have no more than a few hundred

std::string nameOf(const std::string& file) {
  return file == "-" ? "standard input" : file;
}

}  // namespace

Input::Input(const std::vector<std::string>& files) {
  for (const std::string& file : files) sources_.push_back({file, {}, 0, {}});
  if (files.empty()) sources_.push_back({"-", {}, 0, {}});
  canBeReadAgain_ = sources_.size() <= kMostKeptOpen &&
                    std::all_of(sources_.begin(), sources_.end(),
                                [](const Source& source) { return ByteReader::canRewind(source.file); });
}

bool Input::read(ByteBuffer& buffer) {
  for (; next_ < sources_.size(); ++next_) {
    Source& source = sources_[next_];
    try {
      if (!source.reader) source.reader = std::make_unique<ByteReader>(source.file);
      if (readFrom(source, buffer) > 0) return true;
    } catch (const std::system_error& error) {
      throw ReadError{nameOf(source.file), error.code().message()};
    }
    if (!canBeReadAgain_) source.reader.reset();
  }
  return false;
}

void Input::readAgain() {
  // Standard input, where it is named twice, begins where the first of the two began.
  for (auto source = sources_.rbegin(); source != sources_.rend(); ++source) {
    try {
      if (source->reader) source->reader->rewind();
    } catch (const std::system_error& error) {
      throw ReadError{nameOf(source->file), error.code().message()};
    }
    source->read = 0;
  }
  next_ = 0;
}

// How many bytes it read, 0 at the end.
std::size_t Input::readFrom(Source& source, ByteBuffer& buffer) {
  const std::uint64_t left = source.length ? *source.length - source.read : kChunk;
  const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(left, kChunk));
  if (wanted == 0) return 0;
  const std::size_t count = source.reader->read(buffer.room(wanted), wanted);
  if (count == 0 && source.length) throw ReadError{nameOf(source.file), "became shorter while it was read"};
  if (count == 0) source.length = source.read;
  buffer.add(count);
  source.read += count;
  return count;
}

}  // namespace lexwend
