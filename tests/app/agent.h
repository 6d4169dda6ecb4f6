// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "app/app_delegate.h"
#include "hotkey/hot_key_center.h"
#include "platform/fake/fake_host.h"

namespace lexwend::tests {

inline constexpr platform::KeyCode kF2 = platform::kKeyF2;
inline constexpr platform::KeyCode kF5 = platform::kKeyF5;
inline constexpr platform::KeyCode kReturn = platform::kKeyReturn;
inline constexpr platform::KeyCode kEscape = platform::kKeyEscape;

inline constexpr std::string_view kFixTitle = "תקן טקסט מסומן    F2";
inline constexpr std::string_view kChangeKeyTitle = "שנה מקש קיצור…";
inline constexpr std::string_view kSwitchTitle = "החלף שפת מקלדת אחרי תיקון";
inline constexpr std::string_view kLoginTitle = "הפעל עם הכניסה למחשב";
inline constexpr std::string_view kCompatTitle = "מצב תאימות (דרך הלוח)";
inline constexpr std::string_view kPermissionTitle = "נדרש אישור נגישות…";

/// The agent on an operating system in memory, which is prepared between construction and launch().
struct Agent {
  platform::FakeHost host;
  platform::HostScope scope{host};
  HotKeyCenter center;
  std::shared_ptr<AppDelegate> delegate;

  void launch() {
    if (delegate == nullptr) delegate = AppDelegate::create(center);
    delegate->applicationDidFinishLaunching();
  }

  /// An item of the menu by its place, separators counted, from 0.
  platform::FakeMenuItem item(std::size_t place) {
    const auto menu = host.statusBar().menu();
    if (menu == nullptr || place >= menu->items.size()) {
      ADD_FAILURE() << "the menu has no item at place " << place;
      return {};
    }
    return *menu->items[place];
  }
  platform::FakeMenuItem fixItem() { return item(0); }
  platform::FakeMenuItem switchItem() { return item(3); }
  platform::FakeMenuItem loginItem() { return item(4); }
  platform::FakeMenuItem compatItem() { return item(5); }
  platform::FakeMenuItem permissionItem() { return item(7); }
  std::string statusLine() { return item(8).title; }
  std::string icon() { return host.statusBar().icon(); }

  bool choose(std::string_view title) { return host.statusBar().choose(title); }
  bool chooseFix() { return host.statusBar().choose(host.statusBar().menu()->items.at(0)); }

  /// Brings up an editor whose whole text is selected.
  platform::FakeAppRef openEditor(std::string text) {
    auto editor = host.apps().open("Editor", "com.example.editor", std::move(text));
    editor->focus()->selectAll();
    return editor;
  }
  std::string lastLogLine() {
    const auto messages = host.logMessages();
    return messages.empty() ? std::string() : messages.back();
  }
  /// The lines of the log that begin with "fix: ".
  std::vector<std::string> fixLines() {
    std::vector<std::string> lines;
    for (const auto& message : host.logMessages()) {
      if (message.starts_with("fix: ")) lines.push_back(message);
    }
    return lines;
  }
  std::string storedHotKey() {
    const auto& all = host.standardUserDefaults().all();
    return std::to_string(std::get<std::int64_t>(all.at("hotKeyCode"))) + " " +
           std::to_string(std::get<std::int64_t>(all.at("hotKeyModifiers")));
  }
};

}  // namespace lexwend::tests
