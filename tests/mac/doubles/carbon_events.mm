// SPDX-License-Identifier: MIT
// Carbon events: hot keys, their handlers and parameters; and secure input.
#import <Carbon/Carbon.h>

#include <algorithm>
#include <memory>

#include "tests/mac/doubles/support.h"

using namespace lexwend::doubles;

struct OpaqueEventTargetRef {};
struct OpaqueEventHandlerRef {
  EventHandlerUPP handler;
  void* userData;
  std::vector<EventTypeSpec> types;
};
struct OpaqueEventHotKeyRef {
  hot_keys::Registered registered;
  bool isRegistered;
  bool isLost;  // forgotten by the system, not given back
};
struct OpaqueEventRef {
  EventHotKeyID hotKey;
  EventTime time;
  bool isDelivered;  // the event lives only while its handlers run
};

namespace {

struct State {
  OpaqueEventTargetRef applicationTarget;
  std::vector<std::unique_ptr<OpaqueEventHandlerRef>> handlers;
  // Handles stay for the session, so that one that is used too late is recognised.
  std::vector<std::unique_ptr<OpaqueEventHotKeyRef>> hotKeys;
  std::vector<std::unique_ptr<OpaqueEventRef>> events;
  std::vector<OpaqueEventRef*> queued;  // pressed while the agent's menu is open or its main thread blocked
  std::int32_t nextRegistrationStatus = noErr;
  bool isNextReferenceNull = false;
  std::int32_t nextParameterStatus = noErr;
  std::vector<std::pair<std::uint32_t, std::uint32_t>> takenByOthers;
  bool isSecureInput = false;
};
State& state() {
  static auto* the = new State;
  return *the;
}
const ResetHook kReset([] { state() = State{}; });

const ProcessEndHook kProcessEnd([] {
  state().handlers.clear();
  state().hotKeys.clear();
  state().queued.clear();
  state().events.clear();
});

void requireApplicationTarget(EventTargetRef target, const char* what) {
  if (target != &state().applicationTarget) die(std::string(what) + ": not the application's event target");
}

std::int32_t deliver(OpaqueEventRef* event);

}  // namespace

namespace lexwend::doubles::hot_keys {

std::vector<Registered> registered() {
  std::vector<Registered> found;
  for (const auto& hotKey : state().hotKeys) {
    if (hotKey->isRegistered) found.push_back(hotKey->registered);
  }
  return found;
}
void failNextRegistration(std::int32_t status) { state().nextRegistrationStatus = status; }
void nextRegistrationHasNoReference() { state().isNextReferenceNull = true; }
void failNextEventParameter(std::int32_t status) { state().nextParameterStatus = status; }
std::size_t installedHandlers() { return state().handlers.size(); }

std::optional<std::int32_t> press(std::uint32_t keyCode, std::uint32_t modifiers) {
  const OpaqueEventHotKeyRef* pressed = nullptr;
  for (const auto& hotKey : state().hotKeys) {
    if (hotKey->isRegistered && hotKey->registered.keyCode == keyCode &&
        hotKey->registered.modifiers == modifiers) {
      pressed = hotKey.get();
    }
  }
  if (pressed == nullptr) return std::nullopt;
  return dispatch(pressed->registered.signature, pressed->registered.id);
}

std::optional<std::int32_t> dispatch(std::uint32_t signature, std::uint32_t id) {
  if (state().handlers.empty()) return std::nullopt;
  state().events.push_back(
      std::make_unique<OpaqueEventRef>(OpaqueEventRef{{signature, id}, secondsSinceStartup(), true}));
  OpaqueEventRef* event = state().events.back().get();
  if (isMenuOpen() || isMainThreadBlocked()) {
    state().queued.push_back(event);
    return std::nullopt;
  }
  return deliver(event);
}

}  // namespace lexwend::doubles::hot_keys

void lexwend::doubles::deliverQueuedPresses() {
  if (isMenuOpen()) return;
  for (OpaqueEventRef* event : std::exchange(state().queued, {})) deliver(event);
}

namespace {
std::int32_t deliver(OpaqueEventRef* event) {
  // It comes by the run loop, after what that had to do before.
  runMainQueueAndTimersDue();
  std::int32_t status = eventNotHandledErr;
  @autoreleasepool {
    for (const auto& handler : state().handlers) {
      const bool wantsIt =
          std::any_of(handler->types.begin(), handler->types.end(), [](const EventTypeSpec& type) {
            return type.eventClass == kEventClassKeyboard && type.eventKind == kEventHotKeyPressed;
          });
      if (wantsIt) status = handler->handler(nullptr, event, handler->userData);
    }
  }
  event->isDelivered = false;
  return status;
}
}  // namespace

namespace lexwend::doubles::hot_keys {

void takeByOther(std::uint32_t keyCode, std::uint32_t modifiers) {
  state().takenByOthers.emplace_back(keyCode, modifiers);
}
bool isTakenByOther(std::uint32_t keyCode, std::uint32_t modifiers) {
  const auto& taken = state().takenByOthers;
  return std::find(taken.begin(), taken.end(), std::pair(keyCode, modifiers)) != taken.end();
}
void loseAll() {
  for (const auto& hotKey : state().hotKeys) {
    hotKey->isLost = hotKey->isRegistered;
    hotKey->isRegistered = false;
  }
}

}  // namespace lexwend::doubles::hot_keys

namespace lexwend::doubles::secure_input {
void setEnabled(bool enabled) { state().isSecureInput = enabled; }
}  // namespace lexwend::doubles::secure_input

extern "C" {

Boolean IsSecureEventInputEnabled() {
  record();
  return state().isSecureInput;
}

EventTargetRef GetApplicationEventTarget() {
  called();
  return &state().applicationTarget;
}
EventTargetRef GetEventDispatcherTarget() { die("GetEventDispatcherTarget is not the application's target"); }

OSStatus InstallEventHandler(EventTargetRef target, EventHandlerUPP handler, ItemCount typeCount,
                             const EventTypeSpec* types, void* userData, EventHandlerRef* handlerRef) {
  requireMainThread();
  requireApplicationTarget(target, "InstallEventHandler");
  requireNonnull((const void*)handler, "InstallEventHandler: the handler");
  requireNonnull(types, "InstallEventHandler: the event types");
  std::string text;
  for (ItemCount i = 0; i < typeCount; ++i) {
    text += "{" + std::to_string(types[i].eventClass) + ", " + std::to_string(types[i].eventKind) + "} ";
  }
  record(text + "userData=" + (userData == nullptr ? "null" : "set") +
         ", reference=" + (handlerRef == nullptr ? "null" : "kept"));
  if (const auto code = takeFailure()) return *code;
  for (const auto& installed : state().handlers) {
    if (installed->handler == handler && installed->userData == userData) {
      return eventHandlerAlreadyInstalledErr;
    }
  }
  state().handlers.push_back(std::make_unique<OpaqueEventHandlerRef>(
      OpaqueEventHandlerRef{handler, userData, {types, types + typeCount}}));
  if (handlerRef != nullptr) *handlerRef = state().handlers.back().get();
  return noErr;
}

OSStatus RegisterEventHotKey(UInt32 hotKeyCode, UInt32 hotKeyModifiers, EventHotKeyID hotKeyId,
                             EventTargetRef target, OptionBits options, EventHotKeyRef* hotKeyRef) {
  requireMainThread();
  requireApplicationTarget(target, "RegisterEventHotKey");
  requireNonnull(hotKeyRef, "RegisterEventHotKey: the reference");
  record(std::to_string(hotKeyCode) + ", " + std::to_string(hotKeyModifiers) + ", {" +
         std::to_string(hotKeyId.signature) + ", " + std::to_string(hotKeyId.id) +
         "}, options=" + std::to_string(options));
  if (state().nextRegistrationStatus != noErr) return std::exchange(state().nextRegistrationStatus, noErr);
  if (const auto code = takeFailure()) return *code;
  if (hot_keys::isTakenByOther(hotKeyCode, hotKeyModifiers)) return eventHotKeyExistsErr;
  if (takeFailure("RegisterEventHotKey reference")) state().isNextReferenceNull = true;
  const hot_keys::Registered wanted{hotKeyCode, hotKeyModifiers, hotKeyId.signature, hotKeyId.id};
  for (const auto& hotKey : state().hotKeys) {
    if (hotKey->isRegistered && hotKey->registered.keyCode == hotKeyCode &&
        hotKey->registered.modifiers == hotKeyModifiers) {
      return eventHotKeyExistsErr;
    }
  }
  if (std::exchange(state().isNextReferenceNull, false)) {
    *hotKeyRef = nullptr;
    return noErr;
  }
  const auto code = takeFailure("RegisterEventHotKey status");
  state().hotKeys.push_back(
      std::make_unique<OpaqueEventHotKeyRef>(OpaqueEventHotKeyRef{wanted, !code, false}));
  *hotKeyRef = state().hotKeys.back().get();
  return code.value_or(noErr);
}
OSStatus UnregisterEventHotKey(EventHotKeyRef hotKeyRef) {
  requireMainThread();
  requireNonnull(hotKeyRef);
  const bool isKnown = std::any_of(state().hotKeys.begin(), state().hotKeys.end(),
                                   [&](const auto& each) { return each.get() == hotKeyRef; });
  if (isKnown && hotKeyRef->isLost) {
    record(std::to_string(hotKeyRef->registered.id));
    hotKeyRef->isLost = false;
    return eventHotKeyInvalidErr;
  }
  if (!isKnown || !hotKeyRef->isRegistered) die("UnregisterEventHotKey: a hot key that is not registered");
  record(std::to_string(hotKeyRef->registered.id));
  if (const auto code = takeFailure()) return *code;
  hotKeyRef->isRegistered = false;
  return noErr;
}

OSStatus GetEventParameter(EventRef event, EventParamName name, EventParamType desiredType,
                           EventParamType* actualType, ByteCount bufferSize, ByteCount* actualSize,
                           void* data) {
  requireNonnull(event, "GetEventParameter: the event");
  requireNonnull(data, "GetEventParameter: the data");
  if (!event->isDelivered) die("GetEventParameter: the event is gone");
  record(std::to_string(name) + ", " + std::to_string(desiredType) + ", " + std::to_string(bufferSize) +
         " bytes, actualType=" + (actualType == nullptr ? "null" : "asked") +
         ", actualSize=" + (actualSize == nullptr ? "null" : "asked"));
  if (state().nextParameterStatus != noErr) return std::exchange(state().nextParameterStatus, noErr);
  if (const auto code = takeFailure()) return *code;
  if (name != kEventParamDirectObject || desiredType != typeEventHotKeyID) return eventParameterNotFoundErr;
  if (bufferSize < sizeof(EventHotKeyID)) die("GetEventParameter: no room for the parameter");
  *(EventHotKeyID*)data = event->hotKey;
  if (actualType != nullptr) *actualType = typeEventHotKeyID;
  if (actualSize != nullptr) *actualSize = sizeof(EventHotKeyID);
  return noErr;
}
EventTime GetEventTime(EventRef event) {
  requireNonnull(event, "GetEventTime: the event");
  if (!event->isDelivered) die("GetEventTime: the event is gone");
  return event->time;
}
EventTime GetCurrentEventTime() { return secondsSinceStartup(); }
}
