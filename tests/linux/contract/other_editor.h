// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

#include <sys/types.h>

namespace lexwend::contract {

/// An editor of another application, a process of its own; it ends with this.
class OtherEditor {
 public:
  enum class Kind { plain, password };
  OtherEditor(Kind kind, std::string_view text);
  ~OtherEditor();
  OtherEditor(const OtherEditor&) = delete;
  OtherEditor& operator=(const OtherEditor&) = delete;

  /// True once its window has the keyboard.
  bool isReady();
  /// The text that it told of last.
  std::string text();
  /// From now on it does nothing at all.
  void hang();

 private:
  void listen();
  pid_t process_ = -1;
  int output_ = -1;
  std::string unread_;
  bool ready_ = false;
  std::string text_;
};

}  // namespace lexwend::contract
