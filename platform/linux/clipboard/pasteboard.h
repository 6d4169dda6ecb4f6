// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>

#include "platform/linux/clipboard/targets.h"
#include "platform/pasteboard.h"

namespace lexwend::platform {

class ClipboardOwner;
class ClipboardReader;

/// What one look at the whole clipboard may cost, and how long text that passes is left alone.
struct PasteboardBudget {
  /// For everything together, but for a first look at the text where some passes (kStringTime).
  std::chrono::milliseconds time{1000};
  /// For each single answer, and for each piece of one.
  std::chrono::milliseconds silence{400};
  std::size_t bytes = std::size_t{256} * 1024 * 1024;
  /// What an application is given to fetch text that passes, also where what an earlier fix has kept is put
  /// back meanwhile.
  std::chrono::milliseconds fetch{500};
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
/// items() reads everything at once, within the budget. If the owner is too slow or too big for it, the
/// clipboard is withheld until the next items(): it has no text, and nothing is written or cleared. What
/// stands there could not be put back, and what takes its place meanwhile is another application's. Whoever
/// would make an application copy must refrain as well. The same holds after copyWasRefused().
///
/// setString() writes text that only passes through: it is marked with "x-kde-passwordManagerHint" =
/// "secret", the sign by which clipboard histories leave an entry out. What writeItems() puts back bears that
/// mark only if it bore it before. While that text stands, whoever serves it, items() gives what was there
/// before it, and it may be replaced even where the clipboard is withheld. It stays for the budget's fetch
/// time, unless another application copies or something is asked of this pasteboard: what is put back sooner
/// waits.
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
  /// The longest wait of string(). A toolkit may need most of it to make the text of a megabyte in many
  /// lines.
  static constexpr std::chrono::milliseconds kStringTime{1000};

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
  /// No application was made to copy: what is copied now is not the selection.
  void copyWasRefused() { copyRefused_ = true; }
  bool isWithheld() const { return overBudget_ || copyRefused_; }

 private:
  bool mayWrite();
  bool passingTextStands();
  void forgetUnlessTextPasses();

  PasteboardBudget budget_;
  std::unique_ptr<ClipboardOwner> owner_;
  std::unique_ptr<ClipboardReader> reader_;
  bool overBudget_ = false;
  bool copyRefused_ = false;
  /// What the last items() found, for as long as it may have to be put back.
  std::optional<ClipboardContents> lastRead_;
  /// What the last setString() wrote, until something takes its place.
  std::optional<std::string> passingText_;
  unsigned forgetting_ = 0;  // the source in the main context
};

}  // namespace lexwend::platform
