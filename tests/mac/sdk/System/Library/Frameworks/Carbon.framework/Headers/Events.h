// SPDX-License-Identifier: MIT
// Modifier masks and virtual key codes.
#pragma once
#include <CoreFoundation/CFBase.h>

enum {
  cmdKey = 1 << 8,
  shiftKey = 1 << 9,
  alphaLock = 1 << 10,
  optionKey = 1 << 11,
  controlKey = 1 << 12,
};
enum {
  kVK_ANSI_A = 0x00,
  kVK_ANSI_C = 0x08,
  kVK_ANSI_V = 0x09,
  kVK_Return = 0x24,
  kVK_Tab = 0x30,
  kVK_Space = 0x31,
  kVK_Delete = 0x33,
  kVK_Escape = 0x35,
  kVK_F2 = 0x78,
  kVK_F1 = 0x7A,
};
