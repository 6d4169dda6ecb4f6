// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "platform/fake/fake_apps.h"
#include "platform/fake/fake_system.h"
#include "platform/workspace.h"

namespace lexwend::platform {

/// The user's session in memory.
class FakeWorkspace : public Workspace {
 public:
  FakeWorkspace(FakeSystem& system, FakeApps& apps) : system_(system), apps_(apps) {}

  std::optional<FrontApplication> frontmostApplication() override;
  UrlRef urlFromString(std::string_view text) override;
  void open(const UrlRef& url) override;
  Registration observeDidWake(std::function<void()> handler) override;

  // Controls of a test.
  /// The machine wakes from sleep.
  void wake();
  /// The system forgets everything about this process.
  void processEnds() { observers_.clear(); }
  const std::vector<std::string>& openedUrls() const { return opened_; }
  std::size_t wakeObservers() const { return observers_.count(); }

 private:
  FakeSystem& system_;
  FakeApps& apps_;
  std::vector<std::string> opened_;
  Handlers<std::function<void()>> observers_;
};

}  // namespace lexwend::platform
