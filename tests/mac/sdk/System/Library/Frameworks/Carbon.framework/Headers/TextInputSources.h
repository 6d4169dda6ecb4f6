// SPDX-License-Identifier: MIT
#pragma once
#include <CoreFoundation/CoreFoundation.h>

typedef struct CF_BRIDGED_TYPE(id) __TISInputSource* TISInputSourceRef;

CF_EXPORT const CFStringRef _Null_unspecified kTISPropertyInputSourceCategory;
CF_EXPORT const CFStringRef _Null_unspecified kTISPropertyInputSourceType;
CF_EXPORT const CFStringRef _Null_unspecified kTISPropertyInputSourceIsSelectCapable;
CF_EXPORT const CFStringRef _Null_unspecified kTISPropertyInputSourceIsEnabled;
CF_EXPORT const CFStringRef _Null_unspecified kTISPropertyInputSourceIsSelected;
CF_EXPORT const CFStringRef _Null_unspecified kTISPropertyInputSourceID;
CF_EXPORT const CFStringRef _Null_unspecified kTISPropertyLocalizedName;
CF_EXPORT const CFStringRef _Null_unspecified kTISPropertyInputSourceLanguages;
CF_EXPORT const CFStringRef _Null_unspecified kTISPropertyUnicodeKeyLayoutData;
CF_EXPORT const CFStringRef _Null_unspecified kTISCategoryKeyboardInputSource;
CF_EXPORT const CFStringRef _Null_unspecified kTISTypeKeyboardLayout;
CF_EXPORT const CFStringRef _Null_unspecified kTISTypeKeyboardInputMethodWithoutModes;
CF_EXPORT const CFStringRef _Null_unspecified kTISNotifySelectedKeyboardInputSourceChanged;
CF_EXPORT const CFStringRef _Null_unspecified kTISNotifyEnabledKeyboardInputSourcesChanged;

CF_EXPORT CFTypeID TISInputSourceGetTypeID(void);
CF_EXPORT void* _Null_unspecified TISGetInputSourceProperty(TISInputSourceRef _Null_unspecified inputSource,
                                                            CFStringRef _Null_unspecified propertyKey);
CF_EXPORT CFArrayRef _Null_unspecified TISCreateInputSourceList(CFDictionaryRef _Null_unspecified properties,
                                                                Boolean includeAllInstalled);
CF_EXPORT TISInputSourceRef _Null_unspecified TISCopyCurrentKeyboardInputSource(void);
CF_EXPORT TISInputSourceRef _Null_unspecified TISCopyCurrentKeyboardLayoutInputSource(void);
CF_EXPORT OSStatus TISSelectInputSource(TISInputSourceRef _Null_unspecified inputSource);
