// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/display/x11_connection.h"
#include "platform/linux/display/x_application.h"
#include "platform/linux/selection/targets.h"

namespace lexwend::platform {

/// Reads a selection, CLIPBOARD unless another is named, on a connection of its own. Main thread only. A read
/// blocks until the selection's owner has answered, at most for the time that it is given, and beyond that
/// for the X server only.
class ClipboardReader {
 public:
  enum class Outcome {
    complete,    ///< enough to put everything back
    noOwner,     ///< the clipboard is empty
    overBudget,  ///< the owner did not give it in time, or gave too much
  };
  struct Result {
    Outcome outcome = Outcome::noOwner;
    ClipboardContents contents;
    /// Further encodings of a picture that there was no time for: names of targets, printable, cut at 200
    /// bytes.
    std::vector<std::string> leftOut;
  };

  struct Budget {
    std::chrono::milliseconds time;     ///< for everything together, except for a picture
    std::chrono::milliseconds silence;  ///< for one answer or piece
    std::size_t bytes;
    std::chrono::milliseconds picture{
        0};  ///< for everything and one encoding of a picture, where that is longer
  };

  /// More types than any program offers; a longer list is over any budget.
  static constexpr std::size_t kMaxTargets = 512;

  /// Null when there is no display.
  static std::unique_ptr<ClipboardReader> open(std::string_view selection = "CLIPBOARD");
  ~ClipboardReader();
  ClipboardReader(const ClipboardReader&) = delete;
  ClipboardReader& operator=(const ClipboardReader&) = delete;

  /// Every target except those of isProtocolTarget() and those that the owner refuses. Of a picture one
  /// encoding that loses nothing is enough; the others are read last, while there is time. An owner that
  /// changes or dies meanwhile is read anew, within the same time.
  Result readAll(const Budget& budget);
  /// The text (UTF-8), from the first of UTF8_STRING, text/plain;charset=utf-8 and STRING that the owner
  /// gives; nothing when it gives none, and when what was copied are files. Where UTF8_STRING is offered and
  /// refused it is asked for again until the time is over: some programs refuse it for a moment after they
  /// have copied. An owner that `accepts` does not want is not asked at all.
  std::optional<std::string> readText(const Budget& budget,
                                      const std::function<bool(xcb_window_t owner)>& accepts = {});
  /// The program that has made a window.
  XApplication application(xcb_window_t window) { return applicationOf(connection_.get(), window); }
  /// The owner of a selection; XCB_WINDOW_NONE when there is none.
  xcb_window_t ownerOf(std::string_view selection) { return ownerOf(atom(selection)); }

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
  xcb_window_t ownerOf(xcb_atom_t selection);
  void forgetEvents();
  Answer readEverything(const Budget& budget, Clock::time_point start, Result& result);
  Answer readPicture(const Budget& budget, Clock::time_point start, Limits& limits,
                     std::vector<ClipboardTarget>& targets, Result& result);
  /// Given with the names of the targets, each once; refused where the owner knows no TARGETS.
  Answer readTargetNames(Limits& limits, std::vector<std::string>& names);
  Answer readTextOnce(Limits& limits, std::optional<std::string>& text);
  Answer convert(xcb_atom_t target, Limits& limits, ClipboardTarget& answer);
  static Answer refused(ClipboardTarget& answer);
  static Answer checked(ClipboardTarget& answer);
  Answer receiveIncrementally(Limits& limits, ClipboardTarget& answer);
  XcbReply<xcb_get_property_reply_t> takeProperty(const Limits& limits);
  XcbReply<xcb_generic_event_t> nextEvent(Clock::time_point deadline);
  bool tellsOfOwnerChange(const xcb_generic_event_t& event) const {
    return eventType(event) == selectionEvent_;
  }
  xcb_atom_t atom(std::string_view name) { return atoms_.atom(name); }
  void learnNames(const std::vector<xcb_atom_t>& atoms);
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
