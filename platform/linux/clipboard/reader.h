// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/linux/clipboard/targets.h"
#include "platform/linux/display/x11_connection.h"

namespace lexwend::platform {

/// Reads a selection, CLIPBOARD unless another is named, on a connection of its own, waiting for its owner up
/// to a deadline. Main thread only.
class ClipboardReader {
 public:
  enum class Outcome {
    complete,    ///< all targets but those that the owner refused
    noOwner,     ///< the clipboard is empty
    overBudget,  ///< the owner did not give everything in time, or gave too much
  };
  struct Result {
    Outcome outcome = Outcome::noOwner;
    ClipboardContents contents;
  };

  struct Budget {
    std::chrono::milliseconds time;     ///< for everything together
    std::chrono::milliseconds silence;  ///< for one answer or piece
    std::size_t bytes;
  };

  /// Null when there is no display.
  static std::unique_ptr<ClipboardReader> open(std::string_view selection = "CLIPBOARD");
  ~ClipboardReader();
  ClipboardReader(const ClipboardReader&) = delete;
  ClipboardReader& operator=(const ClipboardReader&) = delete;

  /// Every target but those of isProtocolTarget(). An owner that changes or dies meanwhile is read anew,
  /// within the same time.
  Result readAll(const Budget& budget);
  /// The text (UTF-8), from the first of UTF8_STRING, text/plain;charset=utf-8 and STRING that the owner
  /// gives; nothing when it gives none.
  std::optional<std::string> readText(const Budget& budget);

 private:
  using Clock = std::chrono::steady_clock;
  enum class Answer { given, refused, overBudget, ownerChanged };
  struct Limits {
    Clock::time_point end;
    std::chrono::milliseconds silence;
    std::size_t bytesLeft;
    Clock::time_point nextDeadline() const { return std::min(end, Clock::now() + silence); }
  };

  ClipboardReader(XcbConnection connection, xcb_screen_t& screen, std::string_view selection);
  void useFreshWindow();
  xcb_window_t selectionOwner();
  Answer readTargets(Limits& limits, ClipboardContents& contents);
  Answer convert(xcb_atom_t target, Limits& limits, ClipboardTarget& answer);
  Answer receiveIncrementally(Limits& limits, ClipboardTarget& answer);
  XcbReply<xcb_get_property_reply_t> takeProperty();
  XcbReply<xcb_generic_event_t> nextEvent(Clock::time_point deadline);
  bool tellsOfOwnerChange(const xcb_generic_event_t& event) const {
    return eventType(event) == selectionEvent_;
  }
  xcb_atom_t atom(std::string_view name) { return atoms_.atom(name); }
  std::string nameOf(xcb_atom_t atom);

  XcbConnection connection_;
  xcb_window_t root_;
  xcb_window_t window_ = XCB_WINDOW_NONE;
  /// Windows of reads that ran out of time, where a late answer may still come.
  std::deque<xcb_window_t> retired_;
  AtomCache atoms_;
  std::map<xcb_atom_t, std::string> names_;
  xcb_atom_t selection_;
  xcb_atom_t property_;
  std::optional<std::uint8_t> selectionEvent_;
};

}  // namespace lexwend::platform
