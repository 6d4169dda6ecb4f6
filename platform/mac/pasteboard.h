// SPDX-License-Identifier: MIT
#pragma once

#include "platform/pasteboard.h"

namespace lexwend::platform::mac {

/// The general NSPasteboard. Main thread only. Reading waits for the application that has promised the data,
/// and for the user where the system asks.
class MacPasteboard : public Pasteboard {
 public:
  std::optional<std::vector<std::unique_ptr<PasteboardItem>>> items() override;
  bool mayRefuseReading() override;
  std::int64_t changeCount() override;
  void clearContents() override;
  std::optional<std::string> string() override;
  void setString(std::string_view text) override;
  void writeItems(const std::vector<PasteboardItemData>& items) override;
};

}  // namespace lexwend::platform::mac
