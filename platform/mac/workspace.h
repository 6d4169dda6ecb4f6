// SPDX-License-Identifier: MIT
#pragma once

#include "platform/workspace.h"

namespace lexwend::platform::mac {

/// The shared NSWorkspace. Main thread only.
class MacWorkspace : public Workspace {
 public:
  std::optional<FrontApplication> frontmostApplication() override;
  UrlRef urlFromString(std::string_view text) override;
  void open(const UrlRef& url) override;
  Registration observeDidWake(std::function<void()> handler) override;
};

}  // namespace lexwend::platform::mac
