// SPDX-License-Identifier: MIT
#include "core/layout_map.h"
#include "hotkey/hot_key_center.h"
#include "support/settings.h"
#include "app/app_delegate.h"       // denied
#include <QWidget>                  // denied
#include <QtWidgets/QWidget>        // denied
