// SPDX-License-Identifier: MIT
#pragma once
#include <CoreFoundation/CFBase.h>

typedef struct CF_BRIDGED_TYPE(id) CGColor* CGColorRef;
CF_EXPORT CFTypeID CGColorGetTypeID(void);
CF_EXPORT CGColorRef _Nullable CGColorRetain(CGColorRef _Nullable color);
CF_EXPORT void CGColorRelease(CGColorRef _Nullable color);
