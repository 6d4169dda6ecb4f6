// SPDX-License-Identifier: MIT
#pragma once
#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFCollections.h>
#include <CoreFoundation/CFRunLoop.h>
#include <CoreFoundation/CFString.h>
