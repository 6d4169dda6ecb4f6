// SPDX-License-Identifier: MIT
#include "platform/linux/keeper/keeper.h"

#include <csignal>
#include <filesystem>

#include <dlfcn.h>
#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

namespace lexwend::platform {

std::string clipboardKeeper() {
  Dl_info file{};
  if (dladdr(reinterpret_cast<const void*>(&clipboardKeeper), &file) == 0) return {};
  return std::filesystem::path(file.dli_fname).replace_filename("lexwend-clipboard");
}

bool startClipboardKeeper(const std::string& program, std::uint32_t time) {
  posix_spawn_file_actions_t files;
  posix_spawn_file_actions_init(&files);
  for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    posix_spawn_file_actions_addopen(&files, standard, "/dev/null", O_RDWR, 0);
  }
  posix_spawn_file_actions_addclosefrom_np(&files, STDERR_FILENO + 1);

  // The thread that owns the clipboard has blocked all signals.
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  constexpr auto kFlags = POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF;
  posix_spawnattr_setflags(&attributes, static_cast<short>(kFlags));
  sigset_t signals;
  sigemptyset(&signals);
  posix_spawnattr_setsigmask(&attributes, &signals);
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) sigaddset(&signals, signal);
  posix_spawnattr_setsigdefault(&attributes, &signals);

  std::string name = program;
  std::string ofX = std::to_string(time);
  char* const arguments[] = {name.data(), time != 0 ? ofX.data() : nullptr, nullptr};
  pid_t process = 0;
  const int error = posix_spawn(&process, program.c_str(), &files, &attributes, arguments, environ);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&files);
  return error == 0;
}

}  // namespace lexwend::platform
