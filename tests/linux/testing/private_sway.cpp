// SPDX-License-Identifier: MIT
#include "tests/linux/testing/private_sway.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <thread>
#include <utility>

#include <linux/input-event-codes.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace lexwend::platform {
namespace {

constexpr char kConfiguration[] =
    "default_border none\ndefault_floating_border none\nfocus_on_window_activation focus\nxwayland disable\n";
constexpr uid_t kNobody = 65534;  // sway refuses to run as root
constexpr std::chrono::seconds kStart{20};
constexpr std::chrono::milliseconds kLook{5};

/// The socket in that folder whose name starts so; empty until it is there.
std::string socketIn(const std::string& folder, const std::string& start) {
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.path().filename().string().rfind(start, 0) == 0 && entry.is_socket()) return entry.path();
  }
  return {};
}

template <typename Question>
auto waitFor(const Question& question, const char* what) {
  const auto end = std::chrono::steady_clock::now() + kStart;
  for (;;) {
    if (auto answer = question()) return answer;
    if (std::chrono::steady_clock::now() > end) {
      throw std::runtime_error(std::string("waited in vain for ") + what);
    }
    std::this_thread::sleep_for(kLook);
  }
}

/// The user's keyboard as sway lists it.
std::optional<std::pair<unsigned, unsigned>> layoutsAndGroup(SwayIpc& ipc) {
  const JsonRef inputs = ipc.inputs();
  if (!inputs) throw std::runtime_error("sway has gone");
  JsonArray* list = json_node_get_array(inputs.get());
  for (guint i = 0; i < json_array_get_length(list); ++i) {
    JsonObject* input = json_array_get_object_element(list, i);
    if (textOf(input, "type") != "keyboard") continue;
    JsonArray* names = json_object_get_array_member(input, "xkb_layout_names");
    if (std::string(json_array_get_string_element(names, 0)) == "Lexwend") continue;
    return std::pair(json_array_get_length(names),
                     static_cast<unsigned>(json_object_get_int_member(input, "xkb_active_layout_index")));
  }
  return std::nullopt;
}

}  // namespace

PrivateSway::PrivateSway() {
  const std::string configuration = folder_.file("configuration");
  const std::string place = folder_.file("run");
  test::putContents(configuration, "output HEADLESS-1 resolution " + std::to_string(kWidth) + "x" +
                                       std::to_string(kHeight) + "\n" + kConfiguration);
  std::filesystem::create_directory(place);
  ::chmod(place.c_str(), S_IRWXU);
  const bool isRoot = ::geteuid() == 0;
  if (isRoot) {
    ::chmod(folder_.path().c_str(), S_IRWXU | S_IXGRP | S_IXOTH);
    if (::chown(place.c_str(), kNobody, kNobody) != 0) throw std::runtime_error("no folder for sway");
  }
  process_ = ::fork();
  if (process_ == 0) {
    if (isRoot && (::setgid(kNobody) != 0 || ::setuid(kNobody) != 0)) ::_exit(126);
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);  // also where the test is killed
    ::setenv("XDG_RUNTIME_DIR", place.c_str(), 1);
    ::setenv("WLR_BACKENDS", "headless", 1);
    ::setenv("WLR_RENDERER", "pixman", 1);
    ::setenv("WLR_LIBINPUT_NO_DEVICES", "1", 1);
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "SWAYSOCK"}) ::unsetenv(name);
    ::execlp("sway", "sway", "-c", configuration.c_str(), nullptr);
    ::_exit(127);
  }
  ::unsetenv("DISPLAY");
  const auto find = [&](const char* start) {
    return waitFor(
        [&] {
          if (::waitpid(process_, nullptr, WNOHANG) != 0) throw std::runtime_error("sway did not start");
          const std::string path = socketIn(place, start);
          return path.empty() ? std::nullopt : std::optional(path);
        },
        "sway's sockets");
  };
  ::setenv("WAYLAND_DISPLAY", find("wayland-")->c_str(), 1);
  ::setenv("SWAYSOCK", find("sway-ipc.")->c_str(), 1);
  ipc_ = waitFor([] { return SwayIpc::open(); }, "sway");
  setLayouts("us,il");
}

PrivateSway::~PrivateSway() {
  typist_.reset();
  ipc_.reset();
  ::unsetenv("WAYLAND_DISPLAY");
  ::unsetenv("SWAYSOCK");
  ::kill(process_, SIGTERM);
  ::waitpid(process_, nullptr, 0);
}

void PrivateSway::stop() {
  ::kill(process_, SIGSTOP);
  ::waitpid(process_, nullptr, WUNTRACED);  // it has
}

void PrivateSway::goOn() {
  ::kill(process_, SIGCONT);
}

void PrivateSway::setLayouts(const std::string& layouts) {
  // sway tells of a new keyboard, and of a new keymap only where it has made it itself.
  typist_ = std::make_unique<WaylandTypist>();
  typist_->setLayouts(layouts);
  const auto count = static_cast<unsigned>(std::count(layouts.begin(), layouts.end(), ',') + 1);
  waitFor(
      [&] {
        const auto told = layoutsAndGroup(*ipc_);
        return told && told->first == count;
      },
      "the layouts");
}

unsigned PrivateSway::group() {
  const auto told = layoutsAndGroup(*ipc_);
  return told ? told->second : 0;
}

void PrivateSway::play(int evdevKey, bool down) {
  typist_->key(static_cast<std::uint32_t>(evdevKey), down);
  constexpr std::pair<int, std::uint32_t> kModifiers[] = {
      {KEY_LEFTSHIFT, 1}, {KEY_LEFTCTRL, 4}, {KEY_LEFTALT, 8}, {KEY_LEFTMETA, 64}};
  bool isModifier = false;
  std::uint32_t mask = 0;
  if (down) held_.insert(evdevKey);
  if (!down) held_.erase(evdevKey);
  for (const auto& [key, bit] : kModifiers) {
    isModifier = isModifier || key == evdevKey;
    if (held_.count(key) != 0) mask |= bit;
  }
  if (isModifier) typist_->modifiers(mask, 0, group());
}

}  // namespace lexwend::platform
