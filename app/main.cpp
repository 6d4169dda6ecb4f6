// SPDX-License-Identifier: MIT
#include <string>
#include <vector>

#include "app/entry.h"
#include "platform/host.h"

int main(int argc, char** argv) {
  const auto host = lexwend::platform::makeHost();
  const lexwend::platform::HostScope scope(*host);
  return lexwend::runEntry(std::vector<std::string>(argv, argv + argc));
}
