// SPDX-License-Identifier: MIT
#include <unistd.h>
#include <poll.h>
#include <sys/inotify.h>            // denied
#include "platform/pasteboard.h"
#include "core/converter.h"         // denied
#include "platform/linux/keyboard/input_sources.h"  // denied
