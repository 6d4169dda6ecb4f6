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

/// One item of the pasteboard. Its data is read from the pasteboard when it is asked for.
class PasteboardItem {
 public:
  virtual ~PasteboardItem() = default;
  /// Type identifiers in the item's order. Of a type that stands there twice, data() gives the first.
  virtual std::vector<std::string> types() = 0;
  /// The bytes of a type. Promised data is fetched from its owner. Nothing when that fails.
  virtual std::optional<Bytes> data(const std::string& type) = 0;
};

/// One item to write: its types, each once, with their bytes. They are set in this order.
using PasteboardItemData = std::vector<std::pair<std::string, Bytes>>;

/// A pasteboard. Main thread only. A host also serves what it wrote while the main thread sleeps.
///
/// A call that needs another application's answer blocks until the answer comes or a time limit has passed.
/// Data that has not come by then counts as missing. On macOS the system sets the limit. On Linux it is 2.75
/// seconds for items(), which fetches all data, one second for all string() calls of a fix together, and a
/// quarter of a second for each clearContents() and writeItems().
///
/// On Linux clearContents() and writeItems() change nothing when the user or another program has copied since
/// the copy shortcut. After a setString() the application that got the paste shortcut keeps getting that text
/// until it has fetched it, for at most 30 seconds. All other programs get later contents at once. Wayland
/// does not tell programs apart: there all get that text until the first has fetched it.
class Pasteboard {
 public:
  virtual ~Pasteboard() = default;
  /// The items in order. Nothing when the pasteboard reports none. On Linux, while text of setString() is on
  /// the pasteboard, these are the items that it replaced.
  virtual std::optional<std::vector<std::unique_ptr<PasteboardItem>>> items() = 0;
  /// Types that the last items() left out for lack of time: further encodings of a picture that it has in
  /// another one. For the log: printable ASCII, each at most 200 bytes.
  virtual std::vector<std::string> typesLeftOut() { return {}; }
  /// True when the system may refuse this program the contents, as macOS 15.4 and later do when the user
  /// says no. Items without readable data then mean a refusal.
  virtual bool mayRefuseReading() { return false; }
  /// Grows with every change of the contents, whoever made it.
  virtual std::int64_t changeCount() = 0;
  /// Empties the pasteboard and makes this process its owner.
  virtual void clearContents() = 0;
  /// The plain text (UTF-8), or nothing when there is none. On Linux, after a copy shortcut, only what the
  /// application that got the shortcut has copied counts. A copy of files has no text. Neither has ill-formed
  /// UTF-8, which an application gives for a selection that cuts a character.
  virtual std::optional<std::string> string() = 0;
  /// Writes transient plain text, after a clearContents(). Only on Linux it carries the mark that keeps it
  /// out of clipboard histories.
  virtual void setString(std::string_view text) = 0;
  /// Makes an item of each entry and writes all of them at once, after a clearContents(). Where a pasteboard
  /// holds one item only, they become one.
  virtual void writeItems(const std::vector<PasteboardItemData>& items) = 0;
};
using PasteboardRef = std::shared_ptr<Pasteboard>;

/// The general pasteboard of the installed host, the one of Copy and Paste. The caller shares its ownership.
PasteboardRef generalPasteboard();

}  // namespace lexwend::platform
