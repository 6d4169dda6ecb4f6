// SPDX-License-Identifier: MIT
#include "platform/fake/fake_key_monitor.h"

#include <utility>

namespace lexwend::platform {

Registration FakeKeyMonitor::addLocalKeyDownMonitor(
    std::function<KeyDisposition(const KeyDownEvent&)> handler) {
  system_.called("keyMonitor.addLocalKeyDownMonitor");
  const auto installed = std::make_shared<Registration>(handlers_.add(std::move(handler)));
  return Registration([this, installed] {
    system_.called("keyMonitor.remove");
    installed->cancel();
  });
}

KeyDisposition FakeKeyMonitor::deliver(const KeyDownEvent& event) {
  const auto handlers = handlers_.all();
  for (auto handler = handlers.rbegin(); handler != handlers.rend(); ++handler) {
    if ((**handler)(event) == KeyDisposition::consumed) return KeyDisposition::consumed;
  }
  return KeyDisposition::passedOn;
}

}  // namespace lexwend::platform
