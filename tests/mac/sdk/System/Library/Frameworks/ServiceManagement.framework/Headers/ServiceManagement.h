// SPDX-License-Identifier: MIT
#pragma once
#include <ServiceManagement/SMAppService.h>
