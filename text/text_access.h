// SPDX-License-Identifier: MIT
#pragma once

#include <exception>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

/// The one way to replace the text that the user has selected in the front application. No state. Main thread
/// only. The clipboard path blocks for two seconds at most, on Linux six and a half where other programs are
/// slow to answer for the clipboard; the accessibility path as long as accessibility.h says.
namespace lexwend::TextAccess {

/// Why a selection was not replaced. The order is the code of the platform's error object; no host makes one,
/// so its domain is kept nowhere.
enum class Failure {
  secureInput,      ///< some program holds secure keyboard entry
  noSelection,      ///< two simulated copies put no text on the pasteboard, or a shortcut was refused
  noPermission,     ///< this process is not trusted for Accessibility
  nothingToChange,  ///< the transform returned no replacement
};

/// The bare name of a case, for log lines.
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

/// From the selected text (UTF-8, possibly several lines) to its replacement, or to nothing when no change is
/// needed. Called at most once by each of the two paths.
using Transform = std::function<std::optional<std::string>(std::string_view)>;

/// Returns when the selection was replaced; throws Error. After a failure the user's pasteboard is as it was.
void replaceSelection(const Transform& transform);

/// Opens the Accessibility page of the system's privacy settings, as far as the system knows such a page.
void openAccessibilitySettings();

}  // namespace lexwend::TextAccess
