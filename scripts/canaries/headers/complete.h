// SPDX-License-Identifier: MIT
// The check of the headers must accept this one.
#pragma once

#include <string>

std::string greeting();
