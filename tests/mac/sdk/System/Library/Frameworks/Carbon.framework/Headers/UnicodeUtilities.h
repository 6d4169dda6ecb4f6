// SPDX-License-Identifier: MIT
// Translation of a virtual key code through a keyboard layout's data.
#pragma once
#include <CoreFoundation/CFBase.h>

#pragma pack(push, 2)
struct UCKeyboardTypeHeader {
  UInt32 keyboardTypeFirst;
  UInt32 keyboardTypeLast;
  UInt32 keyModifiersToTableNumOffset;
  UInt32 keyToCharTableIndexOffset;
  UInt32 keyStateRecordsIndexOffset;
  UInt32 keyStateTerminatorsOffset;
  UInt32 keySequenceDataIndexOffset;
};
typedef struct UCKeyboardTypeHeader UCKeyboardTypeHeader;
struct UCKeyboardLayout {
  UInt16 keyLayoutHeaderFormat;
  UInt16 keyLayoutDataVersion;
  UInt32 keyLayoutFeatureInfoOffset;
  UInt32 keyboardTypeCount;
  UCKeyboardTypeHeader keyboardTypeList[1];
};
typedef struct UCKeyboardLayout UCKeyboardLayout;
#pragma pack(pop)

enum { kUCKeyActionDown = 0, kUCKeyActionUp = 1, kUCKeyActionAutoKey = 2, kUCKeyActionDisplay = 3 };
enum { kUCKeyTranslateNoDeadKeysBit = 0 };
enum { kUCKeyTranslateNoDeadKeysMask = 1 << kUCKeyTranslateNoDeadKeysBit };
enum { kUCOutputBufferTooSmall = -25340 };

CF_EXPORT OSStatus UCKeyTranslate(const UCKeyboardLayout* _Null_unspecified keyLayout, UInt16 virtualKeyCode,
                                  UInt16 keyAction, UInt32 modifierKeyState, UInt32 keyboardType,
                                  OptionBits keyTranslateOptions, UInt32* _Null_unspecified deadKeyState,
                                  UniCharCount maxStringLength,
                                  UniCharCount* _Null_unspecified actualStringLength,
                                  UniChar* _Null_unspecified unicodeString);
CF_EXPORT UInt8 LMGetKbdType(void);
