// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstddef>
#include <memory>

#include "platform/linux/clipboard_data.h"
#include "platform/pasteboard.h"

namespace lexwend::platform {

class ClipboardOwner;
class ClipboardReader;

/// What one look at the whole clipboard may cost.
struct PasteboardBudget {
  /// For everything together.
  std::chrono::milliseconds time{1000};
  /// For each single answer, and for each piece of one.
  std::chrono::milliseconds silence{400};
  std::size_t bytes = std::size_t{256} * 1024 * 1024;
};

/// The CLIPBOARD selection as a pasteboard, by the ICCCM (section 2). PRIMARY is never touched: applications
/// drop their selection when somebody else claims it.
///
/// An X clipboard holds one item. Its types are the owner's targets in the owner's order, but for those that
/// are questions or commands (TARGETS, TIMESTAMP, MULTIPLE, SAVE_TARGETS, DELETE, INSERT_SELECTION, ...) and
/// those that answer with resources of the server (PIXMAP, ...). Where a target's answer is not what its name
/// alone says (its property type is another atom than the target, or its format is not 8) the type is
/// encoded: see encodedTypeName(). So a snapshot that is written back is served again byte for byte, type for
/// type. Items after the first that writeItems() is given add the types that those before them lack.
///
/// items() reads everything at once, within the budget. If the owner is too slow or too big for it,
/// lastReadWasOverBudget() says so until the next items(), and until then nothing is written or cleared: what
/// stands there could not be put back, and what takes its place meanwhile is another application's. Whoever
/// would make an application copy must refrain as well.
///
/// setString() writes text that only passes through: it is marked with "x-kde-passwordManagerHint" =
/// "secret", the sign by which clipboard histories leave an entry out. What writeItems() puts back bears that
/// mark only if it bore it before.
///
/// The change count counts the owner notifications of XFIXES: each claim, also a repeated one of the same
/// owner, the end of an owner, and the claims of this program. Another thread counts, so that the count is
/// current while the main thread sleeps; that thread also serves what was written.
///
/// At destruction what is owned is handed over to a clipboard manager (SAVE_TARGETS), if there is one, which
/// may take kHandOverTime. Text that only passes through is not: should the program end while it is on the
/// clipboard, what the last items() found there takes its place.
class LinuxPasteboard : public Pasteboard {
 public:
  static constexpr std::chrono::milliseconds kHandOverTime{2000};
  /// The longest wait of string() for one answer is the budget's silence, and for everything this.
  static constexpr std::chrono::milliseconds kStringTime{500};

  /// Connects to the display of DISPLAY. Without one the pasteboard is empty, never changes, and writing does
  /// nothing.
  explicit LinuxPasteboard(PasteboardBudget budget = {});
  ~LinuxPasteboard() override;

  std::optional<std::vector<std::unique_ptr<PasteboardItem>>> items() override;
  std::int64_t changeCount() override;
  void clearContents() override;
  std::optional<std::string> string() override;
  void setString(std::string_view text) override;
  void writeItems(const std::vector<PasteboardItemData>& items) override;

  bool lastReadWasOverBudget() const { return overBudget_; }

 private:
  bool mayWrite() const { return owner_ != nullptr && !overBudget_; }

  PasteboardBudget budget_;
  std::unique_ptr<ClipboardOwner> owner_;
  std::unique_ptr<ClipboardReader> reader_;
  bool overBudget_ = false;
  /// What the last items() found, until it is put back.
  ClipboardContents lastRead_;
};

}  // namespace lexwend::platform
