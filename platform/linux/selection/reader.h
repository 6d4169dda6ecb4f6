// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/display/x_application.h"
#include "platform/linux/selection/targets.h"

namespace lexwend::platform {

/// Reads a selection on a connection of its own to the display. Main thread only. A read blocks until the
/// selection's owner has answered, at most for the time that it is given, and beyond that for the display
/// only.
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

  virtual ~ClipboardReader() = default;

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
  virtual XApplication application(xcb_window_t window) = 0;
  /// The owner of a selection; XCB_WINDOW_NONE when there is none.
  virtual xcb_window_t ownerOf(std::string_view selection) = 0;

 protected:
  using Clock = std::chrono::steady_clock;
  enum class Answer { given, refused, overBudget, ownerChanged };
  struct Limits {
    Clock::time_point end;
    std::chrono::milliseconds silence;
    std::size_t bytesLeft;
    Clock::time_point nextDeadline() const { return std::min(end, Clock::now() + silence); }
  };

  /// Surrounds each read: what happened before is of no interest to it.
  virtual void begin() = 0;
  virtual void end() {}
  /// The owner of the selection that is read; XCB_WINDOW_NONE when there is none.
  virtual xcb_window_t owner() = 0;
  /// Whether owner() can tell since begin().
  virtual bool answers() const { return true; }
  /// An answer that may still come must not be taken for that of a later question.
  virtual void giveUp() = 0;
  /// Given with the names of the targets, each once; refused where the owner lists none.
  virtual Answer readTargetNames(Limits& limits, std::vector<std::string>& names) = 0;
  virtual Answer convert(const std::string& target, Limits& limits, ClipboardTarget& answer) = 0;
  /// Reads from a descriptor that does not block until it ends. Where there is nothing to read `wait` waits
  /// for more, until that time at most, and tells whether the owner is still the same.
  static Answer readToEnd(int descriptor, Limits& limits, Bytes& answer,
                          const std::function<bool(Clock::time_point until)>& wait);

 private:
  Result readAllTargets(const Budget& budget);
  Answer readEverything(const Budget& budget, Clock::time_point start, Result& result);
  Answer readPicture(const Budget& budget, Clock::time_point start, Limits& limits,
                     std::vector<ClipboardTarget>& targets, Result& result);
  std::optional<std::string> readAcceptedText(const Budget& budget,
                                              const std::function<bool(xcb_window_t owner)>& accepts);
  Answer readTextOnce(Limits& limits, std::optional<std::string>& text);
};

}  // namespace lexwend::platform
