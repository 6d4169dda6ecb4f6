// SPDX-License-Identifier: MIT
#pragma once
#include <ApplicationServices/AXUIElement.h>
#include <CoreFoundation/CoreFoundation.h>
#include <CoreGraphics/CoreGraphics.h>
