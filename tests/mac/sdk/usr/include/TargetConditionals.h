// SPDX-License-Identifier: MIT
#pragma once

#define TARGET_OS_MAC 1
#define TARGET_OS_OSX 1
#define TARGET_OS_IPHONE 0
#define TARGET_OS_MACCATALYST 0
#if defined(__x86_64__)
#define TARGET_CPU_X86_64 1
#define TARGET_CPU_ARM64 0
#else
#define TARGET_CPU_X86_64 0
#define TARGET_CPU_ARM64 1
#endif
// Some AppKit constants took the values of the phone when the arm64 ABI was made.
#define TARGET_ABI_USES_IOS_VALUES (!TARGET_CPU_X86_64)
