// SPDX-License-Identifier: MIT
// A user's keyboard on a Wayland compositor: reads lines on its standard input, and answers each with "done"
// as soon as the compositor has handled it.
//   keymap us,il                      the layouts of the keyboard
//   key EVDEV_CODE 1|0                a key goes down or up
//   modifiers DEPRESSED LOCKED GROUP  the state that the keys make, as bits of the core protocol, and the
//   layout
#include <exception>
#include <iostream>
#include <sstream>
#include <string>

#include "tests/linux/typist/wayland_typist.h"

int main() try {
  lexwend::platform::WaylandTypist typist;
  for (std::string line; std::getline(std::cin, line);) {
    std::istringstream words(line);
    std::string command;
    std::string layouts;
    std::uint32_t numbers[3] = {};
    words >> command;
    if (command == "keymap") {
      words >> layouts;
      typist.setLayouts(layouts);
    } else if (command == "key") {
      words >> numbers[0] >> numbers[1];
      typist.key(numbers[0], numbers[1] != 0);
    } else if (command == "modifiers") {
      words >> numbers[0] >> numbers[1] >> numbers[2];
      typist.modifiers(numbers[0], numbers[1], numbers[2]);
    } else {
      return 2;
    }
    std::cout << "done" << std::endl;
  }
  return 0;
} catch (const std::exception& error) {
  std::cerr << "wayland_typist: " << error.what() << '\n';
  return 1;
}
