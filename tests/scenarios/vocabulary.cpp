// SPDX-License-Identifier: MIT
#include "tests/scenarios/vocabulary.h"

#include <sstream>
#include <variant>

#include "tests/scenarios/script.h"

namespace lexwend::scenarios {

using namespace platform;
using std::chrono::milliseconds;

namespace {

struct ValueText {
  std::string operator()(bool value) const { return value ? "true" : "false"; }
  std::string operator()(std::int64_t value) const { return std::to_string(value); }
  std::string operator()(double value) const { return std::to_string(value); }
  std::string operator()(const std::string& value) const { return "text " + value; }
  std::string operator()(const OtherDefaultsValue&) const { return "other"; }
};

std::string placeOf(const Frame& frame) {
  std::ostringstream text;
  text << frame.x << ' ' << frame.y << ' ' << frame.width << ' ' << frame.height;
  return text.str();
}

std::string lineOf(const char* what, const LabelLook& label) {
  constexpr std::array<const char*, 3> kAlignments = {"natural", "right", "center"};
  constexpr std::array<const char*, 3> kWeights = {"regular", "medium", "semibold"};
  std::ostringstream line;
  line << what << " at " << placeOf(label.frame) << ' '
       << kAlignments.at(static_cast<std::size_t>(label.alignment)) << " size " << label.fontSize << ' '
       << kWeights.at(static_cast<std::size_t>(label.fontWeight)) << ' ' << nameOf(label.color);
  if (label.wraps) line << " wrapping";
  if (label.background) line << " on " << nameOf(*label.background) << " radius " << label.cornerRadius;
  if (!label.text.empty()) line << " \"" << label.text << "\"";
  return line.str();
}

std::string lineOf(const char* what, const ButtonLook& button) {
  return std::string(what) + " at " + placeOf(button.frame) + " \"" + button.title + "\"";
}

}  // namespace

bool onOff(const std::string& word, std::string_view on, std::string_view off) {
  return oneOf<bool, 2>(word, {{{on, true}, {off, false}}});
}

milliseconds durationOf(const std::string& text) {
  const auto value = parseNumber(text);
  if (value < 0) throw ScriptMistake("time does not run backwards: " + text);
  return milliseconds(value);
}

milliseconds timeAt(const Words& arguments, std::size_t index) {
  return index < arguments.size() ? durationOf(arguments[index]) : milliseconds(0);
}

FakeCopy copyOf(const Words& arguments) {
  using Kind = FakeCopy::Kind;
  return {oneOf<Kind, 5>(arguments[0], {{{"selection", Kind::selection},
                                         {"nothing", Kind::nothing},
                                         {"empty", Kind::emptyText},
                                         {"image", Kind::image},
                                         {"clears", Kind::clears}}}),
          timeAt(arguments, 1)};
}

AccessOperation operationOf(const std::string& word) {
  return oneOf<AccessOperation, 3>(word, {{{"read", AccessOperation::read},
                                           {"settable", AccessOperation::settable},
                                           {"write", AccessOperation::write}}});
}

FakeAnswer answerOf(const Words& arguments, std::size_t index) {
  const std::string& kind = arguments[index];
  const bool hasValue = index + 1 < arguments.size();
  if (kind == "error" || kind == "hangs" || kind == "text") {
    if (!hasValue) throw ScriptMistake("the answer \"" + kind + "\" needs a value");
    const std::string& value = arguments[index + 1];
    if (kind == "error") return FakeAnswer::fails(static_cast<AccessibilityError>(parseNumber(value)));
    return kind == "hangs" ? FakeAnswer::hangs(durationOf(value)) : FakeAnswer::text(value);
  }
  if (hasValue) throw ScriptMistake("the answer \"" + kind + "\" takes no value");
  if (kind == "nothing") return FakeAnswer::noValue();
  if (kind == "other") return FakeAnswer::otherKind();
  if (kind == "no") return FakeAnswer::refuses();
  if (kind == "lies") return FakeAnswer::lies();
  throw ScriptMistake("\"" + kind + "\" is no answer (error, hangs, text, nothing, other, no, lies)");
}

EventFlags eventFlagsOf(const Words& names) {
  EventFlags flags = kNoEventFlags;
  for (const auto& modifier : names) {
    flags |= oneOf<EventFlags, 5>(modifier, {{{"Cmd", kEventFlagCommand},
                                              {"Shift", kEventFlagShift},
                                              {"Option", kEventFlagOption},
                                              {"Control", kEventFlagControl},
                                              {"Fn", kEventFlagSecondaryFn}}});
  }
  return flags;
}

FakeOperation failureOf(const std::string& word) {
  for (int i = 0; i <= static_cast<int>(FakeOperation::takeSharedApplication); ++i) {
    const auto operation = static_cast<FakeOperation>(i);
    if (word == name(operation)) return operation;
  }
  throw ScriptMistake("\"" + word + "\" is nothing that can fail");
}

LoginItemStatus statusOf(const std::string& word) {
  using Status = LoginItemStatus;
  return oneOf<Status, 4>(word, {{{"not-registered", Status::notRegistered},
                                  {"enabled", Status::enabled},
                                  {"requires-approval", Status::requiresApproval},
                                  {"not-found", Status::notFound}}});
}

std::string nameOf(LoginItemStatus status) {
  switch (status) {
    case LoginItemStatus::notRegistered:
      return "not-registered";
    case LoginItemStatus::enabled:
      return "enabled";
    case LoginItemStatus::requiresApproval:
      return "requires-approval";
    case LoginItemStatus::notFound:
      return "not-found";
  }
  return "?";
}

std::string nameOf(ColorRole color) {
  switch (color) {
    case ColorRole::label:
      return "label";
    case ColorRole::secondaryLabel:
      return "secondary";
    case ColorRole::quaternaryLabel:
      return "quaternary";
    case ColorRole::systemRed:
      return "red";
  }
  return "?";
}

DefaultsValue valueOf(const Words& arguments) {
  const std::string& kind = arguments[1];
  if (kind == "other") return OtherDefaultsValue{};
  if (arguments.size() < 3) throw ScriptMistake("a setting of the kind \"" + kind + "\" needs a value");
  const std::string& value = arguments[2];
  if (kind == "integer") return static_cast<std::int64_t>(parseNumber(value));
  if (kind == "bool") return onOff(value, "true", "false");
  if (kind == "text") return value;
  if (kind == "real") return std::stod(value);
  throw ScriptMistake("\"" + kind + "\" is no kind of setting (integer, bool, text, real, other)");
}

std::string settingText(const DefaultsValue& value) {
  return std::visit(ValueText(), value);
}

std::string signatureText(std::uint32_t signature) {
  std::string text;
  for (int shift = 24; shift >= 0; shift -= 8) {
    text.push_back(static_cast<char>((signature >> shift) & 0xFFU));
  }
  return text;
}

Words lineOf(const std::optional<std::string>& text) {
  return text ? Words{*text} : Words{};
}
Words lineOf(std::size_t number) {
  return {std::to_string(number)};
}

Words linesOf(const RecorderWindowLook& look) {
  std::string window = "window at " + placeOf(look.contentRect) + " level " + std::to_string(look.level);
  const std::array<std::pair<bool, const char*>, 7> traits = {{{look.titled, " titled"},
                                                               {look.closable, " closable"},
                                                               {look.resizable, " resizable"},
                                                               {look.miniaturizable, " miniaturizable"},
                                                               {look.deferred, " deferred"},
                                                               {look.releasedWhenClosed, " released"},
                                                               {look.centered, " centered"}}};
  for (const auto& [present, word] : traits) window += present ? word : "";
  return {window + " \"" + look.title + "\"",
          lineOf("prompt", look.prompt),
          lineOf("combination", look.combination),
          lineOf("message", look.message),
          lineOf("save", look.save),
          lineOf("cancel", look.cancel)};
}

Words linesOf(const std::string& text) {
  Words lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

}  // namespace lexwend::scenarios
