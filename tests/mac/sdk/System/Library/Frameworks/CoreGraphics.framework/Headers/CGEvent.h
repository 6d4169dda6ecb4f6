// SPDX-License-Identifier: MIT
// Quartz events: made, flagged and posted by a program.
#pragma once
#include <CoreFoundation/CFBase.h>
#include <CoreGraphics/CGGeometry.h>

typedef struct CF_BRIDGED_TYPE(id) __CGEvent* CGEventRef;
typedef struct CF_BRIDGED_TYPE(id) __CGEventSource* CGEventSourceRef;
typedef uint16_t CGKeyCode;

typedef CF_ENUM(int32_t, CGEventSourceStateID) {
  kCGEventSourceStatePrivate = -1,
  kCGEventSourceStateCombinedSessionState = 0,
  kCGEventSourceStateHIDSystemState = 1,
};
typedef CF_ENUM(uint32_t, CGEventTapLocation) {
  kCGHIDEventTap = 0,
  kCGSessionEventTap = 1,
  kCGAnnotatedSessionEventTap = 2,
};
typedef CF_ENUM(uint32_t, CGEventType) {
  kCGEventNull = 0,
  kCGEventKeyDown = 10,
  kCGEventKeyUp = 11,
  kCGEventFlagsChanged = 12,
};
typedef CF_OPTIONS(uint64_t, CGEventFlags) {
  kCGEventFlagMaskAlphaShift = 0x00010000,
  kCGEventFlagMaskShift = 0x00020000,
  kCGEventFlagMaskControl = 0x00040000,
  kCGEventFlagMaskAlternate = 0x00080000,
  kCGEventFlagMaskCommand = 0x00100000,
  kCGEventFlagMaskNumericPad = 0x00200000,
  kCGEventFlagMaskHelp = 0x00400000,
  kCGEventFlagMaskSecondaryFn = 0x00800000,
  kCGEventFlagMaskNonCoalesced = 0x00000100,
};

CF_EXPORT CFTypeID CGEventGetTypeID(void);
CF_EXPORT CFTypeID CGEventSourceGetTypeID(void);
CF_EXPORT CGEventSourceRef _Nullable CGEventSourceCreate(CGEventSourceStateID stateId);
CF_EXPORT CGEventFlags CGEventSourceFlagsState(CGEventSourceStateID stateId);
CF_EXPORT CGEventRef _Nullable CGEventCreateKeyboardEvent(CGEventSourceRef _Nullable source,
                                                          CGKeyCode virtualKey, bool keyDown);
CF_EXPORT void CGEventSetFlags(CGEventRef _Nullable event, CGEventFlags flags);
CF_EXPORT CGEventFlags CGEventGetFlags(CGEventRef _Nullable event);
CF_EXPORT CGEventType CGEventGetType(CGEventRef _Nullable event);
CF_EXPORT void CGEventPost(CGEventTapLocation tap, CGEventRef _Nullable event);
