// SPDX-License-Identifier: MIT
#include "core/text_units.h"
#include "platform/user_defaults.h"
#include "support/log.h"
#include "text/text_access.h"       // denied
#include <unicode/ustring.h>
#include <QString>                  // denied
#include <sys/stat.h>               // denied
