// SPDX-License-Identifier: MIT
#pragma once

#include <exception>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

/// Replaces the text that the user has selected in the front application. Keeps no state. Main thread only.
/// The clipboard path blocks for two seconds at most. On Linux it blocks for six and a half when other
/// programs are slow to answer for the clipboard. The accessibility path blocks as accessibility.h says.
namespace lexwend::TextAccess {

/// Why a selection was not replaced. The position of a case is its error code, so the order is fixed.
enum class Failure {
  secureInput,      ///< some program holds secure keyboard entry
  noSelection,      ///< two simulated copies put no text on the pasteboard, or a shortcut was refused
  noPermission,     ///< this process is not trusted for Accessibility
  nothingToChange,  ///< the transform returned no replacement
};

/// The name of a case, for log lines.
const char* caseName(Failure failure);

/// A failure on its way to the caller.
class Error final : public std::exception {
 public:
  explicit Error(Failure failure) : failure_(failure) {}
  Failure failure() const { return failure_; }
  const char* what() const noexcept override;

 private:
  Failure failure_;
};

/// Turns the selected text (UTF-8, possibly several lines) into its replacement, or into nothing when no
/// change is needed. Each of the two paths calls it at most once.
using Transform = std::function<std::optional<std::string>(std::string_view)>;

/// Replaces the selection; throws Error. After a failure the user's pasteboard is as it was.
void replaceSelection(const Transform& transform);

/// Opens the Accessibility page of the system's privacy settings. Does nothing on a system without such a
/// page.
void openAccessibilitySettings();

}  // namespace lexwend::TextAccess
