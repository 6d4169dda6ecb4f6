// SPDX-License-Identifier: MIT
#include <csignal>

#include "app/app_delegate.h"
#include "core/converter.h"
#include "hotkey/hot_key_center.h"
#include "input/input_sources.h"
#include "platform/host.h"
#include "support/log.h"
#include "text/text_access.h"
#include "platform/mac/host.h"      // denied
#include "tests/core/samples.h"     // denied
#include "tools/convert.h"          // denied
#include <xcb/xcb.h>                // denied
