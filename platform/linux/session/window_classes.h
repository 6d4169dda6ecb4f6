// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

/// What the class of a window (WM_CLASS, ICCCM 4.1.2.5) tells about it. Letter case does not matter.
namespace lexwend::platform {

/// Whether such a window shows a terminal.
bool isTerminalClass(std::string_view windowClass);
/// Whether it asks for a password. Some prompts are on no accessibility bus and tell it nowhere else.
bool isPasswordPromptClass(std::string_view windowClass);
/// Whether it is an editor in which copying ends the selection, so that a paste would land beside the old
/// text.
bool copyEndsSelectionInClass(std::string_view windowClass);
/// Whether the copy shortcut would do harm there, by any of these. A window without a class is none of them.
bool refusesCopy(const std::optional<std::string>& windowClass);

}  // namespace lexwend::platform
