// SPDX-License-Identifier: MIT
#include <bit>
#include <hwy/highway.h>
#include "core/simd/block_converter.h"
#include "core/converter.h"         // denied
#include <unicode/uchar.h>          // denied
