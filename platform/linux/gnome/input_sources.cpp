// SPDX-License-Identifier: MIT
#include "platform/linux/gnome/input_sources.h"

#include <string>
#include <string_view>
#include <utility>

#include <xkbcommon/xkbcommon.h>

namespace lexwend::platform {
namespace {

/// Of "us+dvorak".
XkbLayoutName layoutNamed(std::string_view identifier) {
  const std::size_t plus = identifier.find('+');
  if (plus == std::string_view::npos) return {std::string(identifier), ""};
  return {std::string(identifier.substr(0, plus)), std::string(identifier.substr(plus + 1))};
}

}  // namespace

GnomeInputSources::GnomeInputSources(std::shared_ptr<GnomeShell> shell, Play play)
    : shell_(std::move(shell)),
      shortcut_({.current = nullptr,
                 .keyGiving = [this](std::uint32_t keysym) { return keyGiving(keysym); },
                 .play = std::move(play)}) {
  observation_ = shell_->observe([this](const ShellEvent& event) {
    if (event.kind != ShellEventKind::keyPressed) reportChange();
  });
}

std::optional<XkbInputSources::Layouts> GnomeInputSources::layouts() {
  Layouts layouts;
  places_.clear();
  const auto told = shell_->layouts();
  if (!told) {
    const std::vector<XkbLayoutName> byUse = desktopLayoutsByUse();
    if (!byUse.empty() && !byUse.front().layout.empty()) layouts.active = 0;
    for (const XkbLayoutName& name : byUse) {
      if (!name.layout.empty()) layouts.enabled.push_back(name);  // no input method
    }
    return layouts;
  }
  for (std::size_t i = 0; i < told->sources.size(); ++i) {
    const auto& [kind, identifier] = told->sources[i];
    if (kind != "xkb") continue;
    if (i == told->active) layouts.active = layouts.enabled.size();
    layouts.enabled.push_back(layoutNamed(identifier));
    places_.push_back(static_cast<std::uint32_t>(i));
  }
  return layouts;
}

void GnomeInputSources::selectLayout(const std::vector<XkbLayoutName>& enabled, std::size_t place) {
  if (places_.empty()) {
    // Where it cannot be checked, the shortcut would be pressed once too often.
    if (shell_->notesLayouts()) shortcut_.select(enabled[place]);
  } else {
    shell_->selectLayout(places_[place]);
  }
}

std::optional<KeyCode> GnomeInputSources::keyGiving(std::uint32_t keysym) {
  const auto now = layouts();
  xkb_keymap* const keymap = now ? keymapOf(now->enabled) : nullptr;
  return keymap != nullptr ? platform::keyGiving(*keymap, keysym) : std::nullopt;
}

xkb_keymap* GnomeInputSources::keymapOf(const std::vector<XkbLayoutName>& layouts) {
  if (keymap_ && layouts == layoutsOfKeymap_) return keymap_.get();
  std::string layoutList;
  std::string variantList;
  for (const XkbLayoutName& name : layouts) {
    const std::string separator = layoutList.empty() ? "" : ",";
    layoutList += separator + name.layout;
    variantList += separator + name.variant;
  }
  const xkb_rule_names names{"evdev", "pc105", layoutList.c_str(), variantList.c_str(), ""};
  keymap_.reset(context() != nullptr
                    ? xkb_keymap_new_from_names(context(), &names, XKB_KEYMAP_COMPILE_NO_FLAGS)
                    : nullptr,
                xkb_keymap_unref);
  layoutsOfKeymap_ = layouts;
  return keymap_.get();
}

}  // namespace lexwend::platform
