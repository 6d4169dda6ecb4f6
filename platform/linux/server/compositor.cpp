// SPDX-License-Identifier: MIT
#include "platform/linux/server/compositor.h"

#include <fstream>
#include <string>
#include <utility>

#include "platform/linux/wayland/data_control.h"
#include "platform/linux/wayland/key_events.h"
#include "platform/linux/wayland/selections.h"
#include "platform/linux/wayland/virtual_keyboard.h"

namespace lexwend::platform {

std::unique_ptr<ShortcutKeyEvents> Compositor::makeKeyEvents(std::function<bool()> mayCopy,
                                                             std::function<bool()> mayPaste) {
  return std::make_unique<WaylandKeyEvents>(
      WaylandKeyEvents::Needs{[this] { return frontWindow(); }, std::move(mayCopy), std::move(mayPaste),
                              refusesUnknownWindows(),
                              [this](std::int64_t window) { return focusKey(window); }},
      makeKeyPlayer());
}

std::optional<FrontWindow> Compositor::windowOf(std::optional<std::uint32_t> process) {
  if (!process) return std::nullopt;
  std::ifstream file("/proc/" + std::to_string(*process) + "/comm");  // as the kernel cuts it
  std::string name;
  return FrontWindow{*process, process, std::getline(file, name) ? std::optional(name) : std::nullopt};
}

Selections Compositor::selections() {
  return selectionsOfWayland();
}

std::optional<std::uint32_t> Compositor::frontProcess() {
  const auto window = frontWindow();
  return window ? window->process : std::nullopt;
}

std::optional<std::string> Compositor::frontWindowClass() {
  const auto window = frontWindow();
  return window ? window->windowClass : std::nullopt;
}

bool offersClipboardAndKeys(const WaylandConnection& connection) {
  return DataControl::isOffered(connection) && VirtualKeyboard::isOffered(connection);
}

}  // namespace lexwend::platform
