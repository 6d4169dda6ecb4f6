// SPDX-License-Identifier: MIT
#pragma once
#include <CoreFoundation/CoreFoundation.h>
#include <Foundation/NSCollections.h>
#include <Foundation/NSObject.h>
#include <Foundation/NSServices.h>
#include <Foundation/NSString.h>
#include <dispatch/dispatch.h>
#include <objc/runtime.h>
