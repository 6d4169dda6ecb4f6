// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/fake/fake_system.h"
#include "platform/pasteboard.h"

namespace lexwend::platform {

/// The type identifier of plain text.
inline constexpr std::string_view kPlainTextType = "public.utf8-plain-text";

Bytes bytesOf(std::string_view text);
std::string textOf(const Bytes& bytes);

/// One type of an item. Promised data is fetched when it is read.
struct FakePasteboardEntry {
  std::string type;
  std::optional<Bytes> bytes;              ///< nothing: a promise that its owner does not keep
  std::chrono::milliseconds fetchTime{0};  ///< how long a reader is blocked

  static FakePasteboardEntry text(std::string_view text) {
    return {std::string(kPlainTextType), bytesOf(text), std::chrono::milliseconds(0)};
  }
  static FakePasteboardEntry data(std::string_view type, std::string_view bytes) {
    return {std::string(type), bytesOf(bytes), std::chrono::milliseconds(0)};
  }
  static FakePasteboardEntry brokenPromise(std::string_view type) {
    return {std::string(type), std::nullopt, std::chrono::milliseconds(0)};
  }
  bool operator==(const FakePasteboardEntry&) const = default;
};
using FakePasteboardItemContents = std::vector<FakePasteboardEntry>;

/// A pasteboard in memory. An item that was read before a change gives no data after it.
class FakePasteboard : public Pasteboard {
 public:
  explicit FakePasteboard(FakeSystem& system) : system_(system) {}

  std::optional<std::vector<std::unique_ptr<PasteboardItem>>> items() override;
  bool mayRefuseReading() override { return mayRefuse_; }
  std::int64_t changeCount() override { return changeCount_; }
  void clearContents() override;
  std::optional<std::string> string() override;
  void setString(std::string_view text) override;
  void writeItems(const std::vector<PasteboardItemData>& items) override;

  // Controls of a test.
  /// Another application replaces the contents.
  void otherAppWrites(std::vector<FakePasteboardItemContents> contents,
                      std::string owner = "another application");
  void otherAppCopies(std::string_view text) { otherAppWrites({{FakePasteboardEntry::text(text)}}); }
  void otherAppClears() { otherAppWrites({}); }
  /// The pasteboard reports no list of items in place of an empty list.
  void reportNoItems(bool none) { reportsNone_ = none; }
  /// The system is one that may keep the contents from the program.
  void mayRefuseReading(bool may) { mayRefuse_ = may; }
  const std::vector<FakePasteboardItemContents>& contents() const { return contents_; }
  /// The last writer: "the program" or the name of an application; empty at the start.
  const std::string& owner() const { return owner_; }
  /// The plain text. Makes no entry in the call log.
  std::optional<std::string> plainText() const;

 private:
  FakeSystem& system_;
  std::vector<FakePasteboardItemContents> contents_;
  std::string owner_;
  std::int64_t changeCount_ = 1;
  bool reportsNone_ = false;
  bool mayRefuse_ = false;
  bool cleared_ = false;
};

}  // namespace lexwend::platform
