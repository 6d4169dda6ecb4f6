// SPDX-License-Identifier: MIT
#pragma once

#include <cctype>
#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "platform/fake/fake_host.h"
#include "text/text_access.h"

namespace lexwend {

using Lines = std::vector<std::string>;

/// An editor in front whose whole text "akuo" is selected, and a transform to capitals that remembers what it
/// saw.
struct TextFixture : testing::Test {
  platform::FakeHost host;
  platform::HostScope scope{host};
  platform::FakeAppRef editor = host.apps().open("Editor", "com.example.editor", "akuo");
  platform::FakeFieldRef field = editor->focus();
  Lines seen;
  TextAccess::Transform capitals = [this](std::string_view text) {
    seen.emplace_back(text);
    std::string out(text);
    for (char& c : out) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return std::optional(out);
  };

  TextFixture() { field->selectAll(); }

  /// Another field like the first, without what was prepared for that one.
  void openFreshField() {
    const std::string title = "window " + std::to_string(editor->windows.size());
    field = editor->openWindow(title, "akuo");
    editor->focusWindow(title);
    field->selectAll();
    seen.clear();
  }

  /// The failure of a call, or nothing when it returned normally.
  template <class Call>
  static std::optional<TextAccess::Failure> failureOf(Call call) {
    try {
      call();
    } catch (const TextAccess::Error& error) {
      return error.failure();
    }
    return std::nullopt;
  }
  std::optional<TextAccess::Failure> replaceWith(const TextAccess::Transform& transform) {
    return failureOf([&] { TextAccess::replaceSelection(transform); });
  }
  std::optional<TextAccess::Failure> replace() { return replaceWith(capitals); }

  Lines log() const { return host.logMessages(); }
  void setCompatMode(bool on) { host.standardUserDefaults().put("compatMode", on); }
  void expectNothingTouched() {
    EXPECT_TRUE(seen.empty());
    EXPECT_EQ(field->text(), "akuo");
    EXPECT_EQ(host.accessibility().elementCalls(), 0);
    EXPECT_EQ(host.calls().count("pasteboard."), 0u);
    EXPECT_TRUE(host.keyEvents().posted().empty());
  }
};

}  // namespace lexwend
