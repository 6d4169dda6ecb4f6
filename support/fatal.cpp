// SPDX-License-Identifier: MIT
#include "support/fatal.h"

#include <cstdio>
#include <cstdlib>

namespace lexwend {

void fatal(const char* why) {
  std::fprintf(stderr, "lexwend: fatal: %s\n", why);
  std::abort();
}

}  // namespace lexwend
