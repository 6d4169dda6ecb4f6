// SPDX-License-Identifier: MIT
// The host of a program that may get by without one: the desktop's libraries are loaded when it is asked for.
#include <cstdio>
#include <cstdlib>

#include <dlfcn.h>

#include "platform/host.h"

namespace lexwend::platform {

std::unique_ptr<Host> makeHost() {
  // It stays loaded until the process ends.
  void* const module = dlopen("lexwend-host.so", RTLD_LAZY | RTLD_LOCAL);
  void* const maker = module != nullptr ? dlsym(module, "lexwendMakeHost") : nullptr;
  if (maker == nullptr) {
    std::fprintf(stderr, "lexwend: the part for this desktop cannot be loaded: %s\n", dlerror());
    std::exit(EXIT_FAILURE);
  }
  return std::unique_ptr<Host>(reinterpret_cast<Host* (*)()>(maker)());
}

}  // namespace lexwend::platform
