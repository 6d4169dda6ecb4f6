// SPDX-License-Identifier: MIT
// The check of the headers must refuse this one: it leaves out the header of std::string.
#pragma once

std::string greeting();
