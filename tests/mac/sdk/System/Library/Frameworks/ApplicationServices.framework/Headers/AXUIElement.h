// SPDX-License-Identifier: MIT
// The Accessibility interface as a client sees it.
#pragma once
#include <CoreFoundation/CoreFoundation.h>

typedef const struct CF_BRIDGED_TYPE(id) __AXUIElement* AXUIElementRef;

typedef CF_ENUM(SInt32, AXError) {
  kAXErrorSuccess = 0,
  kAXErrorFailure = -25200,
  kAXErrorIllegalArgument = -25201,
  kAXErrorInvalidUIElement = -25202,
  kAXErrorInvalidUIElementObserver = -25203,
  kAXErrorCannotComplete = -25204,
  kAXErrorAttributeUnsupported = -25205,
  kAXErrorActionUnsupported = -25206,
  kAXErrorNotificationUnsupported = -25207,
  kAXErrorNotImplemented = -25208,
  kAXErrorNotificationAlreadyRegistered = -25209,
  kAXErrorNotificationNotRegistered = -25210,
  kAXErrorAPIDisabled = -25211,
  kAXErrorNoValue = -25212,
  kAXErrorParameterizedAttributeUnsupported = -25213,
  kAXErrorNotEnoughPrecision = -25214,
};

#define kAXFocusedUIElementAttribute CFSTR("AXFocusedUIElement")
#define kAXRoleAttribute CFSTR("AXRole")
#define kAXSelectedTextAttribute CFSTR("AXSelectedText")
#define kAXValueAttribute CFSTR("AXValue")

CF_EXPORT CFStringRef _Nonnull kAXTrustedCheckOptionPrompt;
CF_EXPORT Boolean AXIsProcessTrusted(void);
CF_EXPORT Boolean AXIsProcessTrustedWithOptions(CFDictionaryRef _Nullable options);

CF_EXPORT CFTypeID AXUIElementGetTypeID(void);
CF_EXPORT AXUIElementRef _Nonnull AXUIElementCreateSystemWide(void) CF_RETURNS_RETAINED;
CF_EXPORT AXUIElementRef _Nonnull AXUIElementCreateApplication(pid_t pid) CF_RETURNS_RETAINED;
CF_EXPORT AXError AXUIElementCopyAttributeValue(AXUIElementRef _Nonnull element,
                                                CFStringRef _Nonnull attribute,
                                                CFTypeRef _Nullable* _Nonnull value);
CF_EXPORT AXError AXUIElementIsAttributeSettable(AXUIElementRef _Nonnull element,
                                                 CFStringRef _Nonnull attribute, Boolean* _Nonnull settable);
CF_EXPORT AXError AXUIElementSetAttributeValue(AXUIElementRef _Nonnull element,
                                               CFStringRef _Nonnull attribute, CFTypeRef _Nonnull value);
