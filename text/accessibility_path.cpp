// SPDX-License-Identifier: MIT
#include "text/accessibility_path.h"

#include <utility>
#include <variant>

#include "core/characters.h"
#include "platform/accessibility.h"
#include "support/log.h"

namespace lexwend::TextAccess {
namespace {

using platform::AccessibilityElementRef;
using platform::AccessibilityError;
using platform::AttributeResult;

/// The text of an answer; null when the call failed, gave no value, or gave something that is not text.
const std::string* textOf(const AttributeResult& result) {
  return result.error == 0 ? std::get_if<std::string>(&result.value) : nullptr;
}

std::string count(std::string_view text) {
  return std::to_string(characterCount(text));
}

bool giveUp(const std::string& reason, AccessibilityError error) {
  Log::write("AX: " + reason + " (err=" + std::to_string(error) + ")");
  return false;
}

}  // namespace

bool replaceViaAccessibility(const Transform& transform) {
  platform::Accessibility& ax = platform::accessibility();

  // 1. The focused element.
  const AttributeResult focused =
      ax.copyAttributeValue(ax.createSystemWideElement(), platform::kFocusedUIElementAttribute);
  const auto* found = focused.error == 0 ? std::get_if<AccessibilityElementRef>(&focused.value) : nullptr;
  if (found == nullptr || *found == nullptr) return giveUp("no focused element", focused.error);
  const AccessibilityElementRef& element = *found;

  // 2. Its role, for the log only. Its answers decide, not its role.
  const AttributeResult roleResult = ax.copyAttributeValue(element, platform::kRoleAttribute);
  const auto* roleText = std::get_if<std::string>(&roleResult.value);
  const std::string role = "role=" + (roleText != nullptr ? *roleText : std::string("?"));

  // 3. The selected text.
  const AttributeResult selectedResult = ax.copyAttributeValue(element, platform::kSelectedTextAttribute);
  const std::string* selected = textOf(selectedResult);
  if (selected == nullptr || selected->empty()) {
    return giveUp(role + " selectedText unavailable/empty", selectedResult.error);
  }
  const std::string roleAndCount = role + " selected=" + count(*selected) + " chars";

  // 4. Whether it may be written.
  const platform::SettableResult settable = ax.isAttributeSettable(element, platform::kSelectedTextAttribute);
  if (settable.error != 0 || !settable.settable) {
    return giveUp(roleAndCount + ", not settable", settable.error);
  }

  // 5. The whole value before the write. Without it the write could not be checked.
  const AttributeResult beforeResult = ax.copyAttributeValue(element, platform::kValueAttribute);
  const std::string* before = textOf(beforeResult);
  if (before == nullptr) return giveUp(roleAndCount + ", value unreadable", beforeResult.error);

  // 6. The replacement.
  const std::optional<std::string> replacement = transform(*selected);
  if (!replacement) {
    Log::write("AX: nothing to change");
    throw Error(Failure::nothingToChange);
  }

  // 7. The write.
  const AccessibilityError written =
      ax.setAttributeValue(element, platform::kSelectedTextAttribute, *replacement);
  if (written != 0) return giveUp(role + " set failed", written);

  // 8. The whole value after the write. A write that succeeded and cannot be checked counts as done.
  const AttributeResult afterResult = ax.copyAttributeValue(element, platform::kValueAttribute);
  const std::string* after = textOf(afterResult);
  if (after == nullptr) {
    Log::write("AX: " + role + " set ok, value unreadable after");
    return true;
  }

  // 9. An element that accepted the write and kept its value does not support this path.
  const bool changed = !canonicallyEquivalent(*after, *before);
  Log::write("AX: " + role + " set ok, valueChanged=" + (changed ? "true" : "false") +
             " (before=" + count(*before) + " after=" + count(*after) + ")");
  return changed;
}

}  // namespace lexwend::TextAccess
