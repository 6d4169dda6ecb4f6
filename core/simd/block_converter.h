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
  static constexpr std::uint8_t kNotInBlocks =
      0xFF;  ///< What a byte becomes that only the plain way converts.

  /// The sixteen bytes whose upper half is `high`: what each differs by from what it becomes, 0 when it
  /// stays.
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

constexpr std::size_t kBlock = 64;  ///< What is read at once, in bytes.
constexpr std::size_t kRoomOfBlock =
    2 * kBlock + 64;  ///< What a block may need: its bytes, and room to scribble.

/// Converts from the start of a text as far as it is made of ASCII, Hebrew letters, points and accents, whole
/// blocks of it, and while `room` holds what a block may need. It stops early at everything else; the caller
/// goes on from there, one scalar after the other, and that way defines what a block becomes. The text must
/// begin at a character and, where only some words are converted, at a word, or at a space.
///
/// Where the processor has no vectors, or the build none, it reads nothing. Any thread.
BlockProgress convertBlocks(const ByteTable& table, Words words, std::string_view text, char* output,
                            std::size_t room);

/// A place at `from` or behind it that no byte A to Z or a to z stands before, and a block behind which one
/// does, or the text ends. Without vectors it is `from`.
std::size_t skipToLatin(std::string_view text, std::size_t from);

/// The kinds of vectors that there are here, best first; the last one is "none".
std::vector<std::string_view> vectorKinds();

/// Uses that kind from now on; false when it is not there. For tests and benchmarks: the best is used unless
/// told otherwise.
bool useVectors(std::string_view name);

}  // namespace lexwend::simd
