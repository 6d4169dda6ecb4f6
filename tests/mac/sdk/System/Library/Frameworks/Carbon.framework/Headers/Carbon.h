// SPDX-License-Identifier: MIT
#pragma once
#include <ApplicationServices/ApplicationServices.h>
#include <Carbon/CarbonEvents.h>
#include <Carbon/Events.h>
#include <Carbon/TextInputSources.h>
#include <Carbon/UnicodeUtilities.h>
