// SPDX-License-Identifier: MIT
#include "support/log.h"

#include <cstdint>
#include <mutex>

#include <unicode/ustring.h>

#include "platform/date_formatter.h"
#include "platform/files.h"
#include "platform/host.h"

namespace lexwend::Log {
namespace {

constexpr std::string_view kRelativePath = "Library/Logs/Lexwend.log";
constexpr std::string_view kTimePattern = "yyyy-MM-dd HH:mm:ss.SSS";

bool isWellFormedUtf8(std::string_view text) {
  int32_t length = 0;
  UErrorCode status = U_ZERO_ERROR;
  u_strFromUTF8(nullptr, 0, &length, text.data(), static_cast<int32_t>(text.size()), &status);
  return status != U_INVALID_CHAR_FOUND;
}

std::string pathUnderHome() {
  std::string path = platform::files().homeDirectoryForCurrentUser();
  if (path.empty()) return path;
  if (path.back() != '/') path += '/';
  path += kRelativePath;
  return path;
}

}  // namespace

std::string url() {
  static std::mutex mutex;
  static std::uint64_t hostOfPath = 0;
  static std::string path;
  const std::lock_guard lock(mutex);
  if (const auto host = platform::installedHostNumber(); host != hostOfPath) {
    path = pathUnderHome();
    hostOfPath = host;
  }
  return path;
}

void write(std::string_view message) {
  const std::string path = url();
  if (path.empty() || !isWellFormedUtf8(message)) return;
  std::string line = platform::dateFormatters().withPattern(kTimePattern).stringFromNow();
  line += ' ';
  line += message;
  line += '\n';

  platform::Files& files = platform::files();
  if (const auto handle = files.fileHandleForWriting(path)) {
    handle->seekToEndOfFile();
    handle->write(line);
    handle->close();  // an error is discarded
  } else {
    files.writeWholeFile(path, line);  // an error is discarded
  }
}

}  // namespace lexwend::Log
