// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <system_error>

namespace lexwend {

/// Bytes from a file or from standard input, as they arrive. POSIX: the C library's streams would wait for a
/// full buffer. Throws std::system_error when the system reports an error.
class ByteReader {
 public:
  /// Whether it is a file of bytes that stay: no pipe, no terminal, no file that the system makes up as it is
  /// read.
  static bool canRewind(const std::string& path);

  /// Opens a file; "-" is standard input, which is left open.
  explicit ByteReader(const std::string& path);
  ~ByteReader();
  ByteReader(const ByteReader&) = delete;
  ByteReader& operator=(const ByteReader&) = delete;

  /// Waits until there is something, and reads no more than `room` bytes of it. Returns how many; 0 at the
  /// end. Serves descriptors that do not block too.
  std::size_t read(char* bytes, std::size_t room);

  /// Back to where it stood when it was opened.
  void rewind();

 private:
  int descriptor_;
  bool owned_;
  std::int64_t begin_;  // -1 where there are no positions
};

/// Bytes for a descriptor that is already open. Throws std::system_error when the system reports an error.
class ByteWriter {
 public:
  enum class Target { standardOutput, standardError };

  explicit ByteWriter(Target target);

  /// Keeps the bytes until flush(), or writes them once there are many.
  void write(std::string_view bytes);

  /// Writes all that is kept, however few bytes the system takes at a time.
  void flush();

  /// Flushes and closes: some file systems report a failed write only then.
  void finish();

 private:
  int descriptor_;
  bool wrote_ = false;
  std::string kept_;
};

}  // namespace lexwend
