// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>

#include "platform/linux/accessibility/atspi_bus.h"
#include "platform/linux/accessibility/field.h"

namespace lexwend::platform {

/// Finds the text field that has the keyboard, in one process, within the limits of the bus's round of calls.
/// The field is the one that said so. Only where none did, as in a window that had the keyboard before the
/// agent came, the active window is searched: so many levels deep, so many objects wide and so long as the
/// constants of the source say, and never below an object that manages its descendants, whose number
/// the application decides.
class FocusFinder {
 public:
  explicit FocusFinder(AtspiBus& bus) : bus_(bus) {}

  /// The focused object with text in that process; none when there is none or it was not found in time. Early
  /// in a round GTK 3 is asked again, which forgets its focus for a moment when the hot key is pressed.
  std::optional<Field> focusedText(std::uint32_t process);
  /// The process of the window that its application calls active; nothing where none does.
  std::optional<std::uint32_t> activeProcess();
  /// The same object, asked anew; none when it has lost the keyboard.
  std::optional<Field> stillFocused(const AtspiObject& object);

 private:
  std::optional<Field> askKnown(std::uint32_t process);
  std::optional<Field> search(const AtspiObject& application, bool isGtk4);

  AtspiBus& bus_;
  // GTK 4 does not always say where the focus went, so what was once found is asked as well.
  std::optional<AtspiObject> lastFound_;
};

}  // namespace lexwend::platform
