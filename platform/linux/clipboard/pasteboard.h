// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/clipboard/owner_thread.h"
#include "platform/linux/display/shortcut_key_events.h"
#include "platform/linux/selection/reader.h"
#include "platform/linux/selection/selections.h"
#include "platform/linux/selection/targets.h"
#include "platform/pasteboard.h"

namespace lexwend::platform {

/// What one look at the whole clipboard may cost.
struct PasteboardBudget {
  /// For everything together, except for a picture.
  std::chrono::milliseconds time{1000};
  /// For each single answer, and for each piece of one.
  std::chrono::milliseconds silence{400};
  std::size_t bytes = std::size_t{256} * 1024 * 1024;
  /// For everything with a picture, which its owner may encode only when it is asked.
  std::chrono::milliseconds picture{2500};
  /// For a clipboard manager that has taken over text of a line to a page.
  std::chrono::milliseconds takenOver{250};
};

/// The CLIPBOARD selection as a pasteboard, by the ICCCM (section 2). PRIMARY is never touched: applications
/// drop their selection when somebody else claims it.
///
/// An X clipboard holds one item. Its types are the owner's targets in the owner's order, without those that
/// are questions or commands (TARGETS, MULTIPLE, DELETE, ...) or answer with resources of the server (PIXMAP,
/// ...). encodedTypeName() says how a type is named whose answer is not what its name implies. A snapshot
/// that is written back is served again byte for byte. Of several items that are written the later ones add
/// the types that the earlier ones lack.
///
/// items() reads everything at once, within the budget. canBeGivenBack() says whether that was enough to put
/// it back. Of a picture one encoding that loses nothing is enough; typesLeftOut() names the others.
///
/// string() of a fix, that is after a copy shortcut that was played since the last items(), gives what the
/// program that got the shortcut has put there, or a clipboard manager has taken over from it, and nothing
/// that another program has copied. A copy of files has no string, nor has ill-formed UTF-8.
///
/// setString() writes text that passes through. It bears the mark by which clipboard histories leave an entry
/// out ("x-kde-passwordManagerHint" = "secret"). While it stands, items() gives what was there before it.
/// What takes its place, a clear included, waits until the program that got the paste shortcut has fetched
/// the text or has closed its window, 30 s at most; all other programs get the new contents meanwhile. Where
/// no paste shortcut was played it waits for half a second or the next question to this pasteboard.
///
/// What somebody else has copied during a fix stays: clearContents() and writeItems() do nothing then. Of
/// fixes in quick succession the first of their restores puts back what was read last. The others come too
/// late: clearContents() and writeItems() do nothing until the next items(). When a fix has ended without a
/// text, a copy by which its shortcut is answered late is undone for 30 s.
///
/// A history of the clipboard may fill a clipboard that is empty again after a fix with the text that the fix
/// had copied. For two seconds this is undone: the clipboard then holds the mark of a secret and nothing to
/// paste.
///
/// The change count counts the owner notifications of XFIXES: each claim, also a repeated one of the same
/// owner, the end of an owner, and the claims of this program. It is current while the main thread sleeps.
///
/// The destructor hands what is owned to a clipboard manager, which may take OwnerTimes::handOver, or without
/// one goes on serving until somebody has fetched it, for OwnerTimes::lastServe at most. Text that passes
/// through is not handed over: what the last items() found takes its place.
class LinuxPasteboard : public Pasteboard {
 public:
  /// What the pasteboard has to know of the shortcuts that were played last; nothing where none was.
  struct Needs {
    std::function<std::optional<PlayedShortcut>()> lastCopy;
    std::function<std::optional<PlayedShortcut>()> lastPaste;
  };

  /// The longest wait of string(), for both copies of a fix together. A toolkit may need most of it to make
  /// the text of a megabyte in many lines.
  static constexpr std::chrono::milliseconds kStringTime{1000};

  /// Connects to the display. Without one the pasteboard is empty, never changes, and writing does nothing;
  /// each items() tries again.
  explicit LinuxPasteboard(PasteboardBudget budget = {}, Needs needs = {}, const OwnerTimes& times = {},
                           const Selections& selections = selectionsOfX());
  ~LinuxPasteboard() override;

  std::optional<std::vector<std::unique_ptr<PasteboardItem>>> items() override;
  std::vector<std::string> typesLeftOut() override { return typesLeftOut_; }
  std::int64_t changeCount() override;
  void clearContents() override;
  std::optional<std::string> string() override;
  void setString(std::string_view text) override;
  void writeItems(const std::vector<PasteboardItemData>& items) override;

  /// Whether what the last items() found is held whole.
  bool canBeGivenBack() const { return canBeGivenBack_; }
  /// Whether a paste now would paste the text of setString(): nobody has copied something else since. Where
  /// another program owns the clipboard, waits for its answer as string() does.
  bool holdsPassingText();
  /// Whether the program that got the last paste shortcut has still to fetch the text of setString(). A copy
  /// shortcut now would copy once more what the paste is to replace. A program that has not fetched it for
  /// two seconds counts as one that does not paste.
  bool pasteIsUnderWay();

 private:
  using Clock = std::chrono::steady_clock;
  /// The text that was written last, until something takes its place.
  struct PassingText {
    std::string text;
    Clock::time_point since;
  };

  bool connect();
  std::optional<std::string> copiedText();
  std::optional<PlayedShortcut> copyOfThisFix() const;
  OwnerThread::CopyShortcuts copyShortcuts(const PlayedShortcut& copy) const;
  std::optional<PlayedShortcut> pasteOfPassingText() const;
  bool isFromManager(const XApplication& application);
  bool isFromCopier(xcb_window_t owner, const XApplication& copier);
  bool isCopiedSinceThePaste();
  bool nothingIsToPutBack();
  bool passingTextStands();
  bool somebodyElseHasCopied();
  void forgetSoon();
  void forget();
  void keepEmpty();
  void stopKeepingEmpty();
  bool emptyAgain();

  PasteboardBudget budget_;
  Needs needs_;
  OwnerTimes times_;
  Selections selections_;
  std::unique_ptr<OwnerThread> owner_;  // both are null without a display
  std::unique_ptr<ClipboardReader> reader_;
  bool canBeGivenBack_ = true;
  std::vector<std::string> typesLeftOut_;
  /// What the last items() found, for as long as it may have to be put back.
  std::optional<ClipboardContents> lastRead_;
  Clock::time_point readAt_;
  std::int64_t changesAtRead_ = 0;
  /// The change of the clipboard that the text of a fix was read from; 0 where it may have changed meanwhile.
  std::int64_t changeOfCopy_ = 0;
  std::chrono::milliseconds stringTimeLeft_ = kStringTime;
  std::optional<PassingText> passing_;
  bool passingIsOver_ = true;
  /// Whether a fix has put back what the last items() found.
  bool isPutBack_ = false;
  /// Whether the restores of the fixes before the last items() have nothing to put back any more.
  bool earlierIsOver_ = false;
  unsigned forgetting_ = 0;  // the source in the main context
  /// What the fix has copied, until its restore is over.
  std::optional<std::string> copied_;
  Clock::time_point keptEmptyUntil_;
  unsigned keepingEmpty_ = 0;  // the source in the main context
};

}  // namespace lexwend::platform
