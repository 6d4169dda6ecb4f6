// SPDX-License-Identifier: MIT
// The event targets, handlers and parameters that a global hot key needs.
#pragma once
#include <CoreFoundation/CFBase.h>

typedef struct OpaqueEventRef* EventRef;
typedef struct OpaqueEventHandlerRef* EventHandlerRef;
typedef struct OpaqueEventHandlerCallRef* EventHandlerCallRef;
typedef struct OpaqueEventTargetRef* EventTargetRef;
typedef struct OpaqueEventHotKeyRef* EventHotKeyRef;
typedef UInt32 EventParamName;
typedef UInt32 EventParamType;

// Records of this interface are laid out with an alignment of two, as they were first.
#pragma pack(push, 2)
struct EventTypeSpec {
  OSType eventClass;
  UInt32 eventKind;
};
typedef struct EventTypeSpec EventTypeSpec;

struct EventHotKeyID {
  OSType signature;
  UInt32 id;
};
typedef struct EventHotKeyID EventHotKeyID;
#pragma pack(pop)

typedef OSStatus (*EventHandlerProcPtr)(EventHandlerCallRef _Null_unspecified nextHandler,
                                        EventRef _Null_unspecified event, void* _Null_unspecified userData);
typedef EventHandlerProcPtr EventHandlerUPP;

enum { kEventClassKeyboard = 0x6B657962 };  // 'keyb'
enum {
  kEventRawKeyDown = 1,
  kEventRawKeyRepeat = 2,
  kEventRawKeyUp = 3,
  kEventRawKeyModifiersChanged = 4,
  kEventHotKeyPressed = 5,
  kEventHotKeyReleased = 6,
};
enum { kEventParamDirectObject = 0x2D2D2D2D };  // '----'
enum { typeEventHotKeyID = 0x686B6964 };        // 'hkid'
enum { kEventHotKeyNoOptions = 0, kEventHotKeyExclusive = 1 << 0 };
enum {
  eventHandlerAlreadyInstalledErr = -9866,
  eventParameterNotFoundErr = -9870,
  eventNotHandledErr = -9874,
  eventHotKeyExistsErr = -9878,
  eventHotKeyInvalidErr = -9879,
};

CF_EXPORT EventTargetRef _Null_unspecified GetApplicationEventTarget(void);
CF_EXPORT EventTargetRef _Null_unspecified GetEventDispatcherTarget(void);
CF_EXPORT OSStatus InstallEventHandler(EventTargetRef _Null_unspecified target,
                                       EventHandlerUPP _Null_unspecified handler, ItemCount typeCount,
                                       const EventTypeSpec* _Null_unspecified types,
                                       void* _Null_unspecified userData,
                                       EventHandlerRef _Null_unspecified* _Null_unspecified handlerRef);
CF_EXPORT OSStatus RemoveEventHandler(EventHandlerRef _Null_unspecified handlerRef);
CF_EXPORT OSStatus RegisterEventHotKey(UInt32 hotKeyCode, UInt32 hotKeyModifiers, EventHotKeyID hotKeyId,
                                       EventTargetRef _Null_unspecified target, OptionBits options,
                                       EventHotKeyRef _Null_unspecified* _Null_unspecified hotKeyRef);
CF_EXPORT OSStatus UnregisterEventHotKey(EventHotKeyRef _Null_unspecified hotKeyRef);
CF_EXPORT OSStatus GetEventParameter(EventRef _Null_unspecified event, EventParamName name,
                                     EventParamType desiredType, EventParamType* _Null_unspecified actualType,
                                     ByteCount bufferSize, ByteCount* _Null_unspecified actualSize,
                                     void* _Null_unspecified data);
CF_EXPORT OSType GetEventClass(EventRef _Null_unspecified event);
CF_EXPORT UInt32 GetEventKind(EventRef _Null_unspecified event);
typedef double EventTime;  // seconds since the system started
CF_EXPORT EventTime GetEventTime(EventRef _Null_unspecified event);
CF_EXPORT EventTime GetCurrentEventTime(void);
CF_EXPORT Boolean IsSecureEventInputEnabled(void);
