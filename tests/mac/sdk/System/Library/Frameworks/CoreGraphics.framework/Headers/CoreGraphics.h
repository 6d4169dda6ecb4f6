// SPDX-License-Identifier: MIT
#pragma once
#include <CoreGraphics/CGColor.h>
#include <CoreGraphics/CGEvent.h>
#include <CoreGraphics/CGGeometry.h>
