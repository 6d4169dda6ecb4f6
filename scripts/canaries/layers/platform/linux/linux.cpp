// SPDX-License-Identifier: MIT
#include <QWidget>
#include <X11/Xlib.h>
#include <unistd.h>

#include "platform/host.h"
#include "platform/linux/x.h"
#include "platform/linux/clipboard/x.h"
#ifdef __linux__
#endif
#include "platform/fake/host.h"     // denied
#include "platform/mac/host.h"      // denied
#include "core/converter.h"         // denied
#include "app/app_delegate.h"       // denied
#include <AppKit/AppKit.h>          // denied
