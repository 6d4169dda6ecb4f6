// SPDX-License-Identifier: MIT
#pragma once
#include <objc/objc.h>

LXW_SDK_EXTERN Class _Nullable objc_getClass(const char* _Nonnull name);
LXW_SDK_EXTERN Class _Nullable object_getClass(id _Nullable object);
LXW_SDK_EXTERN const char* _Nonnull class_getName(Class _Nullable cls);
LXW_SDK_EXTERN size_t class_getInstanceSize(Class _Nullable cls);
