// SPDX-License-Identifier: MIT
#include "core/layout_map.h"
#include "input/input_sources.h"
#include "platform/input_source_service.h"
#include "support/log.h"
#include "text/text_access.h"       // denied
#include "hotkey/hot_key_center.h"  // denied
#include "platform/fake/host.h"     // denied
#include <xkbcommon/xkbcommon.h>    // denied
