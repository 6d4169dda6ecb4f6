// SPDX-License-Identifier: MIT
#include <unistd.h>

#include "app/app_delegate.h"
#include "platform/fake/host.h"
