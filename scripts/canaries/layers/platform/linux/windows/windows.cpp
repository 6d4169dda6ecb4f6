// SPDX-License-Identifier: MIT
#include "platform/host.h"
#include "platform/linux/accessibility/x.h"  // denied
#include "platform/linux/clipboard/x.h"      // denied
#include "platform/linux/display/x.h"
#include "platform/linux/keyboard/x.h"  // denied
#include "platform/linux/keymap/x.h"
#include "platform/linux/linux_host.h"   // denied
#include "platform/linux/selection/x.h"  // denied
#include "platform/linux/session/x.h"
#include "platform/linux/sway/x.h"  // denied
#include "platform/linux/tray/x.h"
#include "platform/linux/wayland/x.h"
#include "platform/linux/windows/own.h"
