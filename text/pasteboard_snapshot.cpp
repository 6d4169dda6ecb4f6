// SPDX-License-Identifier: MIT
#include "text/pasteboard_snapshot.h"

#include <algorithm>
#include <string>
#include <utility>

namespace lexwend {
namespace {

void store(platform::PasteboardItemData& entry, const std::string& type, platform::Bytes bytes) {
  const auto same =
      std::find_if(entry.begin(), entry.end(), [&](const auto& pair) { return pair.first == type; });
  if (same != entry.end()) {
    same->second = std::move(bytes);  // the last of equal types wins
  } else {
    entry.emplace_back(type, std::move(bytes));
  }
}

}  // namespace

PasteboardSnapshot::PasteboardSnapshot(platform::Pasteboard& pasteboard) {
  const auto present = pasteboard.items();
  if (!present) return;
  for (const auto& item : *present) {
    platform::PasteboardItemData entry;
    for (const std::string& type : item->types()) {
      if (auto bytes = item->data(type)) store(entry, type, std::move(*bytes));
    }
    items.push_back(std::move(entry));
  }
}

bool PasteboardSnapshot::isUnreadable() const {
  return !items.empty() &&
         std::all_of(items.begin(), items.end(), [](const auto& entry) { return entry.empty(); });
}

void PasteboardSnapshot::restoreTo(platform::Pasteboard& pasteboard) const {
  pasteboard.clearContents();
  std::vector<platform::PasteboardItemData> filled;
  std::copy_if(items.begin(), items.end(), std::back_inserter(filled),
               [](const auto& entry) { return !entry.empty(); });
  if (!filled.empty()) pasteboard.writeItems(filled);
}

}  // namespace lexwend
