// SPDX-License-Identifier: MIT
#pragma once
#include <objc/objc.h>

// Declared without arguments on purpose: a caller casts it to the type of the method it sends.
LXW_SDK_EXTERN void objc_msgSend(void);
