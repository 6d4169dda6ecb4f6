// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace lexwend::simd {

/// One direction of a map in the form that vectors look up: the bytes 00 to 7F stand for the ASCII
/// characters, 80 to BF, the last bytes of U+05C0 to U+05FF, for those.
class ByteTable {
 public:
  /// The target of a byte that only the plain way converts.
  static constexpr std::uint8_t kNotInBlocks = 0xFF;

  /// The sixteen bytes whose upper half is `high`: of each the difference to its target, 0 when it stays.
  struct Row {
    alignas(16) std::array<std::uint8_t, 16> differences{};
    std::uint8_t high = 0;
  };

  explicit ByteTable(bool sourceIsHebrew) : sourceIsHebrew_(sourceIsHebrew) {}

  bool sourceIsHebrew() const { return sourceIsHebrew_; }

  /// `source`, less than C0, becomes `target`.
  void set(std::uint8_t source, std::uint8_t target);

  const Row* begin() const { return rows_.data(); }
  const Row* end() const { return rows_.data() + used_; }

 private:
  std::array<Row, 12> rows_{};
  std::uint8_t used_ = 0;
  bool sourceIsHebrew_;
};

enum class Words : std::uint8_t {
  every,     ///< Each word is converted whole: the text keeps to one script.
  ofSource,  ///< Only words with letters of the source script are; of those with both, only these letters.
};

struct BlockProgress {
  std::size_t read = 0;     ///< Bytes of the text that are done; a word of a mixed text is done or not begun.
  std::size_t written = 0;  ///< Bytes that were put out for them.
  bool changed = false;     ///< Whether the two differ.
};

/// Bytes that are read at once.
constexpr std::size_t kBlock = 64;
/// Bytes of output that a block may touch: its own at most twice, and 64 that are overwritten later.
constexpr std::size_t kRoomOfBlock = 2 * kBlock + 64;

/// Converts whole blocks from the start of a text, as long as they hold only ASCII, Hebrew letters, points
/// and accents and `room` is at least kRoomOfBlock. The caller converts the rest scalar by scalar. That
/// conversion defines the result of this one. The text must begin at a character. When only some words are
/// converted, it must begin at a word or at a space.
///
/// Reads nothing when the processor or the build has no vectors. Any thread.
BlockProgress convertBlocks(const ByteTable& table, Words words, std::string_view text, char* output,
                            std::size_t room);

/// Skips whole blocks from `from` on that hold no Latin letter of ASCII. Without vectors it returns `from`.
std::size_t skipToLatin(std::string_view text, std::size_t from);

/// The kinds of vectors of this processor and build, best first. The last one is "none".
std::vector<std::string_view> vectorKinds();

/// Uses that kind from now on; false when it is not there. For tests and benchmarks: otherwise the best kind
/// is used.
bool useVectors(std::string_view name);

}  // namespace lexwend::simd
