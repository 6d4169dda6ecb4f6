// SPDX-License-Identifier: MIT
#include "platform/linux/pasteboard.h"

#include <algorithm>

#include "platform/linux/clipboard_owner.h"
#include "platform/linux/clipboard_reader.h"

namespace lexwend::platform {
namespace {

/// An item that has been read already.
class ReadItem : public PasteboardItem {
 public:
  explicit ReadItem(ClipboardContents contents) : contents_(std::move(contents)) {}

  std::vector<std::string> types() override {
    std::vector<std::string> types;
    for (const ClipboardTarget& target : contents_) {
      types.push_back(encodedTypeName(target));
    }
    return types;
  }

  std::optional<Bytes> data(const std::string& type) override {
    const auto found = std::find_if(contents_.begin(), contents_.end(), [&](const ClipboardTarget& target) {
      return encodedTypeName(target) == type;
    });
    return found == contents_.end() ? std::nullopt : std::optional<Bytes>(*found->bytes);
  }

 private:
  ClipboardContents contents_;
};

}  // namespace

LinuxPasteboard::LinuxPasteboard(PasteboardBudget budget)
    : budget_(budget), owner_(ClipboardOwner::open(kHandOverTime)) {
  if (owner_) {
    reader_ = ClipboardReader::open();
  }
}

LinuxPasteboard::~LinuxPasteboard() {
  if (owner_) {
    owner_->replacePassingAtEnd(std::move(lastRead_));
  }
}

std::optional<std::vector<std::unique_ptr<PasteboardItem>>> LinuxPasteboard::items() {
  overBudget_ = false;
  lastRead_.clear();
  if (!reader_) {
    return std::nullopt;
  }
  owner_->settle();
  ClipboardReader::Result result = reader_->readAll({budget_.time, budget_.silence, budget_.bytes});
  std::vector<std::unique_ptr<PasteboardItem>> items;
  switch (result.outcome) {
    case ClipboardReader::Outcome::noOwner:
      return items;
    case ClipboardReader::Outcome::overBudget:
      overBudget_ = true;
      break;
    case ClipboardReader::Outcome::complete:
      lastRead_ = result.contents;  // shares the bytes
      break;
  }
  items.push_back(std::make_unique<ReadItem>(std::move(result.contents)));
  return items;
}

std::int64_t LinuxPasteboard::changeCount() {
  if (!owner_) {
    return 0;
  }
  owner_->settle();
  return owner_->changeCount();
}

void LinuxPasteboard::clearContents() {
  if (mayWrite()) {
    owner_->clear();
  }
}

std::optional<std::string> LinuxPasteboard::string() {
  if (!reader_) {
    return std::nullopt;
  }
  owner_->settle();
  return reader_->readText({kStringTime, budget_.silence, budget_.bytes});
}

void LinuxPasteboard::setString(std::string_view text) {
  if (mayWrite()) {
    owner_->claim(passingTextContents(text), ClipboardOwner::Purpose::passing);
  }
}

void LinuxPasteboard::writeItems(const std::vector<PasteboardItemData>& items) {
  if (!mayWrite()) {
    return;
  }
  ClipboardContents contents;
  for (const PasteboardItemData& item : items) {
    for (const auto& [typeName, bytes] : item) {
      ClipboardTarget target = targetOfTypeName(typeName);
      const bool known = std::any_of(contents.begin(), contents.end(),
                                     [&](const ClipboardTarget& other) { return other.name == target.name; });
      if (!known) {
        target.bytes = std::make_shared<const Bytes>(bytes);
        contents.push_back(std::move(target));
      }
    }
  }
  owner_->claim(std::move(contents), ClipboardOwner::Purpose::lasting);
  lastRead_.clear();
}

}  // namespace lexwend::platform
