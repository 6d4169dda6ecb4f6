// SPDX-License-Identifier: MIT
#pragma once

#include "platform/key_events.h"

namespace lexwend::platform::mac {

/// Quartz events, posted as if a keyboard had sent them. Main thread only.
class MacKeyEvents : public KeyEvents {
 public:
  EventFlags flagsState(EventSourceState state) override;
  EventSourceRef createSource(EventSourceState state) override;
  std::unique_ptr<KeyEvent> createKeyboardEvent(const EventSourceRef& source, KeyCode keyCode,
                                                bool keyDown) override;
  PostResult post(EventTap tap, const KeyEvent& event) override;
};

}  // namespace lexwend::platform::mac
