// SPDX-License-Identifier: MIT
#include "platform/linux/server/compositor.h"

#include <utility>

#include "platform/linux/wayland/key_events.h"
#include "platform/linux/wayland/selections.h"

namespace lexwend::platform {

std::unique_ptr<ShortcutKeyEvents> Compositor::makeKeyEvents(std::function<bool()> mayCopy,
                                                             std::function<bool()> mayPaste) {
  return std::make_unique<WaylandKeyEvents>(
      WaylandKeyEvents::Needs{[this] { return frontWindow(); }, std::move(mayCopy), std::move(mayPaste),
                              refusesUnknownWindows()},
      makeKeyPlayer());
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

}  // namespace lexwend::platform
