// SPDX-License-Identifier: MIT
#include "platform/pasteboard.h"
#include "support/settings.h"
#include "text/text_access.h"
#include "input/input_sources.h"    // denied
#include "app/app_delegate.h"       // denied
#include <glib.h>                   // denied
