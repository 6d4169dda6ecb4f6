// SPDX-License-Identifier: MIT
// Modifier masks.
#pragma once
#include <CoreFoundation/CFBase.h>

enum {
  cmdKey = 1 << 8,
  shiftKey = 1 << 9,
  alphaLock = 1 << 10,
  optionKey = 1 << 11,
  controlKey = 1 << 12,
};
