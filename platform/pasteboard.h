// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lexwend::platform {

using Bytes = std::vector<std::byte>;

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

/// A pasteboard. Main thread only; a host goes on serving what it wrote while the main thread sleeps.
/// The operations that need an answer of another application block until it comes: on Linux items(), which
/// fetches all data, two seconds at most and every other a second; on macOS as long as the
/// system lets them.
class Pasteboard {
 public:
  virtual ~Pasteboard() = default;
  /// The items in order; nothing when the pasteboard reports none. On Linux, while text of setString()
  /// stands, what was there before it.
  virtual std::optional<std::vector<std::unique_ptr<PasteboardItem>>> items() = 0;
  /// True when the system may keep the contents from this program, as macOS 15.4 and later do when the user
  /// says no: items of which nothing can be read were refused then.
  virtual bool mayRefuseReading() { return false; }
  /// Grows with every change of the contents, whoever made it.
  virtual std::int64_t changeCount() = 0;
  virtual void clearContents() = 0;
  /// The plain text (UTF-8), or nothing when there is none.
  virtual std::optional<std::string> string() = 0;
  /// Writes the plain text, which is to pass through only: on Linux, and nowhere else, it is marked for
  /// clipboard histories to leave it out. Follows a clearContents().
  virtual void setString(std::string_view text) = 0;
  /// Makes a new item of each entry and writes all of them at once; where a pasteboard has room for one, they
  /// become one. Follows a clearContents().
  virtual void writeItems(const std::vector<PasteboardItemData>& items) = 0;
};
using PasteboardRef = std::shared_ptr<Pasteboard>;

/// The general pasteboard of the installed host, the one of Copy and Paste. The reference may outlive the
/// call.
PasteboardRef generalPasteboard();

}  // namespace lexwend::platform
