// SPDX-License-Identifier: MIT
// The words of a script as values and values as its lines, for worlds whose applications and layouts are
// models. Everything throws ScriptMistake on a word that it does not know.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/fake/fake_apps.h"
#include "platform/fake/fake_injections.h"
#include "platform/key_events.h"
#include "platform/login_item.h"
#include "platform/recorder_window.h"
#include "platform/user_defaults.h"
#include "tests/scenarios/world.h"

namespace lexwend::scenarios {

/// Milliseconds, not negative.
std::chrono::milliseconds durationOf(const std::string& text);
/// The optional last argument as a time; zero without it.
std::chrono::milliseconds timeAt(const Words& arguments, std::size_t index);

template <typename Value, std::size_t kCount>
Value oneOf(const std::string& word, const std::array<std::pair<std::string_view, Value>, kCount>& choices) {
  std::string known;
  for (const auto& [name, value] : choices) {
    if (name == word) return value;
    known += " " + std::string(name);
  }
  throw ScriptMistake("\"" + word + "\" is none of:" + known);
}

bool onOff(const std::string& word, std::string_view on, std::string_view off);

platform::FakeCopy copyOf(const Words& arguments);
platform::AccessOperation operationOf(const std::string& word);
/// "error CODE", "hangs MS", "text TEXT", "nothing", "other", "no", "lies", from that argument on.
platform::FakeAnswer answerOf(const Words& arguments, std::size_t index);
/// The keys that a user holds: modifiers and "Fn".
platform::EventFlags eventFlagsOf(const Words& names);
platform::FakeOperation failureOf(const std::string& word);
platform::LoginItemStatus statusOf(const std::string& word);
std::string nameOf(platform::LoginItemStatus status);
std::string nameOf(platform::ColorRole color);
/// The value of a setting: its key, its kind, its value.
platform::DefaultsValue valueOf(const Words& arguments);
std::string settingText(const platform::DefaultsValue& value);
std::string signatureText(std::uint32_t signature);

Words lineOf(const std::optional<std::string>& text);
Words lineOf(std::size_t number);
/// What is fixed about the recorder's window, one line for the window and one for each part.
Words linesOf(const platform::RecorderWindowLook& look);
Words linesOf(const std::string& text);

/// For each alert its message, its text and its buttons.
template <typename Alerts>
Words alertLines(const Alerts& alerts) {
  Words lines;
  for (const auto& alert : alerts) {
    lines.push_back(alert.messageText);
    lines.push_back(alert.informativeText);
    std::string buttons;
    for (const auto& button : alert.buttons) buttons += (buttons.empty() ? "[" : " [") + button + "]";
    lines.push_back(std::move(buttons));
  }
  return lines;
}

}  // namespace lexwend::scenarios
