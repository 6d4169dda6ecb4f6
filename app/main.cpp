// SPDX-License-Identifier: MIT
#include <iostream>
#include <string>
#include <vector>

#include "app/entry.h"
#include "platform/host.h"

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv, argv + argc);
  if (lexwend::printNotice(arguments, std::cout)) return 0;  // before the host, which takes its time
  const auto host = lexwend::platform::makeHost();
  const lexwend::platform::HostScope scope(*host);
  return lexwend::runEntry(arguments);
}
