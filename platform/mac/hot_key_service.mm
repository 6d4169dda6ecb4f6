// SPDX-License-Identifier: MIT
#include "platform/mac/hot_key_service.h"

#import <Carbon/Carbon.h>

#include <utility>

#include "platform/mac/callback.h"
#include "platform/mac/own_menu.h"

namespace lexwend::platform::mac {
namespace {

using PressHandler = std::function<OSStatus(const HotKeyEvent&)>;

class MacHotKeyEvent : public HotKeyEvent {
 public:
  explicit MacHotKeyEvent(EventRef event) : event_(event) {}

  OSStatus hotKeyID(HotKeyID& out) const override {
    EventHotKeyID identity{};
    const ::OSStatus status = GetEventParameter(event_, kEventParamDirectObject, typeEventHotKeyID, nullptr,
                                                sizeof identity, nullptr, &identity);
    if (status == noErr) out = {.signature = identity.signature, .id = identity.id};
    return status;
  }

 private:
  EventRef event_;
};

/// The handler of this process. The system's callback carries no user data and is never removed, so it finds
/// the handler here, or nothing once the service is gone.
std::shared_ptr<PressHandler>& installedHandler() {
  static std::shared_ptr<PressHandler> handler;
  return handler;
}

/// When presses are not wanted: while a pause runs, and until the last one ended.
struct Pauses {
  int running = 0;
  EventTime lastEnd = 0;
};

Pauses& pauses() {
  static Pauses pauses;
  return pauses;
}

bool wasPausedAt(EventTime time) { return pauses().running > 0 || time < pauses().lastEnd; }

::OSStatus hotKeyPressed(EventHandlerCallRef, EventRef event, void*) {
  ::OSStatus status = noErr;
  // While a menu is open, presses wait. What the user wanted then is not what is selected when it has closed.
  const EventTime time = GetEventTime(event);
  if (wasOwnMenuOpenAt(time) || wasPausedAt(time)) return status;
  guarded([&] {
    if (const auto handler = installedHandler()) status = (*handler)(MacHotKeyEvent(event));
  });
  return status;
}

}  // namespace

MacHotKeyService::~MacHotKeyService() {
  installedHandler() = nullptr;
  pauses() = {};
}

OSStatus MacHotKeyService::installHandler(PressHandler handler) {
  installedHandler() = shared(std::move(handler));
  const EventTypeSpec pressed = {kEventClassKeyboard, kEventHotKeyPressed};
  return InstallEventHandler(GetApplicationEventTarget(), hotKeyPressed, 1, &pressed, nullptr, nullptr);
}

HotKeyRegistration MacHotKeyService::registerHotKey(KeyCode keyCode, Modifiers modifiers, HotKeyID identity) {
  EventHotKeyRef registration = nullptr;
  const ::OSStatus status =
      RegisterEventHotKey(number(keyCode), number(modifiers), EventHotKeyID{identity.signature, identity.id},
                          GetApplicationEventTarget(), kEventHotKeyNoOptions, &registration);
  HotKeyRegistration registered{.status = status, .hotKey = {}};
  if (status == noErr && registration != nullptr) {
    registered.hotKey = Registration([registration] { UnregisterEventHotKey(registration); });
  }
  return registered;
}

Registration MacHotKeyService::ignorePresses() {
  ++pauses().running;
  return Registration([] {
    --pauses().running;
    pauses().lastEnd = GetCurrentEventTime();
  });
}

static_assert(number(kCmdKey) == cmdKey && number(kShiftKey) == shiftKey && number(kOptionKey) == optionKey &&
              number(kControlKey) == controlKey);

}  // namespace lexwend::platform::mac
