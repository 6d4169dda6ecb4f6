// SPDX-License-Identifier: MIT
#include <string>
#include <unicode/uchar.h>

#include "core/converter.h"
#include "core/layout_map.h"
#include "core/simd/block_converter.h"
#include <hwy/highway.h>            // denied
#include "input/input_sources.h"    // denied
#include "platform/host.h"          // denied
#include "platform/linux/x.h"       // denied
#include <unistd.h>                 // denied
#include <X11/Xlib.h>               // denied
#include "layout_map.h"             // denied
#include "../core/layout_map.h"     // denied
#include "core/../app/delegate.h"   // denied
#include <platform/host.h>          // denied
#  include  "app/delegate.h"        // denied
// #include "app/delegate.h"
/* #include "app/delegate.h"
#include "app/delegate.h" */
#define WHERE "core/converter.h"
#include WHERE                      // denied
#if defined(__APPLE__)              // denied
#endif
#ifdef __linux__                    // denied
#endif
#if __has_include(<glib.h>)         // denied
#endif
// __APPLE__ in a comment asks nothing.
