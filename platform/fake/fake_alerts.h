// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/alerts.h"
#include "platform/fake/fake_system.h"

namespace lexwend::platform {

/// Alerts whose answers the test prepares. An alert without an answer is a complaint, and so is an answer
/// without an alert.
class FakeAlerts : public Alerts {
 public:
  explicit FakeAlerts(FakeSystem& system) : system_(system) {}

  int runModal(const Alert& alert) override;

  // Controls of a test.
  /// The user will press this button of the next alert. `meanwhile` runs while the alert is open.
  void answer(std::string buttonTitle, std::function<void()> meanwhile = {});
  /// The same, by the index of the button.
  void answerWith(std::size_t button, std::function<void()> meanwhile = {});
  /// The user will close the next alert's window.
  void answerByClosing(std::function<void()> meanwhile = {});
  const std::vector<Alert>& shown() const { return shown_; }
  bool open() const { return depth_ > 0; }
  std::vector<std::string> unused() const;

 private:
  struct Answer {
    bool closes = false;
    std::string buttonTitle;
    std::optional<std::size_t> button;
    std::function<void()> meanwhile;
  };
  FakeSystem& system_;
  std::deque<Answer> answers_;
  std::vector<Alert> shown_;
  int depth_ = 0;
};

}  // namespace lexwend::platform
