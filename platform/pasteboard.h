// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lexwend::platform {

/// Bytes that never change, in one buffer that all copies share. Any thread.
class Bytes {
 public:
  Bytes() = default;
  explicit Bytes(std::vector<std::byte> bytes)
      : bytes_(std::make_shared<const std::vector<std::byte>>(std::move(bytes))) {}
  Bytes(const std::byte* first, const std::byte* last) : Bytes(std::vector<std::byte>(first, last)) {}

  /// Null when they are empty.
  const std::byte* data() const { return bytes_ ? bytes_->data() : nullptr; }
  std::size_t size() const { return bytes_ ? bytes_->size() : 0; }
  bool operator==(const Bytes& other) const {
    return bytes_ == other.bytes_ ||
           std::equal(data(), data() + size(), other.data(), other.data() + other.size());
  }

 private:
  std::shared_ptr<const std::vector<std::byte>> bytes_;
};

/// One item of the pasteboard as it stands now, read piece by piece.
class PasteboardItem {
 public:
  virtual ~PasteboardItem() = default;
  /// Type identifiers in the item's order; a type may stand twice, and then has the data of the first.
  virtual std::vector<std::string> types() = 0;
  /// The bytes of a type, promised data fetched from its owner; nothing when they cannot be had.
  virtual std::optional<Bytes> data(const std::string& type) = 0;
};

/// One item to write: types, each once, with their bytes, in the order in which they are to be set.
using PasteboardItemData = std::vector<std::pair<std::string, Bytes>>;

/// A pasteboard. Main thread only. A host serves what it wrote while the main thread sleeps, too.
///
/// A call that needs another application's answer blocks until it comes or a time limit has passed; what has
/// not come by then counts as missing. On macOS the limit is the system's. On Linux it is 2.75 seconds for
/// items(), which fetches all data, a second for string() (of a fix all of them together), and a quarter of a
/// second each for clearContents() and writeItems().
///
/// On Linux what the user or another program has copied since a copy shortcut was played stays:
/// clearContents() and writeItems() leave it alone. What follows a setString() comes no sooner than the
/// application that got the paste shortcut has fetched the text, or after 30 seconds; all other programs get
/// it at once.
class Pasteboard {
 public:
  virtual ~Pasteboard() = default;
  /// The items in order; nothing when the pasteboard reports none. On Linux, as long as text of setString()
  /// is on the pasteboard, these are the items that it replaced.
  virtual std::optional<std::vector<std::unique_ptr<PasteboardItem>>> items() = 0;
  /// Types that the last items() left out because there was no time for them and they can be done without:
  /// further encodings of a picture. For the log: printable ASCII, each at most 200 bytes.
  virtual std::vector<std::string> typesLeftOut() { return {}; }
  /// True when the system may keep the contents from this program, as macOS 15.4 and later do when the user
  /// says no: items of which nothing can be read were refused then.
  virtual bool mayRefuseReading() { return false; }
  /// Grows with every change of the contents, whoever made it.
  virtual std::int64_t changeCount() = 0;
  /// Empties the pasteboard and makes this process its owner.
  virtual void clearContents() = 0;
  /// The plain text (UTF-8), or nothing when there is none. On Linux, after a copy shortcut, what the
  /// application that got it has copied and nobody else; a copy of files has none.
  virtual std::optional<std::string> string() = 0;
  /// Writes transient plain text, after a clearContents(). On Linux, and nowhere else, it carries the mark
  /// that keeps it out of clipboard histories.
  virtual void setString(std::string_view text) = 0;
  /// Makes an item of each entry and writes all of them at once, after a clearContents(). Where a pasteboard
  /// holds one item only, they become one.
  virtual void writeItems(const std::vector<PasteboardItemData>& items) = 0;
};
using PasteboardRef = std::shared_ptr<Pasteboard>;

/// The general pasteboard of the installed host, the one of Copy and Paste. The reference may outlive the
/// call.
PasteboardRef generalPasteboard();

}  // namespace lexwend::platform
