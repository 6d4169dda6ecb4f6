// SPDX-License-Identifier: MIT
// What a test does to the macOS of the doubles and sees of it, in plain C++. Each namespace is one service.
// All state is global, as the operating system is; `Session` starts it afresh and checks at its end that
// every object was given back.
//
// The doubles end the process with one line that begins with "macOS: " on what the real system forbids or
// punishes.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace lexwend::doubles {

using Bytes = std::vector<std::byte>;
Bytes bytesOf(const std::string& text);

/// Values that the system hands out where a program expects a certain type.
struct NullObject {};
struct MixedList {};  ///< a list of a string and a number
using Value = std::variant<std::monostate, bool, std::int64_t, double, std::string, std::u16string,
                           std::vector<std::string>, Bytes, NullObject, MixedList>;

struct Rect {
  double x = 0, y = 0, width = 0, height = 0;
  bool operator==(const Rect&) const = default;
};

/// One call into the system: the function or "-[Class selector:]", and its arguments as text.
struct Call {
  std::string name;
  std::string arguments;
  bool operator==(const Call&) const = default;
};
std::vector<Call> calls();
std::vector<Call> callsNamed(const std::string& name);
void forgetCalls();
/// How many objects of the class, or of any, live now.
std::size_t liveObjects(const std::string& className = {});

/// A logged-in session: everything as after a fresh login. At its end all objects must be gone that were not
/// there at its beginning, but those that the process keeps for good; `expectBalanced` says what is left,
/// empty when nothing is.
class Session {
 public:
  Session();
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  /// Empties the autorelease pool of the session and names each class with more objects than at the
  /// beginning.
  std::string unbalancedObjects();

 private:
  std::map<std::string, std::size_t> before_;
  std::size_t blocksBefore_ = 0;
  void* pool_ = nullptr;
};

namespace failures {
/// The next call of that name fails with the code, after so many calls that go well. The name is that in
/// calls(); "CGEventCreateKeyboardEvent down" and "... up" are told apart, and "RegisterEventHotKey
/// reference" is a registration that succeeds without a reference, "RegisterEventHotKey status" one that
/// fails with a reference. What fails so: lists and objects come back null, results as an error;
/// `-[NSFileHandle writeData:]` raises.
void failNext(const std::string& call, std::int32_t code = -1, int after = 0);
/// The names of the calls that were to fail and did not come.
std::vector<std::string> unused();
}  // namespace failures

namespace time {
/// Lets time pass in the run loop: timers, main-queue work and the outer world run when they are due.
void advance(std::chrono::microseconds duration);
/// The same while a modal panel is open: only timers in the common modes run.
void advanceInModalPanel(std::chrono::microseconds duration);
/// The main thread is blocked inside a call into the system: only the outer world moves.
void block(std::chrono::microseconds duration);
/// What happens outside the process `delay` from now, also while the main thread sleeps.
void later(std::chrono::microseconds delay, std::function<void()> event);
std::chrono::microseconds now();    ///< since the session began
std::chrono::microseconds slept();  ///< the sum of all sleeps of the main thread
std::size_t scheduledTimers();      ///< valid timers on the main run loop
std::size_t pendingMainQueueWork();
void setWallClock(double secondsSince1970);  ///< at this moment; it moves on with the session's time
}  // namespace time

namespace input_sources {
struct KeyOutput {
  std::u16string text;
  bool isDead = false;     ///< with dead keys on, gives nothing and leaves a state behind
  std::int32_t error = 0;  ///< a status other than 0 is returned instead
};
/// Key code and modifier state (Carbon mask shifted right by 8) to what is typed.
using KeyOutputs = std::map<std::pair<std::uint16_t, std::uint32_t>, KeyOutput>;
Bytes layoutData(const KeyOutputs& outputs);

struct Source {
  Value id, languages, unicodeKeyLayoutData;
  std::string type = "TISTypeKeyboardLayout";
  bool isEnabled = true;
};
void install(const Source& source);  ///< at the end of the list
void clear();
void setCurrentLayout(std::optional<std::size_t> index);
/// An input method is in front of the current layout, until a layout is selected.
void setInputMethodInFront();
std::optional<std::size_t> currentLayout();
void listIsAbsent();    ///< the list of sources comes back null
void listIsMistyped();  ///< it comes back as something that is no list
void setKeyboardType(std::uint8_t type);
void postEnabledSourcesChanged();  ///< the distributed notification
void postSelectedSourceChanged();  ///< another distributed one, whenever the layout is switched
}  // namespace input_sources

namespace accessibility {
void setTrusted(bool trusted);
int promptsShown();

struct Reply {
  std::int32_t error = 0;
  Value value;
  bool isElement = false;  ///< the value is the focused element itself
};
struct Attribute {
  std::vector<Reply> replies;  ///< one for each read in turn; the last one stays
  std::int32_t settableError = 0;
  bool isSettable = false;
  std::int32_t setError = 0;
  std::function<void(const std::string& text)> onSet;  ///< after a successful set, with the text in UTF-8
};
/// The system-wide element's answer to "AXFocusedUIElement".
void setFocused(const Reply& reply);
/// The focused element's attribute. An attribute never set answers that it is not supported.
void setAttribute(const std::string& name, const Attribute& attribute);

/// Answers every call in place of what is set above. An element is what a reply with `isElement` named; the
/// system-wide one is null.
struct Answers {
  using Element = std::shared_ptr<void>;
  struct Read : Reply {
    Element element;  ///< of a reply with `isElement`
  };
  struct Settable {
    std::int32_t error = 0;
    bool isSettable = false;
  };
  std::function<Read(const Element&, const std::string& attribute)> read;
  std::function<Settable(const Element&, const std::string& attribute)> settable;
  std::function<std::int32_t(const Element&, const std::string& attribute, const std::string& text)> write;
};
void answerWith(Answers answers);
}  // namespace accessibility

namespace secure_input {
void setEnabled(bool enabled);
}

namespace pasteboard {
struct Representation {
  std::string type;
  std::optional<Bytes> data;  ///< nothing: the data cannot be obtained
  bool isPromised = false;    ///< made by its owner only when it is asked for
};
using Item = std::vector<Representation>;
/// Another application replaces the contents.
void otherAppCopies(const std::vector<Item>& items);
void otherAppCopiesText(const std::string& text);
void itemsAreAbsent(bool absent);  ///< the list of items comes back nil
std::vector<Item> contents();
std::int64_t changeCount();
/// The answer of macOS 15.4 and later to who may read: 1 asks, 2 allows, 3 denies. Without a call of this the
/// system is older and has no such thing.
void setAccessBehavior(long behavior);
/// The user says no from now on: items come with their types and without data.
void refuseReading(bool refused);
/// The next read of data asks the user, and waits for the answer that long.
void askBeforeReading(std::chrono::microseconds answerAfter, bool isAllowed);
int promisesKept();  ///< how often promised data was asked for
}  // namespace pasteboard

namespace hot_keys {
struct Registered {
  std::uint32_t keyCode, modifiers, signature, id;
  bool operator==(const Registered&) const = default;
};
std::vector<Registered> registered();
void failNextRegistration(std::int32_t status);
void nextRegistrationHasNoReference();  ///< status 0 and a null reference
void failNextEventParameter(std::int32_t status);
/// The user presses it: the handlers run. The handlers' last status, or nothing when no such key is
/// registered.
std::optional<std::int32_t> press(std::uint32_t keyCode, std::uint32_t modifiers);
/// The system reports a press under that identity, whoever holds it.
std::optional<std::int32_t> dispatch(std::uint32_t signature, std::uint32_t id);
/// Another program holds it exclusively: a registration fails. (One that holds it as this host does is not in
/// the way.)
void takeByOther(std::uint32_t keyCode, std::uint32_t modifiers);
bool isTakenByOther(std::uint32_t keyCode, std::uint32_t modifiers);
/// The system forgets all registrations; taking one back is then an error.
void loseAll();
std::size_t installedHandlers();
}  // namespace hot_keys

namespace key_events {
struct Posted {
  std::uint16_t keyCode = 0;
  bool isDown = false;
  std::uint64_t flags = 0;
  std::uint32_t tap = 0;
  std::optional<std::int32_t> sourceState;
  std::chrono::milliseconds time{0};  ///< since the session began
  bool operator==(const Posted&) const = default;
};
std::vector<Posted> posted();
void setModifiersHeld(std::uint64_t flags);
void onPost(std::function<void(const Posted&)> observer);  ///< the front application
void failNextSource();
void failEventCreation(int firstFailing, int count = 1);  ///< counted from 1 at this call
}  // namespace key_events

namespace app {
bool exists();                           ///< whether there is a shared application
std::optional<long> activationPolicy();  ///< as set; nothing before
int activations();                       ///< how often it asked to be brought to the front
bool isActive();                         ///< it has the keyboard
void refuseActivation();                 ///< as macOS 14 and later may; only a click makes it active then
void userSwitchesToOther();              ///< another application has the keyboard
void setDark(bool dark);                 ///< the appearance changes while the application runs
bool isTerminated();
int beeps();
/// What the event loop does once the application has launched; the loop ends after it.
void setEventLoop(std::function<void()> body);
}  // namespace app

namespace status_bar {
struct Image {
  std::string symbol, description;
  bool isTemplate = false;
  bool operator==(const Image&) const = default;
};
struct MenuItem {
  std::string title, keyEquivalent, action;
  bool isSeparator = false, isEnabled = true, isHidden = false;
  long state = 0;
};
struct Item {
  double length = 0;
  bool hasButton = true;
  std::optional<Image> image;
  std::optional<std::vector<MenuItem>> menu;
  bool menuAutoenables = true;
  bool menuReadsRightToLeft = false;
};
std::vector<Item> items();
void nextItemHasNoButton();
void symbolIsUnknown(const std::string& name);
/// The user opens the menu of the first status item. Until it closes, presses of hot keys wait, and so does
/// what is in the run loop's default mode alone.
void openMenu();
void closeMenu();
/// The user chooses the item of that title there, opening and closing the menu.
void choose(const std::string& title);
}  // namespace status_bar

namespace windows {
struct Control {
  std::string kind;  ///< "label", "wrapping label" or "button"
  std::string text;
  Rect frame;
  long alignment = 0;
  double fontSize = 0, fontWeight = 0;
  std::string color, layerBackground;
  double cornerRadius = 0;
  bool hasLayer = false, isEnabled = true;
  unsigned long bezelStyle = 0;
};
struct Window {
  std::string title;
  Rect contentRect;
  unsigned long styleMask = 0, backing = 0;
  bool isDeferred = false, isReleasedWhenClosed = true, isCentered = false, isVisible = false, isKey = false;
  bool isInFront = false;  ///< not behind the windows of the active application
  long level = 0;
  bool hasController = false;
  std::vector<Control> controls;
};
std::vector<Window> all();  ///< living windows in order of creation
/// A click into a window makes the application active and the window key.
void click(const std::string& buttonTitle);  ///< in the window that is in front
void clickInto();                            ///< the same window, beside its buttons
void closeByUser();                          ///< its close box
/// Whether a local monitor consumed the key press; those of an inactive application see none.
bool pressKey(std::uint16_t keyCode, std::uint64_t modifierFlags);
std::size_t localMonitors();
}  // namespace windows

namespace alerts {
struct Alert {
  std::string messageText, informativeText;
  std::vector<std::string> buttons;
};
/// The user answers the next alert after that time. An alert without a prepared answer ends the process.
void answerNext(long response, std::chrono::microseconds after = {});
void answerNextWithEscape();  ///< presses the button that has Escape, of which there must be one
void answerNextWithReturn();  ///< the same with Return
/// Answers every alert for which nothing else is prepared.
void answerWith(std::function<long(const Alert&)> answer);
std::vector<Alert> shown();
}  // namespace alerts

namespace workspace {
struct Running {
  std::optional<std::string> bundleIdentifier;
  std::int32_t processIdentifier = 0;
};
void setFrontmost(const std::optional<Running>& application);
void setRunning(const std::vector<Running>& applications);
std::vector<std::string> openedUrls();
void postDidWake();
std::size_t observers();  ///< blocks that observe any notification
}  // namespace workspace

namespace login_item {
void setStatus(long status);
long status();
void failNext(std::int32_t code);            ///< the next register or unregister reports this error
void registrationNeedsApproval(bool needs);  ///< registering ends in status 2 instead of 1
void setStatusAfterRegistration(long status);
}  // namespace login_item

namespace process {
void setIdentifier(std::int32_t pid);
void setBundleIdentifier(const std::optional<std::string>& identifier);
void setInfo(const std::string& key, const Value& value);  ///< of the main bundle's dictionary
void infoIsAbsent();
void setHomeDirectory(const std::string& path);
/// The user's own time zone, and how many years the user's calendar is ahead of the Gregorian one.
void setLocalTime(std::chrono::minutes eastOfGreenwich, int yearsAhead);
std::size_t activities();  ///< that keep the system from putting off what the process waits for
void setReadOnly(const std::string& path);  ///< opening that file for writing is refused
/// The process is gone: its timers, work, observers, hot keys and application with it. The system and its
/// other programs go on.
void end();
}  // namespace process

namespace defaults {
void set(const std::string& key, const Value& value);
/// The stored value; nothing when absent. Whole numbers come back as integers.
std::optional<Value> get(const std::string& key);
}  // namespace defaults

}  // namespace lexwend::doubles
