// SPDX-License-Identifier: MIT
#pragma once
#include <AppKit/NSApplication.h>
#include <AppKit/NSControls.h>
#include <AppKit/NSEvent.h>
#include <AppKit/NSMenus.h>
#include <AppKit/NSPasteboard.h>
#include <AppKit/NSWindows.h>
#include <Foundation/Foundation.h>
