// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <memory>
#include <set>
#include <string>

#include "platform/linux/wayland/data_control.h"
#include "tests/linux/testing/other_application.h"

struct zwlr_data_control_source_v1;

namespace lexwend::platform {

/// An owner of the clipboard by data-control, which answers as an application of X11 is told to. What is said
/// there of TARGETS says nothing here: the compositor announces the types. One thread; while a program takes
/// its time to read, nothing else is done.
class WaylandOwner {
 public:
  /// Throws std::runtime_error where no compositor has data-control.
  explicit WaylandOwner(CopyingApplication::Behaviour behaviour);
  ~WaylandOwner();
  WaylandOwner(const WaylandOwner&) = delete;
  WaylandOwner& operator=(const WaylandOwner&) = delete;

  void copyAgain();
  /// Answers for so long.
  void serve(std::chrono::milliseconds time);

 private:
  static void isAsked(void* self, zwlr_data_control_source_v1* source, const char* type, int descriptor);
  static void isReplaced(void* self, zwlr_data_control_source_v1* source);
  void answer(const std::string& type, int descriptor);
  void write(const std::string& bytes, int descriptor) const;

  CopyingApplication::Behaviour behaviour_;
  std::unique_ptr<DataControl> control_;
  std::set<zwlr_data_control_source_v1*> sources_;
};

}  // namespace lexwend::platform
