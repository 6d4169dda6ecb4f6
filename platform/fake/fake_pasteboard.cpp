// SPDX-License-Identifier: MIT
#include "platform/fake/fake_pasteboard.h"

#include <memory>
#include <utility>

namespace lexwend::platform {
namespace {

/// One item as it was when it was read.
class FakePasteboardItem : public PasteboardItem {
 public:
  FakePasteboardItem(FakeSystem& system, FakePasteboard& pasteboard, std::size_t index)
      : system_(system), pasteboard_(pasteboard), index_(index), changeCount_(pasteboard.changeCount()) {}

  std::vector<std::string> types() override {
    std::vector<std::string> types;
    if (stale()) return types;
    for (const auto& entry : pasteboard_.contents()[index_]) types.push_back(entry.type);
    return types;
  }
  std::optional<Bytes> data(const std::string& type) override {
    system_.called("pasteboardItem.data " + type);
    if (stale()) return std::nullopt;
    for (const auto& entry : pasteboard_.contents()[index_]) {
      if (entry.type != type) continue;
      system_.clock.sleep(entry.fetchTime);
      return entry.bytes;
    }
    return std::nullopt;
  }

 private:
  bool stale() const { return pasteboard_.changeCount() != changeCount_; }

  FakeSystem& system_;
  FakePasteboard& pasteboard_;
  std::size_t index_;
  std::int64_t changeCount_;
};

}  // namespace

Bytes bytesOf(std::string_view text) {
  const auto* first = reinterpret_cast<const std::byte*>(text.data());
  return {first, first + text.size()};
}

std::string textOf(const Bytes& bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

std::optional<std::vector<std::unique_ptr<PasteboardItem>>> FakePasteboard::items() {
  system_.called("pasteboard.items");
  if (reportsNone_) return std::nullopt;
  std::vector<std::unique_ptr<PasteboardItem>> items;
  for (std::size_t i = 0; i < contents_.size(); ++i) {
    items.push_back(std::make_unique<FakePasteboardItem>(system_, *this, i));
  }
  return items;
}

void FakePasteboard::clearContents() {
  system_.called("pasteboard.clearContents");
  contents_.clear();
  owner_ = "the program";
  ++changeCount_;
  cleared_ = true;
}

std::optional<std::string> FakePasteboard::string() {
  system_.called("pasteboard.string");
  return plainText();
}

void FakePasteboard::setString(std::string_view text) {
  system_.called("pasteboard.setString");
  if (!cleared_) system_.complain("pasteboard.setString without a clearContents before it");
  contents_ = {{FakePasteboardEntry::text(text)}};
  cleared_ = false;
}

void FakePasteboard::writeItems(const std::vector<PasteboardItemData>& items) {
  system_.called("pasteboard.writeItems " + std::to_string(items.size()));
  if (!cleared_) system_.complain("pasteboard.writeItems without a clearContents before it");
  for (const auto& item : items) {
    FakePasteboardItemContents contents;
    for (const auto& [type, bytes] : item) {
      contents.push_back({type, bytes, std::chrono::milliseconds(0)});
    }
    contents_.push_back(std::move(contents));
  }
  cleared_ = false;
}

void FakePasteboard::otherAppWrites(std::vector<FakePasteboardItemContents> contents, std::string owner) {
  contents_ = std::move(contents);
  owner_ = std::move(owner);
  ++changeCount_;
  cleared_ = false;
}

std::optional<std::string> FakePasteboard::plainText() const {
  for (const auto& item : contents_) {
    for (const auto& entry : item) {
      if (entry.type == kPlainTextType && entry.bytes) return textOf(*entry.bytes);
    }
  }
  return std::nullopt;
}

}  // namespace lexwend::platform
