// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>

#include "platform/linux/accessibility/atspi_bus.h"

namespace lexwend::platform {

/// Finds the text field that has the keyboard, in one process, within the limits of the bus's round of calls.
class FocusFinder {
 public:
  explicit FocusFinder(AtspiBus& bus) : bus_(bus) {}

  /// The focused object with text in that process; none when there is none or it was not found in time. Early
  /// in a round GTK 3 is asked again, which forgets its focus for a moment when the hot key is pressed.
  std::optional<AtspiObject> focusedText(std::uint32_t process);

 private:
  bool isFocusedText(const AtspiObject& object);
  std::optional<AtspiObject> askKnown(std::uint32_t process);
  std::optional<AtspiObject> askCollection(const AtspiObject& application);
  std::optional<AtspiObject> walk(const AtspiObject& application, bool isGtk4);

  AtspiBus& bus_;
  std::optional<AtspiObject>
      lastFound_;  // GTK 4 sends no focus events, so what was once found is asked first
};

}  // namespace lexwend::platform
