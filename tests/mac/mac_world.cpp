// SPDX-License-Identifier: MIT
#include "tests/mac/mac_world.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iterator>
#include <map>
#include <utility>

#include "app/entry.h"
#include "hotkey/hot_key_center.h"
#include "platform/accessibility.h"
#include "platform/key_events.h"
#include "platform/pasteboard.h"
#include "tests/mac/mac_desktop.h"
#include "tests/scenarios/script.h"
#include "tests/scenarios/vocabulary.h"

namespace lexwend::scenarios {
namespace {

using namespace platform;
using std::chrono::milliseconds;
namespace mac = doubles;

constexpr std::int32_t kOwnProcess = 4242;
constexpr const char* kBundleIdentifier = "org.lexwend.Lexwend";
constexpr const char* kVersionKey = "CFBundleShortVersionString";
constexpr std::uint32_t kSignature = 0x544B5652;
constexpr const char* kPlainText = "public.utf8-plain-text";
constexpr std::uint16_t kCopyKey = number(kKeyC);
constexpr std::uint16_t kPasteKey = number(kKeyV);
constexpr long kFirstButton = 1000;
/// Where the controls stand in the recorder's window.
constexpr std::size_t kPrompt = 0, kCombination = 1, kMessage = 2, kSave = 3, kCancel = 4;
constexpr std::size_t kControls = 5;
constexpr std::size_t kTimestampLength = 23;  // "2024-03-05 14:07:09.042"

double secondsAtStart() {
  std::tm moment{};
  moment.tm_year = 2024 - 1900;
  moment.tm_mon = 2;
  moment.tm_mday = 5;
  moment.tm_hour = 14;
  moment.tm_min = 7;
  moment.tm_sec = 9;
  moment.tm_isdst = -1;
  return static_cast<double>(std::mktime(&moment)) + 0.042;
}

std::filesystem::path newHome() {
  std::string name = (std::filesystem::temp_directory_path() / "lexwend-scenario-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no home directory for the scenario");
  std::filesystem::create_directories(std::filesystem::path(name) / "Library" / "Logs");
  return name;
}

/// What happens after no time at all happens now.
void later(milliseconds delay, std::function<void()> event) {
  if (delay <= milliseconds(0)) {
    event();
  } else {
    mac::time::later(delay, std::move(event));
  }
}

std::string idOf(const FakeLayout& layout) {
  const auto* id = std::get_if<std::string>(&layout.id);
  return id == nullptr ? std::string() : *id;
}

struct PropertyValue {
  mac::Value operator()(std::monostate) const { return std::monostate(); }
  mac::Value operator()(MistypedProperty) const { return std::int64_t{1}; }
  mac::Value operator()(const std::string& text) const { return text; }
  mac::Value operator()(const std::vector<std::string>& list) const { return list; }
};

mac::input_sources::Source sourceOf(const FakeLayout& layout) {
  mac::input_sources::Source source;
  source.id = std::visit(PropertyValue(), layout.id);
  source.languages = std::visit(PropertyValue(), layout.languages);
  switch (layout.data) {
    case FakeLayout::Data::present:
      source.unicodeKeyLayoutData = mac::MacDesktop::layoutData(layout);
      break;
    case FakeLayout::Data::absent:
      break;
    case FakeLayout::Data::empty:
      source.unicodeKeyLayoutData = mac::Bytes();
      break;
    case FakeLayout::Data::mistyped:
      source.unicodeKeyLayoutData = std::string("no data");
      break;
  }
  source.isEnabled = layout.enabled;
  return source;
}

/// The call into the system that fails, under its name there.
const char* callOf(FakeOperation operation) {
  using Operation = FakeOperation;
  static const std::map<Operation, const char*> kCalls = {
      {Operation::createInputSourceList, "TISCreateInputSourceList"},
      {Operation::copyCurrentLayout, "TISCopyCurrentKeyboardLayoutInputSource"},
      {Operation::selectInputSource, "TISSelectInputSource"},
      {Operation::createEventSource, "CGEventSourceCreate"},
      {Operation::createKeyDownEvent, "CGEventCreateKeyboardEvent down"},
      {Operation::createKeyUpEvent, "CGEventCreateKeyboardEvent up"},
      {Operation::installHotKeyHandler, "InstallEventHandler"},
      {Operation::registerHotKey, "RegisterEventHotKey"},
      {Operation::registerHotKeyReference, "RegisterEventHotKey reference"},
      {Operation::registerHotKeyStatus, "RegisterEventHotKey status"},
      {Operation::unregisterHotKey, "UnregisterEventHotKey"},
      {Operation::readHotKeyParameter, "GetEventParameter"},
      {Operation::symbolImage, "+[NSImage imageWithSystemSymbolName:accessibilityDescription:]"},
      {Operation::urlFromString, "+[NSURL URLWithString:]"},
      {Operation::openFile, "+[NSFileHandle fileHandleForWritingToURL:error:]"},
      {Operation::writeFile, "-[NSFileHandle writeData:]"},
      {Operation::closeFile, "-[NSFileHandle closeAndReturnError:]"},
      {Operation::writeWholeFile, "-[NSData writeToURL:options:error:]"},
      {Operation::registerLoginItem, "-[SMAppService registerAndReturnError:]"},
      {Operation::unregisterLoginItem, "-[SMAppService unregisterAndReturnError:]"}};
  const auto found = kCalls.find(operation);
  if (found == kCalls.end()) throw ScriptMistake("the shared application cannot be missing on macOS");
  return found->second;
}

mac::Value storedValue(const DefaultsValue& value) {
  struct Stored {
    mac::Value operator()(bool truth) const { return truth; }
    mac::Value operator()(std::int64_t number) const { return number; }
    mac::Value operator()(double number) const { return number; }
    mac::Value operator()(const std::string& text) const { return text; }
    mac::Value operator()(const OtherDefaultsValue&) const { return std::vector<std::string>{"other"}; }
  };
  return std::visit(Stored(), value);
}

DefaultsValue defaultsValue(const mac::Value& value) {
  if (const auto* truth = std::get_if<bool>(&value)) return *truth;
  if (const auto* whole = std::get_if<std::int64_t>(&value)) return *whole;
  if (const auto* real = std::get_if<double>(&value)) return *real;
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  return OtherDefaultsValue{};
}

ColorRole roleOf(const std::string& color) {
  constexpr std::array<std::pair<std::string_view, ColorRole>, 4> kColors = {
      {{"labelColor", ColorRole::label},
       {"secondaryLabelColor", ColorRole::secondaryLabel},
       {"quaternaryLabelColor", ColorRole::quaternaryLabel},
       {"systemRedColor", ColorRole::systemRed}}};
  return oneOf(color, kColors);
}

Frame frameOf(const mac::Rect& rect) {
  return {rect.x, rect.y, rect.width, rect.height};
}

LabelLook labelLook(const mac::windows::Control& control, bool withText) {
  // Alignments as on x86-64: 1 is right, 2 is centre, 4 is natural.
  constexpr long kRight = 1, kCenter = 2;
  LabelLook look;
  if (withText) look.text = control.text;
  look.frame = frameOf(control.frame);
  look.alignment = control.alignment == kRight    ? TextAlignment::right
                   : control.alignment == kCenter ? TextAlignment::center
                                                  : TextAlignment::natural;
  look.fontSize = control.fontSize;
  look.fontWeight = control.fontWeight > 0.25 ? FontWeight::semibold
                    : control.fontWeight > 0  ? FontWeight::medium
                                              : FontWeight::regular;
  look.color = roleOf(control.color);
  look.wraps = control.kind == "wrapping label";
  if (control.hasLayer) look.background = roleOf(control.layerBackground);
  look.cornerRadius = control.cornerRadius;
  return look;
}

RecorderWindowLook lookOf(const mac::windows::Window& window) {
  constexpr unsigned long kTitled = 1, kClosable = 2, kMiniaturizable = 4, kResizable = 8;
  RecorderWindowLook look;
  look.contentRect = frameOf(window.contentRect);
  look.title = window.title;
  look.titled = (window.styleMask & kTitled) != 0;
  look.closable = (window.styleMask & kClosable) != 0;
  look.resizable = (window.styleMask & kResizable) != 0;
  look.miniaturizable = (window.styleMask & kMiniaturizable) != 0;
  look.deferred = window.isDeferred;
  look.level = static_cast<int>(window.level);
  look.releasedWhenClosed = window.isReleasedWhenClosed;
  look.centered = window.isCentered;
  // What the combination and the message say changes; their texts have looks of their own.
  look.prompt = labelLook(window.controls[kPrompt], true);
  look.combination = labelLook(window.controls[kCombination], false);
  look.message = labelLook(window.controls[kMessage], false);
  look.save.title = window.controls[kSave].text;
  look.save.frame = frameOf(window.controls[kSave].frame);
  look.cancel.title = window.controls[kCancel].text;
  look.cancel.frame = frameOf(window.controls[kCancel].frame);
  return look;
}

std::optional<mac::windows::Window> recorder() {
  for (auto& window : mac::windows::all()) {
    if (!window.isVisible) continue;
    if (window.controls.size() != kControls) throw ScriptMistake("the window is no recorder");
    return std::move(window);
  }
  return std::nullopt;
}

/// The images that the status item of this run was given, one after the other.
Words icons() {
  Words shown;
  for (const auto& call : mac::calls()) {
    if (call.name == "-[NSStatusBar statusItemWithLength:]") shown.clear();
    if (call.name == "-[NSButton setImage:]") shown.push_back(call.arguments == "nil" ? "" : call.arguments);
  }
  return shown;
}

/// "KEY, MODIFIERS, {SIGNATURE, ID}, options=...", as the call log writes it.
std::string identityOf(const std::string& arguments) {
  const auto open = arguments.find('{');
  const auto comma = arguments.find(", ", open);
  const auto close = arguments.find('}', comma);
  const auto signature = parseNumber(arguments.substr(open + 1, comma - open - 1));
  return signatureText(static_cast<std::uint32_t>(signature)) + ":" +
         arguments.substr(comma + 2, close - comma - 2);
}

std::size_t keysDown(std::uint16_t keyCode) {
  const auto posted = mac::key_events::posted();
  return static_cast<std::size_t>(std::count_if(posted.begin(), posted.end(), [keyCode](const auto& key) {
    return key.isDown && key.keyCode == keyCode;
  }));
}

std::size_t callCount(const char* name) {
  return mac::callsNamed(name).size();
}

mac::accessibility::Answers::Read resultOf(const FakeAnswer& answer) {
  mac::accessibility::Answers::Read read;
  switch (answer.kind) {
    case FakeAnswer::Kind::fails:
      read.error = answer.code;
      break;
    case FakeAnswer::Kind::noValue:
    case FakeAnswer::Kind::refuses:
    case FakeAnswer::Kind::lies:
      break;
    case FakeAnswer::Kind::otherKind:
      read.value = std::int64_t{1};
      break;
    case FakeAnswer::Kind::text:
      read.value = answer.value;
      break;
  }
  return read;
}

}  // namespace

MacWorld::MacWorld() : home_(newHome()) {
  prepareSystem();
  answerAccessibility();
}

MacWorld::~MacWorld() {
  mac::key_events::onPost({});
  mac::accessibility::answerWith({});
  mac::alerts::answerWith({});
  host_ = nullptr;
  std::error_code ignored;
  std::filesystem::remove_all(home_, ignored);
}

void MacWorld::prepareSystem() {
  setLayouts({"US", "Hebrew"});
  mac::accessibility::setTrusted(true);
  mac::process::setHomeDirectory(home_.string());
  mac::process::setIdentifier(kOwnProcess);
  mac::process::setBundleIdentifier(kBundleIdentifier);
  mac::process::setInfo(kVersionKey, std::string("1.0"));
  mac::time::setWallClock(secondsAtStart());
  mac::alerts::answerWith([this](const mac::alerts::Alert& alert) { return answerAlert(alert); });
  mac::key_events::onPost([this](const mac::key_events::Posted& posted) {
    if (!posted.isDown || posted.flags != number(kEventFlagCommand)) return;
    if (posted.keyCode == kCopyKey) copyInFront();
    if (posted.keyCode == kPasteKey) pasteInFront();
  });
}

/// Honest unless a field was told otherwise. Without trust every call fails, as on the real system.
void MacWorld::answerAccessibility() {
  using Answers = mac::accessibility::Answers;
  Answers answers;
  answers.read = [this](const Answers::Element& element, const std::string& attribute) {
    Answers::Read read;
    if (!trusted_) {
      read.error = kAccessibilityApiDisabled;
      return read;
    }
    if (element == nullptr) {
      const auto focus = front_ ? front_->focus() : nullptr;
      if (attribute != kFocusedUIElementAttribute) {
        read.error = kAccessibilityAttributeUnsupported;
      } else if (focusAnswer_) {
        focusAnswerUsed_ = true;
        mac::time::block(focusAnswer_->delay);
        return resultOf(*focusAnswer_);
      } else if (!focus) {
        read.error = kAccessibilityNoValue;
      } else {
        read.isElement = true;
        read.element = focus;
      }
      return read;
    }
    auto& asked = *static_cast<FakeField*>(element.get());
    if (const auto answer = asked.preparedAnswer(AccessOperation::read, attribute)) {
      mac::time::block(answer->delay);
      return resultOf(*answer);
    }
    if (attribute == kRoleAttribute) {
      read.value = asked.role;
    } else if (attribute == kSelectedTextAttribute) {
      read.value = asked.selectedText();
    } else if (attribute == kValueAttribute) {
      read.value = asked.text();
    } else {
      read.error = kAccessibilityAttributeUnsupported;
    }
    return read;
  };
  answers.settable = [this](const Answers::Element& element,
                            const std::string& attribute) -> Answers::Settable {
    if (!trusted_) return {kAccessibilityApiDisabled, false};
    if (element == nullptr) return {kAccessibilityAttributeUnsupported, false};
    auto& asked = *static_cast<FakeField*>(element.get());
    if (const auto answer = asked.preparedAnswer(AccessOperation::settable, attribute)) {
      mac::time::block(answer->delay);
      return {answer->kind == FakeAnswer::Kind::fails ? answer->code : 0, false};
    }
    return {0, asked.editable && attribute == kSelectedTextAttribute};
  };
  answers.write = [this](const Answers::Element& element, const std::string& attribute,
                         const std::string& text) -> std::int32_t {
    if (!trusted_) return kAccessibilityApiDisabled;
    if (element == nullptr) return kAccessibilityAttributeUnsupported;
    auto& asked = *static_cast<FakeField*>(element.get());
    if (const auto answer = asked.preparedAnswer(AccessOperation::write, attribute)) {
      mac::time::block(answer->delay);
      return answer->kind == FakeAnswer::Kind::fails ? answer->code : 0;
    }
    if (attribute != kSelectedTextAttribute || !asked.editable) return kAccessibilityAttributeUnsupported;
    asked.replaceSelection(text);
    return 0;
  };
  mac::accessibility::answerWith(std::move(answers));
}

std::string MacWorld::enabledName(std::optional<std::size_t> index) const {
  return index ? layoutName(idOf(enabled_.at(*index))) : "none";
}

/// The layout in use stays in use when it is still there, else the first one is.
void MacWorld::setLayouts(const Words& names) {
  noteSelections();
  const auto current = mac::input_sources::currentLayout();
  const std::string before = current ? idOf(enabled_.at(*current)) : std::string();
  enabled_.clear();
  mac::input_sources::clear();
  if (names == Words{"none"}) return;
  for (const auto& name : names) {
    enabled_.push_back(layout(name));
    mac::input_sources::install(sourceOf(enabled_.back()));
  }
  std::size_t inUse = 0;
  for (std::size_t i = enabled_.size(); i-- > 0;) {
    if (!before.empty() && idOf(enabled_[i]) == before) inUse = i;
  }
  mac::input_sources::setCurrentLayout(inUse);
}

/// The log of calls names layouts by their places, which mean something only until the list changes.
void MacWorld::noteSelections() {
  const auto calls = mac::callsNamed("TISSelectInputSource");
  for (; selectionsNoted_ < calls.size(); ++selectionsNoted_) {
    const auto place = static_cast<std::size_t>(parseNumber(calls[selectionsNoted_].arguments));
    const std::string id = idOf(enabled_.at(place));
    selections_.push_back(id.empty() ? "unnamed" : layoutName(id));
  }
}

std::string MacWorld::typed(std::uint16_t keyCode, bool shifted) const {
  const auto current = mac::input_sources::currentLayout();
  if (!current) return {};
  const FakeLayout& inUse = enabled_.at(*current);
  const auto key = inUse.keys.find(keyCode);
  if (key == inUse.keys.end() || inUse.deadKeys.contains({keyCode, shifted})) return {};
  return shifted ? key->second.shifted : key->second.plain;
}

MacWorld::AppRef MacWorld::appNamed(const std::string& name) {
  const auto found =
      std::find_if(apps_.begin(), apps_.end(), [&](const AppRef& each) { return each->name == name; });
  return found == apps_.end() ? nullptr : *found;
}

void MacWorld::bringToFront(AppRef app) {
  front_ = std::move(app);
  if (!front_) {
    mac::workspace::setFrontmost(std::nullopt);
    return;
  }
  const auto place = std::find(apps_.begin(), apps_.end(), front_) - apps_.begin();
  mac::workspace::setFrontmost(mac::workspace::Running{front_->bundleIdentifier,
                                                       kOwnProcess + 100 + static_cast<std::int32_t>(place)});
}

/// A password field holds secure input while it has the focus.
void MacWorld::focusChanged() {
  const auto focus = front_ ? front_->focus() : nullptr;
  mac::secure_input::setEnabled(secureInputHeld_ || (focus && focus->password));
}

void MacWorld::copyInFront() {
  const AppRef copier = front_;
  if (!copier) return;
  FakeCopy copy = copier->copies;
  if (!copier->nextCopies.empty()) {
    copy = copier->nextCopies.front();
    copier->nextCopies.pop_front();
  }
  const auto write = [&](std::vector<mac::pasteboard::Item> items) {
    later(copy.delay, [items = std::move(items)] { mac::pasteboard::otherAppCopies(items); });
  };
  const auto item = [](const char* type, const std::string& data) -> mac::pasteboard::Item {
    return {{type, mac::bytesOf(data), false}};
  };
  switch (copy.kind) {
    case FakeCopy::Kind::selection: {
      const auto focus = copier->focus();
      if (!focus || focus->password || focus->selectedText().empty()) return;
      write({item(kPlainText, focus->selectedText())});
      return;
    }
    case FakeCopy::Kind::nothing:
      return;
    case FakeCopy::Kind::emptyText:
      write({item(kPlainText, "")});
      return;
    case FakeCopy::Kind::image:
      write({item("public.png", "\x89PNG")});
      return;
    case FakeCopy::Kind::clears:
      write({});
      return;
  }
}

void MacWorld::pasteInFront() {
  const AppRef paster = front_;
  if (!paster || paster->pastes.ignored) return;
  later(paster->pastes.delay, [paster] {
    const auto focus = paster->focus();
    const auto text = mac::MacDesktop::pasteboardText();
    if (focus && focus->editable && text) focus->replaceSelection(*text);
  });
}

void MacWorld::press(const std::string& keys) {
  const auto combination = parseCombination(keys);
  const auto keyCode = static_cast<std::uint16_t>(combination.keyCode);
  const Modifiers modifiers{combination.carbonModifiers};
  if (mac::hot_keys::isTakenByOther(keyCode, number(modifiers))) return;
  if (mac::hot_keys::press(keyCode, number(modifiers)).has_value()) return;
  if (recorder()) {
    mac::windows::pressKey(keyCode, number(eventFlagsOf(modifiers)));
  } else if (modifiers == kCmdKey && keyCode == kCopyKey) {
    copyInFront();
  } else if (modifiers == kCmdKey && keyCode == kPasteKey) {
    pasteInFront();
  } else if ((modifiers | kShiftKey) == kShiftKey && front_ && front_->focus() && front_->focus()->editable) {
    const std::string text = typed(keyCode, modifiers == kShiftKey);
    if (!text.empty()) front_->focus()->replaceSelection(text);
  }
}

std::vector<ModelWorld::MenuEntry> MacWorld::menu() {
  std::vector<MenuEntry> entries;
  const auto items = mac::status_bar::items();
  if (items.empty() || !items.front().menu) return entries;
  for (const auto& item : *items.front().menu) {
    entries.push_back(
        {item.title, item.keyEquivalent, item.isSeparator, item.state != 0, item.isHidden, item.isEnabled});
  }
  return entries;
}

void MacWorld::choose(const std::string& title) {
  const auto entries = menu();
  const auto found = std::find_if(entries.begin(), entries.end(), [&](const MenuEntry& each) {
    return !each.isSeparator && each.title == title;
  });
  if (found != entries.end() && !found->isHidden && found->isEnabled) return mac::status_bar::choose(title);
  complaints_.push_back("the menu item \"" + title + "\" cannot be chosen: it is " +
                        (found == entries.end() ? "not there"
                         : found->isHidden      ? "hidden"
                                                : "disabled"));
}

void MacWorld::click(const std::string& button) {
  enum class Button { save, cancel, close };
  constexpr std::array<std::pair<std::string_view, Button>, 3> kButtons = {
      {{"save", Button::save}, {"cancel", Button::cancel}, {"close", Button::close}}};
  const Button wanted = oneOf(button, kButtons);
  const auto window = recorder();
  if (!window) {
    complaints_.push_back("a click on " + button + ": no recorder window is open");
    return;
  }
  if (wanted == Button::close) {
    mac::windows::closeByUser();
    return;
  }
  const auto& control = window->controls[wanted == Button::save ? kSave : kCancel];
  if (!control.isEnabled) {
    complaints_.push_back("the recorder's button " + button + " is disabled and cannot be clicked");
    return;
  }
  mac::windows::click(control.text);
}

/// Closing an alert answers with its last button.
long MacWorld::answerAlert(const mac::alerts::Alert& alert) {
  const long last = kFirstButton + static_cast<long>(alert.buttons.size()) - 1;
  if (alertAnswers_.empty()) {
    complaints_.push_back("the alert \"" + alert.messageText + "\" has no answer prepared");
    return last;
  }
  const AlertAnswer answer = std::move(alertAnswers_.front());
  alertAnswers_.pop_front();
  if (!answer.button) return last;
  const auto found = std::find(alert.buttons.begin(), alert.buttons.end(), *answer.button);
  if (found != alert.buttons.end()) return kFirstButton + (found - alert.buttons.begin());
  complaints_.push_back("the alert \"" + alert.messageText + "\" has no button \"" + *answer.button + "\"");
  return last;
}

void MacWorld::failNext(const std::string& operation, const std::string& code, int after) {
  mac::failures::failNext(callOf(failureOf(operation)),
                          code.empty() ? -1 : static_cast<std::int32_t>(parseNumber(code)), after);
}

std::string MacWorld::logPath() const {
  return (home_ / "Library" / "Logs" / "Lexwend.log").string();
}

std::optional<std::string> MacWorld::logBytes() const {
  std::ifstream stream(logPath(), std::ios::binary);
  if (!stream) return std::nullopt;
  return std::string((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
}

Words MacWorld::logMessages() const {
  Words messages = linesOf(logBytes().value_or(std::string()));
  for (auto& line : messages) {
    line = line.size() > kTimestampLength ? line.substr(kTimestampLength + 1) : std::string();
  }
  return messages;
}

void MacWorld::actOnSystem(Act act, const Words& arguments) {
  switch (act) {
    case Act::layouts:
      setLayouts(arguments);
      return;
    case Act::useLayout: {
      if (arguments[0] == "none") {
        mac::input_sources::setCurrentLayout(std::nullopt);
        return;
      }
      const std::string wanted = idOf(layout(arguments[0]));
      const auto found = std::find_if(enabled_.begin(), enabled_.end(), [&](const FakeLayout& each) {
        return !wanted.empty() && idOf(each) == wanted;
      });
      if (found == enabled_.end()) throw ScriptMistake("the layout \"" + arguments[0] + "\" is not enabled");
      mac::input_sources::setCurrentLayout(static_cast<std::size_t>(found - enabled_.begin()));
      return;
    }
    case Act::changeLayouts:
      setLayouts(arguments);
      mac::input_sources::postEnabledSourcesChanged();
      return;
    case Act::app: {
      auto opened = std::make_shared<FakeApp>();
      opened->name = arguments[0];
      if (arguments.size() > 1) opened->bundleIdentifier = arguments[1];
      opened->openWindow(opened->name);
      apps_.push_back(opened);
      bringToFront(opened);
      focusChanged();
      return;
    }
    case Act::front: {
      const AppRef wanted = arguments[0] == "nobody" ? nullptr : appNamed(arguments[0]);
      if (!wanted && arguments[0] != "nobody") {
        throw ScriptMistake("there is no application \"" + arguments[0] + "\"");
      }
      bringToFront(wanted);
      focusChanged();
      return;
    }
    case Act::focusAnswer:
      focusAnswer_ = answerOf(arguments, 0);
      focusAnswerUsed_ = false;
      return;
    case Act::terminal:
      throw ScriptMistake("the macOS host sends its keys to every application");
    case Act::otherAppCopies:
      mac::pasteboard::otherAppCopiesText(arguments[0]);
      return;
    case Act::pasteboardItem: {
      if (arguments.size() % 2 != 0) throw ScriptMistake("a pasteboard item is pairs of type and data");
      mac::pasteboard::Item item;
      for (std::size_t i = 0; i < arguments.size(); i += 2) {
        if (arguments[i + 1] == "unobtainable") {
          item.push_back({arguments[i], std::nullopt, true});
        } else {
          item.push_back({arguments[i], mac::bytesOf(arguments[i + 1]), false});
        }
      }
      auto items = mac::pasteboard::contents();
      items.push_back(std::move(item));
      mac::pasteboard::otherAppCopies(items);
      return;
    }
    case Act::clearPasteboard:
      mac::pasteboard::otherAppCopies({});
      return;
    case Act::pasteboardReportsNothing:
      mac::pasteboard::itemsAreAbsent(true);
      return;
    case Act::hold:
      mac::key_events::setModifiersHeld(number(eventFlagsOf(arguments)));
      return;
    case Act::releaseAfter:
      later(durationOf(arguments[0]), [] { mac::key_events::setModifiersHeld(0); });
      return;
    case Act::secureInput:
      secureInputHeld_ = onOff(arguments[0], "on", "off");
      focusChanged();
      return;
    case Act::permission:
      trusted_ = onOff(arguments[0], "granted", "missing");
      mac::accessibility::setTrusted(trusted_);
      return;
    case Act::permissionGrantedAfter:
      later(durationOf(arguments[0]), [this] {
        trusted_ = true;
        mac::accessibility::setTrusted(true);
      });
      return;
    case Act::taken: {
      const auto combination = parseCombination(arguments[0]);
      mac::hot_keys::takeByOther(combination.keyCode, combination.carbonModifiers);
      return;
    }
    case Act::loseHotKeys:
      mac::hot_keys::loseAll();
      return;
    case Act::setting:
      mac::defaults::set(arguments[0], storedValue(valueOf(arguments)));
      return;
    case Act::loginItem:
      mac::login_item::setStatus(static_cast<long>(statusOf(arguments[0])));
      return;
    case Act::loginItemRegistersAs:
      mac::login_item::setStatusAfterRegistration(static_cast<long>(statusOf(arguments[0])));
      return;
    case Act::failNext:
      failNext(arguments[0], arguments.size() > 1 ? arguments[1] : "", 0);
      return;
    case Act::failLater:
      failNext(arguments[1], arguments.size() > 2 ? arguments[2] : "",
               static_cast<int>(parseNumber(arguments[0])));
      return;
    case Act::alertAnswer:
      alertAnswers_.push_back({arguments[0]});
      return;
    case Act::alertAnswerByClosing:
      alertAnswers_.push_back({std::nullopt});
      return;
    case Act::logFolderMissing:
      std::filesystem::remove_all(home_ / "Library" / "Logs");
      return;
    case Act::logFile: {
      std::ofstream stream(logPath(), std::ios::binary | std::ios::trunc);
      stream << arguments[0];
      return;
    }
    case Act::logFileReadOnly:
      mac::process::setReadOnly(logPath());
      return;
    case Act::homeMissing:
      mac::process::setHomeDirectory("");
      return;
    case Act::version:
      mac::process::setInfo(kVersionKey, arguments[0]);
      return;
    case Act::versionMissing:
      mac::process::setInfo(kVersionKey, std::monostate());
      return;
    case Act::bundleIdentifierMissing:
      mac::process::setBundleIdentifier(std::nullopt);
      return;
    case Act::otherInstance:
      running_.push_back({kBundleIdentifier, kOwnProcess + 1});
      mac::workspace::setRunning(running_);
      return;
    case Act::ownInstanceListed:
      running_.push_back({kBundleIdentifier, kOwnProcess});
      mac::workspace::setRunning(running_);
      return;
    case Act::press:
      press(arguments[0]);
      return;
    case Act::wait:
      mac::time::advance(durationOf(arguments[0]));
      return;
    case Act::choose:
      choose(arguments[0]);
      return;
    case Act::click:
      click(arguments[0]);
      return;
    case Act::wake:
      mac::workspace::postDidWake();
      return;
    case Act::dispatch:
      mac::hot_keys::dispatch(kSignature, static_cast<std::uint32_t>(parseNumber(arguments[0])));
      return;
    default:
      throw ScriptMistake("this system has no such act");
  }
}

void MacWorld::start(const Words& arguments, const std::function<void()>& whileRunning) {
  host_ = nullptr;
  mac::process::end();
  host_ = makeHost();
  exitStatus_.reset();
  bool ran = false;
  mac::app::setEventLoop([&] {
    ran = true;
    whileRunning();
  });
  Words all{"/Applications/Lexwend.app/Contents/MacOS/Lexwend"};
  all.insert(all.end(), arguments.begin(), arguments.end());
  int status = 0;
  {
    const HostScope scope(*host_);
    HotKeyCenter center;
    status = runEntry(all, center, output_, output_);
  }
  mac::app::setEventLoop({});
  if (!ran) {
    exitStatus_ = status;
    whileRunning();
  }
}

Words MacWorld::lookAtSystem(Look look, const Words& arguments) {
  switch (look) {
    case Look::pasteboardText:
      return lineOf(mac::MacDesktop::pasteboardText());
    case Look::pasteboardItems: {
      Words lines;
      for (const auto& item : mac::pasteboard::contents()) {
        std::string line = "item";
        for (const auto& each : item) {
          line += " " + each.type + "=" +
                  (each.data ? "\"" + platform::textOf(platform::Bytes(*each.data)) + "\"" : "unobtainable");
        }
        lines.push_back(std::move(line));
      }
      return lines;
    }
    case Look::pasteboardClears:
      return lineOf(callCount("-[NSPasteboard clearContents]"));
    case Look::layout:
      return {enabledName(mac::input_sources::currentLayout())};
    case Look::layoutsSelected:
      noteSelections();
      return selections_;
    case Look::icon: {
      const auto items = mac::status_bar::items();
      const bool shows = !items.empty() && items.front().image.has_value();
      return {shows ? items.front().image->symbol : "none"};
    }
    case Look::icons:
      return icons();
    case Look::alerts:
      return alertLines(mac::alerts::shown());
    case Look::log:
      return logMessages();
    case Look::logFile:
      return lineOf(logBytes());
    case Look::beeps:
      return lineOf(static_cast<std::size_t>(mac::app::beeps()));
    case Look::prompts:
      return lineOf(static_cast<std::size_t>(mac::accessibility::promptsShown()));
    case Look::activations:
      return lineOf(static_cast<std::size_t>(mac::app::activations()));
    case Look::opened:
      return mac::workspace::openedUrls();
    case Look::setting: {
      const auto value = mac::defaults::get(arguments[0]);
      return {value ? settingText(defaultsValue(*value)) : "absent"};
    }
    case Look::settingsWritten: {
      Words keys;
      for (const auto& call : mac::calls()) {
        if (!call.name.starts_with("-[NSUserDefaults set")) continue;
        keys.push_back(call.arguments.substr(call.arguments.find(", ") + 2));
      }
      return keys;
    }
    case Look::loginItem:
      return {nameOf(static_cast<LoginItemStatus>(mac::login_item::status()))};
    case Look::loginRegistrations:
      return lineOf(callCount("-[SMAppService registerAndReturnError:]"));
    case Look::loginRemovals:
      return lineOf(callCount("-[SMAppService unregisterAndReturnError:]"));
    case Look::hotKeys: {
      Words lines;
      for (const auto& held : mac::hot_keys::registered()) {
        lines.push_back(combinationName(held.keyCode, held.modifiers));
      }
      return lines;
    }
    case Look::hotKeyIds: {
      Words lines;
      for (const auto& call : mac::callsNamed("RegisterEventHotKey")) {
        lines.push_back(identityOf(call.arguments));
      }
      return lines;
    }
    case Look::copiesSent:
      return lineOf(keysDown(kCopyKey));
    case Look::pastesSent:
      return lineOf(keysDown(kPasteKey));
    case Look::keysSent: {
      Words lines;
      for (const auto& key : mac::key_events::posted()) {
        std::ostringstream line;
        line << key.keyCode << (key.isDown ? " down" : " up") << " flags 0x" << std::hex << key.flags
             << std::dec << " source " << (key.sourceState ? std::to_string(*key.sourceState) : "none")
             << " tap " << key.tap << " at " << key.time.count();
        lines.push_back(line.str());
      }
      return lines;
    }
    case Look::elementCalls:
      return lineOf(callCount("AXUIElementCopyAttributeValue") + callCount("AXUIElementIsAttributeSettable") +
                    callCount("AXUIElementSetAttributeValue"));
    case Look::recorder:
      return {recorder() ? "open" : "closed"};
    case Look::recorderLook: {
      const auto window = recorder();
      return window ? linesOf(lookOf(*window)) : Words{};
    }
    case Look::recorderCombination:
    case Look::recorderMessage:
    case Look::save: {
      const auto window = recorder();
      if (!window) return {"no recorder is open"};
      if (look == Look::recorderCombination) return {window->controls[kCombination].text};
      if (look == Look::save) return {window->controls[kSave].isEnabled ? "enabled" : "disabled"};
      const auto& message = window->controls[kMessage];
      return {message.text, nameOf(roleOf(message.color))};
    }
    case Look::timers:
      return lineOf(mac::time::scheduledTimers());
    case Look::pendingWork:
      return lineOf(mac::time::pendingMainQueueWork());
    case Look::elapsed:
      return lineOf(
          static_cast<std::size_t>(std::chrono::duration_cast<milliseconds>(mac::time::now()).count()));
    default:
      throw ScriptMistake("this system has no such look");
  }
}

Words MacWorld::complaints() {
  Words all = std::move(complaints_);
  for (const auto& call : mac::failures::unused()) all.push_back(call + " was to fail and was not called");
  for (const auto& answer : alertAnswers_) {
    all.push_back("the alert answer \"" + answer.button.value_or("by closing") +
                  "\" was prepared and no alert came");
  }
  if (focusAnswer_ && !focusAnswerUsed_) {
    all.emplace_back("the answer prepared for the focused element was never asked for");
  }
  for (const auto& each : apps_) {
    if (!each->nextCopies.empty()) all.push_back(each->name + " was prepared for more copies than came");
    for (const auto& window : each->windows) {
      if (!window.field) continue;
      for (const auto& unused : window.field->unused()) all.push_back(each->name + ": " + unused);
    }
  }
  host_ = nullptr;
  for (const auto& left : linesOf(session_.unbalancedObjects())) all.push_back("not given back: " + left);
  return all;
}

}  // namespace lexwend::scenarios
