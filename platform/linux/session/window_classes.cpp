// SPDX-License-Identifier: MIT
#include "platform/linux/session/window_classes.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string>

namespace lexwend::platform {
namespace {

// Terminals whose class does not say so; the others contain "terminal" or one of kTerminalWords.
constexpr std::array<std::string_view, 37> kTerminalClasses = {
    "alacritty",  "aterm",   "blackbox",    "console", "contour",     "cool-retro-term",
    "cosmicterm", "domterm", "eterm",       "evilvte", "foot",        "footclient",
    "ghostty",    "guake",   "hyper",       "kgx",     "kitty",       "konsole",
    "lilyterm",   "mlterm",  "pterm",       "putty",   "rio",         "roxterm",
    "sakura",     "st",      "st-256color", "tabby",   "terminology", "termite",
    "tilda",      "tilix",   "tym",         "warp",    "wterm",       "yakuake",
    "zutty"};
constexpr std::array<std::string_view, 6> kTerminalWords = {"terminal", "terminator", "xterm",
                                                            "rxvt",     "ptyxis",     "wezterm"};

// They ask for passwords: the prompts of GnuPG, of GNOME's keyring and of SSH.
constexpr std::array<std::string_view, 10> kPasswordPromptClasses = {
    "pinentry",     "pinentry-gtk", "pinentry-gtk-2", "pinentry-gnome3",   "pinentry-qt",
    "pinentry-efl", "gcr-prompter", "ssh-askpass",    "gnome-ssh-askpass", "ksshaskpass"};
// Copying ends the selection there: Emacs, and Vim with its usual keys in any window of its own.
constexpr std::array<std::string_view, 7> kCopyEndsSelectionClasses = {
    "emacs", "gvim", "vim", "nvim-qt", "neovide", "goneovim", "neovim-gtk"};

std::string lowerCase(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return lower;
}

/// Toolkits that name a class by the application's identifier put the name last.
template <std::size_t size>
bool isOneOf(const std::array<std::string_view, size>& classes, const std::string& lower) {
  const std::string_view lastPart = std::string_view(lower).substr(lower.rfind('.') + 1);
  return std::any_of(classes.begin(), classes.end(),
                     [&](std::string_view name) { return lower == name || lastPart == name; });
}

}  // namespace

bool isTerminalClass(std::string_view windowClass) {
  const std::string lower = lowerCase(windowClass);
  return std::any_of(kTerminalWords.begin(), kTerminalWords.end(),
                     [&](std::string_view word) { return lower.find(word) != std::string::npos; }) ||
         isOneOf(kTerminalClasses, lower);
}

bool isPasswordPromptClass(std::string_view windowClass) {
  return isOneOf(kPasswordPromptClasses, lowerCase(windowClass));
}

bool copyEndsSelectionInClass(std::string_view windowClass) {
  return isOneOf(kCopyEndsSelectionClasses, lowerCase(windowClass));
}

bool refusesCopy(const std::optional<std::string>& windowClass) {
  return windowClass && (isTerminalClass(*windowClass) || isPasswordPromptClass(*windowClass) ||
                         copyEndsSelectionInClass(*windowClass));
}

}  // namespace lexwend::platform
