// SPDX-License-Identifier: MIT
#import <AppKit/AppKit.h>
#include <unistd.h>

#include "platform/host.h"
#include "platform/mac/cf_ref.h"
#if defined(__APPLE__)
#endif
#import "platform/linux/x.h"        // denied
#include "support/log.h"            // denied
#include <QWidget>                  // denied
