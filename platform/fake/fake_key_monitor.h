// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <functional>

#include "platform/fake/fake_system.h"
#include "platform/key_monitor.h"

namespace lexwend::platform {

/// Local key monitors in memory; the one installed last sees a key first.
class FakeKeyMonitor : public KeyMonitor {
 public:
  explicit FakeKeyMonitor(FakeSystem& system) : system_(system) {}

  [[nodiscard]] Registration addLocalKeyDownMonitor(
      std::function<KeyDisposition(const KeyDownEvent&)> handler) override;

  // Controls of a test.
  /// A key reaches this application. The result is passedOn when no monitor consumed it.
  KeyDisposition deliver(const KeyDownEvent& event);
  std::size_t installed() const { return handlers_.count(); }

 private:
  FakeSystem& system_;
  Handlers<std::function<KeyDisposition(const KeyDownEvent&)>> handlers_;
};

}  // namespace lexwend::platform
