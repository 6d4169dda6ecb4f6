// SPDX-License-Identifier: MIT
#include "text/text_access.h"

#include "platform/accessibility.h"
#include "platform/secure_input.h"
#include "platform/workspace.h"
#include "support/log.h"
#include "support/settings.h"
#include "text/accessibility_path.h"
#include "text/clipboard_path.h"

namespace lexwend::TextAccess {
namespace {

constexpr std::string_view kAccessibilitySettingsUrl =
    "x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility";

const char* truthName(bool value) {
  return value ? "true" : "false";
}

}  // namespace

const char* caseName(Failure failure) {
  switch (failure) {
    case Failure::secureInput:
      return "secureInput";
    case Failure::noSelection:
      return "noSelection";
    case Failure::noPermission:
      return "noPermission";
    case Failure::nothingToChange:
      return "nothingToChange";
  }
  return "?";
}

const char* Error::what() const noexcept {
  return caseName(failure_);
}

void replaceSelection(const Transform& transform) {
  const bool secure = platform::secureInput().isSecureEventInputEnabled();
  const bool trusted = platform::accessibility().isProcessTrusted();
  const bool compat = Settings::compatMode();
  Log::write(std::string("replaceSelection: secureInput=") + truthName(secure) +
             " trusted=" + truthName(trusted) + " compat=" + truthName(compat));

  // Secure input is reported even when the permission is missing as well. Its logged value counts; trust and
  // the setting are read again for the decision.
  if (secure) throw Error(Failure::secureInput);
  if (!platform::accessibility().isProcessTrusted()) throw Error(Failure::noPermission);

  if (Settings::compatMode()) {
    replaceViaClipboard(transform);
    return;
  }
  if (replaceViaAccessibility(transform)) {
    Log::write("AX path: done");
    return;
  }
  Log::write("AX path: not applicable, falling back to clipboard");
  replaceViaClipboard(transform);
}

void openAccessibilitySettings() {
  platform::Workspace& workspace = platform::workspace();
  if (const auto url = workspace.urlFromString(kAccessibilitySettingsUrl)) workspace.open(url);
}

}  // namespace lexwend::TextAccess
