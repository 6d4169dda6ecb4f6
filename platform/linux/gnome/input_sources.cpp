// SPDX-License-Identifier: MIT
#include "platform/linux/gnome/input_sources.h"

#include <string>
#include <string_view>
#include <utility>

namespace lexwend::platform {
namespace {

/// Of "us+dvorak".
XkbLayoutName layoutNamed(std::string_view identifier) {
  const std::size_t plus = identifier.find('+');
  if (plus == std::string_view::npos) return {std::string(identifier), ""};
  return {std::string(identifier.substr(0, plus)), std::string(identifier.substr(plus + 1))};
}

}  // namespace

GnomeInputSources::GnomeInputSources(std::shared_ptr<GnomeShell> shell) : shell_(std::move(shell)) {
  observation_ = shell_->observe([this](const ShellEvent& event) {
    if (event.kind != ShellEventKind::keyPressed) reportChange();
  });
}

std::optional<XkbInputSources::Layouts> GnomeInputSources::layouts() {
  const auto told = shell_->layouts();
  if (!told) return std::nullopt;
  Layouts layouts;
  places_.clear();
  for (std::size_t i = 0; i < told->sources.size(); ++i) {
    const auto& [kind, identifier] = told->sources[i];
    if (kind != "xkb") continue;
    if (i == told->active) layouts.active = layouts.enabled.size();
    layouts.enabled.push_back(layoutNamed(identifier));
    places_.push_back(static_cast<std::uint32_t>(i));
  }
  return layouts;
}

void GnomeInputSources::selectLayout(const std::vector<XkbLayoutName>& /*enabled*/, std::size_t place) {
  shell_->selectLayout(places_[place]);
}

}  // namespace lexwend::platform
