// SPDX-License-Identifier: MIT
#include <vector>

#include <unicode/uchar.h>          // denied
#include "platform/types.h"
#include "core/converter.h"         // denied
#include "platform/linux/x.h"       // denied
#include <X11/Xlib.h>               // denied
