// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <map>

#include "platform/fake/host.h"
#include "platform/host.h"
#include "platform/linux/x.h"       // denied
#include <unistd.h>                 // denied
#ifdef __APPLE__                    // denied
#endif
