// SPDX-License-Identifier: MIT
#include "platform/linux/display/x.h"  // denied
