// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <limits>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gio/gio.h>
#include <unicode/unistr.h>

#include "platform/linux/accessibility/atspi_calls.h"

namespace lexwend::platform {

/// A text field, and how it behaves. Offsets and lengths are in the toolkit's units: UTF-16 for "Qt", else
/// code points.
struct ScriptedField {
  std::string path = "/field";
  std::string toolkit = "gtk";
  std::uint32_t role = ATSPI_ROLE_TEXT;
  std::string roleName = "text";
  std::uint64_t states = stateBit(ATSPI_STATE_EDITABLE) | stateBit(ATSPI_STATE_FOCUSED) |
                         stateBit(ATSPI_STATE_MULTI_LINE) | stateBit(ATSPI_STATE_SHOWING);
  std::vector<const char*> interfaces{kAtspiText, kAtspiEditableText};
  icu::UnicodeString text;
  std::vector<std::pair<int, int>> selections;
  int caret = 0;  // where it was placed last

  bool selectionGrows = false;  // by what is inserted at its end, as in a text view of GTK
  bool knowsItsEnd = true;      // as -1
  int maxLength = std::numeric_limits<int>::max();
  std::function<icu::UnicodeString(const icu::UnicodeString&)> filter;  // what an insertion comes to
  std::set<std::string> refused;                                        // methods that answer FALSE
  std::set<std::string> broken;                                         // methods that answer with an error
  std::set<std::string> answersNonsense;  // methods that answer with a value of another type
  std::set<std::string> hangs;            // methods, of any object, after which nothing is answered any more
  std::set<std::pair<std::string, std::string>> hangsAt;  // the same for an object's method
  std::optional<int> claimedLength;                       // instead of its length
  std::optional<std::pair<std::string, std::string>>
      application;  // bus name and path that it names as its own
  /// What happens just before the first call of a method is done.
  std::map<std::string, std::function<void(ScriptedField&)>> meanwhile;
  int answersUnfocused = 0;  // of GetState, before it answers as it is
  std::string stopsBefore;   // the method at which the application stops to answer
};

/// An object beside the field.
struct ScriptedObject {
  std::uint64_t states = stateBit(ATSPI_STATE_SHOWING) | stateBit(ATSPI_STATE_VISIBLE);
  std::vector<std::string> children = {};
  std::optional<int> promisedChildren = {};  // instead of how many there are
  std::uint32_t role = ATSPI_ROLE_PANEL;
  std::vector<std::pair<const char*, const char*>> malformedChildren = {};  // before the others
};

/// An application on the accessibility bus, and the rest of that bus: its launcher and its registry. It
/// answers from a thread of its own, so the agent may wait for it. The session bus is the accessibility bus.
class ScriptedApplication {
 public:
  static constexpr const char* kRoot = "/application";
  static constexpr const char* kWindow = "/window";

  ScriptedApplication();
  ~ScriptedApplication();
  ScriptedApplication(const ScriptedApplication&) = delete;
  ScriptedApplication& operator=(const ScriptedApplication&) = delete;

  /// The one field from now on; no call was heard yet.
  void show(ScriptedField field, std::map<std::string, ScriptedObject> others = {});
  /// Does what was asked while it had stopped, and goes on.
  void resume();

  /// Tells the bus that an object got the keyboard focus, or that a window became the active one.
  void sayFocused(const std::string& path);
  void sayActive(const std::string& window);

  std::string text();
  std::vector<std::pair<int, int>> selections();
  /// True when it has come to a method at which it stops or hangs.
  bool hasStopped();
  /// True when more was to be inserted than was given.
  bool wasOverrun();
  /// How often the method was called, on any object or on one; a property is "Get NAME".
  int calls(const std::string& method, const std::string& path = "");

 private:
  static GDBusMessage* seen(GDBusConnection* connection, GDBusMessage* message, int incoming, void* self);
  void handle(GDBusMessage* message);
  void say(const std::string& path, const char* interface, const char* event, const char* detail, int isSo);
  GVariant* answer(const std::string& path, const std::string& method, GVariant* arguments);
  GVariant* answerOfField(const std::string& method, GVariant* arguments);
  GVariant* insert(int position, const std::string& text, int length);
  int index(int offset) const;
  bool isQt() const { return field_.toolkit == "Qt"; }
  std::uint64_t statesOf(const std::string& path);
  std::vector<std::string> childrenOf(const std::string& path) const;
  GVariant* reference(const std::string& path) const;

  GDBusConnection* connection_;
  std::mutex mutex_;
  ScriptedField field_;
  std::map<std::string, ScriptedObject> others_;
  std::deque<GDBusMessage*> waiting_;
  bool hasStopped_ = false;
  bool wasOverrun_ = false;
  std::vector<std::pair<std::string, std::string>> calls_;
};

}  // namespace lexwend::platform
