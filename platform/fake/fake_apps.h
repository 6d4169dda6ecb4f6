// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/accessibility.h"
#include "platform/fake/fake_pasteboard.h"
#include "platform/fake/fake_system.h"

namespace lexwend::platform {

/// Error codes of the Accessibility interface.
inline constexpr AccessibilityError kAccessibilityCannotComplete = -25204;
inline constexpr AccessibilityError kAccessibilityInvalidElement = -25202;
inline constexpr AccessibilityError kAccessibilityAttributeUnsupported = -25205;
inline constexpr AccessibilityError kAccessibilityApiDisabled = -25211;
inline constexpr AccessibilityError kAccessibilityNoValue = -25212;

enum class AccessOperation { read, settable, write };

/// An answer of an element that is not the truth.
struct FakeAnswer {
  enum class Kind {
    fails,      ///< with `code`
    noValue,    ///< success without a value
    otherKind,  ///< success with something that is neither text nor element
    text,       ///< success with a text, whatever the truth
    refuses,    ///< settable: no
    lies,       ///< write: accepted, nothing changes
  };
  Kind kind = Kind::fails;
  AccessibilityError code = kAccessibilityCannotComplete;
  std::chrono::milliseconds delay{0};  ///< the caller waits this long for the answer
  std::string value;                   ///< of Kind::text

  static FakeAnswer fails(AccessibilityError code) { return {Kind::fails, code, {}, {}}; }
  /// The application hangs until the deadline of the caller.
  static FakeAnswer hangs(std::chrono::milliseconds deadline) {
    return {Kind::fails, kAccessibilityCannotComplete, deadline, {}};
  }
  static FakeAnswer noValue() { return {Kind::noValue, 0, {}, {}}; }
  static FakeAnswer otherKind() { return {Kind::otherKind, 0, {}, {}}; }
  static FakeAnswer text(std::string value) { return {Kind::text, 0, {}, std::move(value)}; }
  static FakeAnswer refuses() { return {Kind::refuses, 0, {}, {}}; }
  static FakeAnswer lies() { return {Kind::lies, 0, {}, {}}; }
};

/// The part of a window that can have the focus: a text with a selection. Offsets are bytes of UTF-8.
class FakeField : public AccessibilityElement {
 public:
  explicit FakeField(std::string text = {}) : text_(std::move(text)) {}

  std::string role = "AXTextArea";
  bool password = false;  ///< holds secure input while it has the focus, and cannot be copied from
  bool editable = true;   ///< otherwise nothing can be pasted, typed or set

  const std::string& text() const { return text_; }
  std::string selectedText() const { return text_.substr(selectionStart_, selectionLength_); }
  void setText(std::string text);
  /// Selects the first occurrence of `part`; false when there is none.
  bool select(std::string_view part);
  void selectAll();
  void selectNothing();
  /// Replaces the selection, as typing, pasting and setting the selected text do. The cursor is then behind
  /// the new text.
  void replaceSelection(std::string_view replacement);

  /// The element answers so from question `after` + 1 on. An answer that nobody asked for is a complaint.
  void answer(AccessOperation operation, std::string_view attribute, FakeAnswer answer, int after = 0);

  /// For the host: the prepared answer to this question; nothing when the truth is the answer.
  std::optional<FakeAnswer> preparedAnswer(AccessOperation operation, std::string_view attribute);
  std::vector<std::string> unused() const;

 private:
  struct Prepared {
    AccessOperation operation;
    std::string attribute;
    FakeAnswer answer;
    int after;
    int used;
  };
  std::string text_;
  std::size_t selectionStart_ = 0;
  std::size_t selectionLength_ = 0;
  std::vector<Prepared> prepared_;
};
using FakeFieldRef = std::shared_ptr<FakeField>;

struct FakeWindow {
  std::string title;
  FakeFieldRef field;  ///< null: nothing in it takes the focus
};

/// How an application reacts to its copy shortcut.
struct FakeCopy {
  enum class Kind {
    selection,  ///< copies its selection; without one, does nothing
    nothing,    ///< ignores the shortcut
    emptyText,  ///< a text of no characters
    image,      ///< data without any plain text
    clears,     ///< empties the pasteboard
  };
  Kind kind = Kind::selection;
  std::chrono::milliseconds delay{0};  ///< until the pasteboard changes
};
struct FakePaste {
  bool ignored = false;
  std::chrono::milliseconds delay{0};  ///< until the application reads the pasteboard
};

/// An application of the user.
struct FakeApp {
  std::string name;
  std::optional<std::string> bundleIdentifier;
  std::vector<FakeWindow> windows;
  std::size_t focusedWindow = 0;
  bool terminal = false;  ///< a shortcut sent to it would do harm
  FakeCopy copies;
  FakePaste pastes;
  /// Its reactions to the next copies, in order, before `copies` applies. Unused ones are a complaint.
  std::deque<FakeCopy> nextCopies;

  /// The field that has the focus; null when none has.
  FakeFieldRef focus() const;
  FakeFieldRef openWindow(std::string title, std::string text = {});
  void focusWindow(std::string_view title);
};
using FakeAppRef = std::shared_ptr<FakeApp>;

/// All applications of the user, and which one is in front.
class FakeApps {
 public:
  FakeApps(FakeSystem& system, FakePasteboard& pasteboard) : system_(system), pasteboard_(pasteboard) {}

  /// Starts an application with one window and brings it to the front.
  FakeAppRef open(std::string name, std::optional<std::string> bundleIdentifier, std::string text = {});
  /// Brings an application to the front; null leaves none in front.
  void bringToFront(FakeAppRef app) { front_ = std::move(app); }
  /// The application in front; null when none is.
  const FakeAppRef& front() const { return front_; }
  FakeAppRef named(std::string_view name) const;
  /// The field that has the focus in the application in front, or null.
  FakeFieldRef focus() const { return front_ ? front_->focus() : nullptr; }

  /// The copy and paste shortcuts arrive at the application in front.
  void copyInFront();
  void pasteInFront();
  /// Text typed into the application in front.
  void typeInFront(std::string_view text);

  std::vector<std::string> unused() const;

 private:
  FakeSystem& system_;
  FakePasteboard& pasteboard_;
  std::vector<FakeAppRef> apps_;
  FakeAppRef front_;
};

}  // namespace lexwend::platform
