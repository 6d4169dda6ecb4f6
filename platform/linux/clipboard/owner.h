// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/linux/clipboard/targets.h"
#include "platform/linux/display/x11_connection.h"

namespace lexwend::platform {

/// Owns the CLIPBOARD selection for this program and counts its changes, on a connection and a thread of its
/// own. The public operations are for one thread, the main thread.
class ClipboardOwner {
 public:
  /// Why contents are on the clipboard.
  enum class Purpose {
    lasting,  ///< handed over to a clipboard manager at the end
    passing,  ///< gone with this program
  };

  /// Null when there is no display or no XFIXES.
  static std::unique_ptr<ClipboardOwner> open(std::chrono::milliseconds handOverTime,
                                              std::chrono::milliseconds fetchTime);
  /// Hands over, then ends the thread.
  ~ClipboardOwner();
  ClipboardOwner(const ClipboardOwner&) = delete;
  ClipboardOwner& operator=(const ClipboardOwner&) = delete;

  /// The owner changes seen so far. Does not wait.
  std::int64_t changeCount() const { return changeCount_.load(); }
  /// Leaves the clipboard without owner, unless claim() follows within kClearDelay: an empty clipboard
  /// between two contents would invite a clipboard manager to fill it.
  void clear();
  /// Carries out what still waits.
  void settle();
  /// Claims the clipboard; on return the claim is made and counted, but for lasting contents that come within
  /// the fetch time of passing ones, which wait for that time to be over, as a clear() does. Whoever claims
  /// the clipboard meanwhile keeps it. Empty contents clear it.
  void claim(ClipboardContents contents, Purpose purpose);

  /// What takes the place of passing contents, should they be owned at the end.
  void replacePassingAtEnd(ClipboardContents contents) { atEnd_ = std::move(contents); }

  static constexpr std::chrono::milliseconds kClearDelay{5};

 private:
  using Clock = std::chrono::steady_clock;
  enum class CommandKind { clear, settle, claim, stop };
  struct Command {
    CommandKind kind = CommandKind::settle;
    ClipboardContents contents;
    Purpose purpose = Purpose::passing;
  };
  /// A claim of lasting contents, or with none a clear, that is carried out later.
  struct Deferred {
    ClipboardContents contents;
    xcb_timestamp_t time;
    Clock::time_point due;
  };
  /// Contents on their way to a requestor in pieces.
  struct Transfer {
    xcb_window_t requestor;
    xcb_atom_t property;
    xcb_atom_t type;
    std::uint8_t format;
    std::shared_ptr<const Bytes> bytes;
    std::size_t offset;
    Clock::time_point deadline;
  };
  struct OwnedTarget {
    xcb_atom_t target;
    xcb_atom_t type;
    std::uint8_t format;
    std::shared_ptr<const Bytes> bytes;
  };

  ClipboardOwner(XcbConnection connection, xcb_screen_t& screen, std::uint8_t selectionEvent,
                 std::chrono::milliseconds handOverTime, std::chrono::milliseconds fetchTime);
  void post(Command command, bool wait);

  // Everything below runs on the thread.
  void run();
  bool takeCommand(Command& command);
  void carryOut(Command& command);
  void finishCommand();
  void waitForWork();
  void handlePendingEvents();
  void handleEvent(const xcb_generic_event_t& event);
  void handleRequest(const xcb_selection_request_event_t& request);
  bool answer(xcb_window_t requestor, xcb_atom_t target, xcb_atom_t property);
  bool answerMultiple(xcb_window_t requestor, xcb_atom_t property);
  void startTransfer(xcb_window_t requestor, xcb_atom_t property, const OwnedTarget& owned);
  void continueTransfer(xcb_window_t requestor, xcb_atom_t property);
  void endTransfersOf(xcb_window_t requestor);
  void dropStalledTransfers();
  void stopWatching(xcb_window_t requestor);
  void defer(ClipboardContents contents, std::chrono::milliseconds atLeast);
  void carryOutDeferred();
  void doClear(xcb_timestamp_t time);
  void doClaim(ClipboardContents contents, Purpose purpose, xcb_timestamp_t time);
  void handOver();
  xcb_timestamp_t serverTime();
  xcb_window_t ownerOf(xcb_atom_t selection);
  xcb_atom_t atom(std::string_view name) { return atoms_.atom(name); }
  bool connected() const { return xcb_connection_has_error(connection_.get()) == 0; }

  XcbConnection connection_;
  xcb_window_t root_;
  xcb_window_t window_;
  std::size_t pieceSize_;
  std::chrono::milliseconds handOverTime_;
  std::chrono::milliseconds fetchTime_;
  std::uint8_t selectionEvent_;
  AtomCache atoms_;
  xcb_atom_t clipboard_;
  xcb_atom_t timeProperty_;
  std::vector<OwnedTarget> owned_;
  bool owning_ = false;
  Purpose purpose_ = Purpose::passing;
  xcb_timestamp_t claimTime_ = XCB_CURRENT_TIME;
  Clock::time_point fetchedBy_;
  std::optional<Deferred> deferred_;
  std::vector<Transfer> transfers_;
  bool handOverAnswered_ = false;
  xcb_timestamp_t lastTime_ = XCB_CURRENT_TIME;

  std::atomic<std::int64_t> changeCount_{0};
  int wakeDescriptor_;
  std::mutex mutex_;
  std::condition_variable finished_;
  std::deque<Command> commands_;  // under mutex_, as the two counters
  std::uint64_t postedCommands_ = 0;
  std::uint64_t finishedCommands_ = 0;
  bool somethingMayWait_ = false;  // main thread only, as the next
  ClipboardContents atEnd_;
  std::thread thread_;  // last: it uses all of the above
};

}  // namespace lexwend::platform
