// SPDX-License-Identifier: MIT
#include "platform/fake/fake_alerts.h"

#include <utility>

namespace lexwend::platform {

int FakeAlerts::runModal(const Alert& alert) {
  system_.called("alerts.runModal");
  shown_.push_back(alert);
  const int last = kAlertFirstButtonReturn + static_cast<int>(alert.buttons.size()) - 1;
  if (alert.buttons.empty()) {
    system_.complain("the alert \"" + alert.messageText + "\" has no button");
    return kAlertFirstButtonReturn;
  }
  if (answers_.empty()) {
    system_.complain("the alert \"" + alert.messageText + "\" has no answer prepared");
    return last;
  }
  const Answer answer = std::move(answers_.front());
  answers_.pop_front();
  ++depth_;
  if (answer.meanwhile) answer.meanwhile();
  --depth_;
  if (answer.closes) return last;
  if (answer.button && *answer.button < alert.buttons.size()) {
    return kAlertFirstButtonReturn + static_cast<int>(*answer.button);
  }
  for (std::size_t i = 0; i < alert.buttons.size(); ++i) {
    if (alert.buttons[i] == answer.buttonTitle) return kAlertFirstButtonReturn + static_cast<int>(i);
  }
  system_.complain("the alert \"" + alert.messageText + "\" has no button \"" + answer.buttonTitle + "\"");
  return last;
}

void FakeAlerts::answer(std::string buttonTitle, std::function<void()> meanwhile) {
  answers_.push_back({false, std::move(buttonTitle), std::nullopt, std::move(meanwhile)});
}

void FakeAlerts::answerWith(std::size_t button, std::function<void()> meanwhile) {
  answers_.push_back({false, "#" + std::to_string(button), button, std::move(meanwhile)});
}

void FakeAlerts::answerByClosing(std::function<void()> meanwhile) {
  answers_.push_back({true, {}, std::nullopt, std::move(meanwhile)});
}

std::vector<std::string> FakeAlerts::unused() const {
  std::vector<std::string> complaints;
  for (const auto& answer : answers_) {
    complaints.push_back("the alert answer \"" + answer.buttonTitle + "\" was prepared and no alert came");
  }
  return complaints;
}

}  // namespace lexwend::platform
