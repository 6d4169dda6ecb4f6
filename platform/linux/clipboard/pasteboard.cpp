// SPDX-License-Identifier: MIT
#include "platform/linux/clipboard/pasteboard.h"

#include <algorithm>

#include <glib.h>

#include "platform/linux/clipboard/owner.h"
#include "platform/linux/clipboard/reader.h"

namespace lexwend::platform {
namespace {

/// An item that has been read already.
class ReadItem : public PasteboardItem {
 public:
  explicit ReadItem(ClipboardContents contents) : contents_(std::move(contents)) {}

  std::vector<std::string> types() override {
    std::vector<std::string> types;
    for (const ClipboardTarget& target : contents_) types.push_back(encodedTypeName(target));
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
    : budget_(budget), owner_(ClipboardOwner::open(kHandOverTime, budget.fetch)) {
  if (owner_) reader_ = ClipboardReader::open();
}

LinuxPasteboard::~LinuxPasteboard() {
  if (forgetting_ != 0) g_source_remove(forgetting_);
  if (owner_ && lastRead_) owner_->replacePassingAtEnd(std::move(*lastRead_));
}

std::optional<std::vector<std::unique_ptr<PasteboardItem>>> LinuxPasteboard::items() {
  overBudget_ = false;
  copyRefused_ = false;
  if (!reader_) return std::nullopt;
  owner_->settle();
  if (!lastRead_ || !passingTextStands()) {
    passingText_.reset();
    ClipboardReader::Result result = reader_->readAll({budget_.time, budget_.silence, budget_.bytes});
    overBudget_ = result.outcome == ClipboardReader::Outcome::overBudget;
    lastRead_ = std::move(result.contents);
    forgetUnlessTextPasses();
  }
  std::vector<std::unique_ptr<PasteboardItem>> items;
  if (overBudget_ || !lastRead_->empty()) {
    items.push_back(std::make_unique<ReadItem>(*lastRead_));  // shares the bytes
  }
  return items;
}

std::int64_t LinuxPasteboard::changeCount() {
  if (!owner_) return 0;
  owner_->settle();
  return owner_->changeCount();
}

void LinuxPasteboard::clearContents() {
  if (mayWrite()) owner_->clear();
  passingText_.reset();
  forgetUnlessTextPasses();
}

std::optional<std::string> LinuxPasteboard::string() {
  if (!reader_ || isWithheld()) return std::nullopt;
  owner_->settle();
  return reader_->readText({kStringTime, kStringTime, budget_.bytes});
}

void LinuxPasteboard::setString(std::string_view text) {
  if (mayWrite()) {
    owner_->claim(passingTextContents(text), ClipboardOwner::Purpose::passing);
    passingText_ = text;
  }
}

void LinuxPasteboard::writeItems(const std::vector<PasteboardItemData>& items) {
  if (!mayWrite()) return;
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
  passingText_.reset();
  lastRead_.reset();
}

/// Whoever replaces the text that passes is about to put back what was there before it: from then on nothing
/// is withheld.
bool LinuxPasteboard::mayWrite() {
  if (isWithheld() && passingTextStands()) {
    overBudget_ = false;
    copyRefused_ = false;
  }
  return owner_ != nullptr && !isWithheld();
}

/// A clipboard manager may have taken it over: so the text tells, not the owner.
bool LinuxPasteboard::passingTextStands() {
  return reader_ && passingText_ &&
         reader_->readText({kStringTime, budget_.silence, budget_.bytes}) == passingText_;
}

/// A fix that writes does so before the main loop turns again. After one that wrote nothing, what it read
/// must not stay in memory.
void LinuxPasteboard::forgetUnlessTextPasses() {
  const auto forget = [](gpointer data) -> gboolean {
    auto& self = *static_cast<LinuxPasteboard*>(data);
    self.forgetting_ = 0;
    if (!self.passingText_) self.lastRead_.reset();
    return G_SOURCE_REMOVE;
  };
  if (forgetting_ == 0) forgetting_ = g_idle_add(forget, this);
}

}  // namespace lexwend::platform
