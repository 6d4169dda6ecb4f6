// SPDX-License-Identifier: MIT
#include "platform/linux/session/terminal_classes.h"

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

}  // namespace

bool isTerminalClass(std::string_view windowClass) {
  std::string lower(windowClass);
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  // Toolkits that name a class by the application's identifier put the name last.
  const std::size_t dot = lower.rfind('.');
  const std::string lastPart = dot == std::string::npos ? lower : lower.substr(dot + 1);
  return std::any_of(kTerminalWords.begin(), kTerminalWords.end(),
                     [&](std::string_view word) { return lower.find(word) != std::string::npos; }) ||
         std::any_of(kTerminalClasses.begin(), kTerminalClasses.end(),
                     [&](std::string_view name) { return lower == name || lastPart == name; });
}

}  // namespace lexwend::platform
