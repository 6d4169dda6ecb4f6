// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

#include "platform/linux/display/shortcut_key_events.h"
#include "platform/linux/selection/owner.h"
#include "platform/linux/selection/selections.h"
#include "platform/linux/selection/targets.h"

namespace lexwend::platform {

/// How long the thread waits for other programs.
struct OwnerTimes {
  /// For the clipboard manager, at the end of the program.
  std::chrono::milliseconds handOver{2000};
  /// At the end of the program, for a paste that has not been fetched yet, and again for anybody to fetch
  /// what is left where there is no clipboard manager.
  std::chrono::milliseconds lastServe{3000};
  /// Programs with a history of the clipboard fetch what is new on it at once, as an editor was seen to. For
  /// so long a fetch at the end of the program is theirs and no paste.
  std::chrono::milliseconds watchers{300};
  /// How long passing contents stay at least, when it is not known who is to fetch them.
  std::chrono::milliseconds fetch{500};
  /// How long passing contents stay at most for the program that they were pasted to.
  std::chrono::seconds patience{30};
  /// How long passing contents stay after they were fetched. A program with a history of the clipboard
  /// fetches twice: what is new, and what is pasted. One that was held up does both at once, after the paste
  /// shortcut. One that is held up between them gets so long again.
  std::chrono::milliseconds secondFetch{600};
  /// How long the answer to a copy shortcut is watched for after nobody has waited for it any more.
  std::chrono::seconds lateCopy{30};
};

/// The clipboard's owner on a thread of its own, so that it answers while the main thread waits. The public
/// operations are for one thread, the main thread; each waits for the thread to have carried it out, which
/// takes round trips to the display and waits for no other program.
class OwnerThread {
 public:
  using Clock = std::chrono::steady_clock;

  /// A change of the clipboard's owner.
  struct Change {
    /// Counts the changes.
    std::int64_t number = 0;
    /// XCB_WINDOW_NONE for a clipboard without owner.
    xcb_window_t owner = XCB_WINDOW_NONE;
    bool isOwn = false;
    /// When the claim was made by its own account: with most toolkits when the key for it was pressed.
    Clock::time_point claimed;
  };

  /// The copy shortcuts of a fix: a claim by that program as of a time between the two answers them.
  struct CopyShortcuts {
    XApplication application;
    Clock::time_point first;
    Clock::time_point last;
  };
  static bool isAnswerTo(const CopyShortcuts& shortcuts, const Change& change, const XApplication& claimant);

  /// Null when the clipboard cannot be owned.
  static std::unique_ptr<OwnerThread> open(const OwnerTimes& times, const Selections& selections);
  /// Ends the thread, when what is owned has been handed over to a clipboard manager or, where there is none,
  /// has been fetched by anybody since OwnerTimes::watchers. Blocks for at most OwnerTimes::lastServe and the
  /// longer of that and OwnerTimes::handOver.
  ~OwnerThread();
  OwnerThread(const OwnerThread&) = delete;
  OwnerThread& operator=(const OwnerThread&) = delete;

  /// The changes seen so far. Does not wait.
  std::int64_t changeCount() const { return changeCount_.load(); }
  /// The last of them, by a look at the server.
  Change lastChange();

  /// Claims the clipboard for text that passes through, at once. At the end of the program it is not handed
  /// over.
  void pass(ClipboardContents contents);
  /// Claims the clipboard for contents that stay, or leaves it without owner where they are empty.
  ///
  /// While contents of pass() are owned the claim waits: with a paste until that program has fetched them or
  /// its window is gone, OwnerTimes::patience at most; all other programs are given the new contents
  /// meanwhile. Without a paste it waits for OwnerTimes::fetch or for the next settle(), or for the paste for
  /// which a claim waits already, whose place it takes. Whoever claims the clipboard meanwhile, or has
  /// claimed it since the last lastChange(), keeps it.
  void stay(ClipboardContents contents, std::optional<PlayedShortcut> paste);
  /// As stay() with nothing, except that it waits a moment for what takes the place of the old contents: an
  /// empty clipboard in between would invite a clipboard manager to fill it.
  void clear(std::optional<PlayedShortcut> paste);
  /// Carries out what waits, except for a fetch.
  void settle();
  /// What waits to take the place of the passing contents that are owned; nothing where nothing waits.
  std::optional<ClipboardContents> waiting();
  /// Whether that program has still to fetch the passing contents that are owned.
  bool awaitsFetch(const PlayedShortcut& paste);

  /// Puts these contents back when an answer to the shortcuts comes within OwnerTimes::lateCopy, or has just
  /// come. Ends when anybody else copies.
  void putBackAfter(const CopyShortcuts& shortcuts, ClipboardContents contents);

  /// What takes the place of passing contents, should they be owned at the end.
  void replacePassingAtEnd(ClipboardContents contents) { atEnd_ = std::move(contents); }

 private:
  enum class CommandKind { pass, stay, clear, settle, putBackAfter, look, askForFetch, askForWaiting, stop };
  struct Command {
    CommandKind kind = CommandKind::settle;
    ClipboardContents contents{};
    std::optional<PlayedShortcut> paste{};
    std::optional<CopyShortcuts> shortcuts{};
  };
  /// A claim of contents that stay, carried out later.
  struct Deferred {
    ClipboardContents contents;
    xcb_timestamp_t time;
    Clock::time_point due;
    std::optional<PlayedShortcut> paste;
    Clock::time_point heldUpAt;  // when the pasting program was last seen so, after its fetch
  };
  struct LateCopy {
    CopyShortcuts shortcuts;
    ClipboardContents contents;
    std::int64_t changes;  // before the watch
    Clock::time_point until;
  };

  OwnerThread(const OwnerTimes& times, const Selections& selections);
  void post(Command command, bool wait);

  // Everything below runs on the thread.
  void run();
  std::optional<Command> takeCommand();
  void carryOut(Command& command);
  void finishCommand();
  std::optional<Clock::time_point> nextDue();
  void waitForWork(std::optional<Clock::time_point> until);
  void noteChange(const SelectionOwner::Change& change);
  void defer(ClipboardContents contents, std::chrono::milliseconds atLeast,
             std::optional<PlayedShortcut> paste);
  bool waitsForFetch() const { return deferred_ && deferred_->paste; }
  bool isDue();
  std::optional<Clock::time_point> pasteIsOver();
  void carryOutDeferred();
  void answerLateCopy();
  void serveUntil(Clock::time_point end, const std::function<bool()>& enough);
  void finish(const ClipboardContents& instead);

  OwnerTimes times_;
  std::atomic<std::int64_t> changeCount_{0};
  std::mutex mutex_;
  std::condition_variable finished_;
  // Under the mutex.
  std::deque<Command> commands_;
  std::uint64_t postedCommands_ = 0;
  std::uint64_t finishedCommands_ = 0;
  Change lastChange_;
  bool awaitsFetch_ = false;
  std::optional<ClipboardContents> waiting_;

  // Of the thread.
  bool passing_ = false;
  Clock::time_point passedAt_;
  std::optional<Deferred> deferred_;
  xcb_timestamp_t lookedAt_ = XCB_CURRENT_TIME;
  std::optional<LateCopy> lateCopy_;

  // Of the main thread.
  bool somethingMayWait_ = false;
  ClipboardContents atEnd_;

  int wakeDescriptor_;
  std::unique_ptr<SelectionOwner> owner_;
  std::thread thread_;  // last: it uses all of the above
};

}  // namespace lexwend::platform
