// SPDX-License-Identifier: MIT
// The clipboard's owner for the fault suite, as well or as badly behaved as its arguments say:
//
//   fault_owner [--target NAME TEXT] [--sized NAME BYTES] [--numbered COUNT] [--delay MS] [--silent NAME]
//               [--deadly NAME] [--refused NAME] [--deadly-piece N] [--last-piece N] [--no-targets]
//               [--targets-bytes COUNT] [--again MS]
//
// Prints "ready" when it owns the clipboard, and stays until it is ended. Where there is a Wayland compositor
// it is its clipboard, else that of the X server. Options that say TARGETS are of X11 alone.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <poll.h>

#include "tests/faults/wayland_owner.h"
#include "tests/linux/testing/other_application.h"

namespace {

using lexwend::platform::CopyingApplication;
using lexwend::platform::WaylandOwner;
using std::chrono::milliseconds;

constexpr milliseconds kForEver = std::chrono::hours(24);

/// Bytes that differ from place to place, so that a piece out of order is seen.
std::string numberedBytes(std::size_t count) {
  std::string bytes(count, '\0');
  for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<char>('a' + (i * 7 + i / 4096) % 26);
  return bytes;
}

struct Arguments {
  CopyingApplication::Behaviour behaviour;
  int againEveryMs = -1;
};

Arguments read(const std::vector<std::string>& words) {
  Arguments read;
  CopyingApplication::Behaviour& behaviour = read.behaviour;
  std::size_t next = 0;
  const auto word = [&] {
    if (next == words.size()) {
      std::fputs("fault_owner: an option lacks its value\n", stderr);
      std::exit(2);
    }
    return words[next++];
  };
  const auto number = [&] { return std::stoi(word()); };
  while (next < words.size()) {
    const std::string option = word();
    if (option == "--target") {
      const std::string name = word();
      behaviour.targets.push_back({name, {name, 8, word()}});
    } else if (option == "--sized") {
      const std::string name = word();
      behaviour.targets.push_back({name, {name, 8, numberedBytes(std::stoul(word()))}});
    } else if (option == "--numbered") {
      const int count = number();
      for (int i = 0; i < count; ++i) {
        const std::string name = "x-numbered/" + std::to_string(i);
        behaviour.targets.push_back({name, {name, 8, name}});
      }
    } else if (option == "--delay") {
      behaviour.delay = std::chrono::milliseconds(number());
    } else if (option == "--silent") {
      behaviour.silentTargets.insert(word());
    } else if (option == "--deadly") {
      behaviour.deadlyTargets.insert(word());
    } else if (option == "--refused") {
      behaviour.refusedTargets.insert(word());
    } else if (option == "--deadly-piece") {
      behaviour.deadlyPiece = number();
    } else if (option == "--last-piece") {
      behaviour.lastPiece = number();
    } else if (option == "--no-targets") {
      behaviour.answersTargets = false;
    } else if (option == "--targets-bytes") {
      // A list of that many atoms, of which most were never made.
      std::string list;
      const int count = number();
      for (std::uint32_t i = 0; i < static_cast<std::uint32_t>(count); ++i) {
        list.append(reinterpret_cast<const char*>(&i), sizeof i);
      }
      behaviour.answersTargets = false;
      behaviour.targets.push_back({"TARGETS", {"ATOM", 32, list}});
    } else if (option == "--again") {
      read.againEveryMs = number();
    } else {
      std::fprintf(stderr, "fault_owner: unknown option %s\n", option.c_str());
      std::exit(2);
    }
  }
  return read;
}

void sayReady() {
  std::puts("ready");
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  const Arguments arguments = read({argv + 1, argv + argc});
  if (std::getenv("WAYLAND_DISPLAY") != nullptr) {
    WaylandOwner owner(arguments.behaviour);
    sayReady();
    for (;;) {
      owner.serve(arguments.againEveryMs < 0 ? kForEver : milliseconds(arguments.againEveryMs));
      if (arguments.againEveryMs >= 0) owner.copyAgain();
    }
  }
  CopyingApplication application(arguments.behaviour);
  sayReady();
  for (;;) {
    poll(nullptr, 0, arguments.againEveryMs);
    application.copyAgain();
  }
}
