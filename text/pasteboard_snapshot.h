// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

#include "platform/pasteboard.h"

namespace lexwend {

/// The contents of a pasteboard at one moment. The bytes are copies and stay valid when the pasteboard
/// changes. Promised data is fetched when the snapshot is made, which blocks as Pasteboard says. Main thread
/// only.
struct PasteboardSnapshot {
  /// One entry per item, in the pasteboard's order. Each type occurs once, with its bytes. A type whose data
  /// could not be had is missing, so an entry may be empty.
  std::vector<platform::PasteboardItemData> items;

  explicit PasteboardSnapshot(platform::Pasteboard& pasteboard);

  /// There was something, and nothing of it could be read.
  bool isUnreadable() const;

  /// Clears the pasteboard and writes the items back in one write; entries without types are left out.
  void restoreTo(platform::Pasteboard& pasteboard) const;
};

}  // namespace lexwend
