// SPDX-License-Identifier: MIT
#include "core/converter.h"
#include "input/input_sources.h"
#include "platform/host.h"
#include "platform/pasteboard.h"
#include "app/app_delegate.h"       // denied
#include "platform/linux/keyboard/input_sources.h"  // denied
#include <unistd.h>
#include <poll.h>
#include <sys/inotify.h>            // denied
