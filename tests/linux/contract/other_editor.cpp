// SPDX-License-Identifier: MIT
#include "tests/linux/contract/other_editor.h"

#include <stdexcept>

#include <fcntl.h>
#include <glib.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

namespace lexwend::contract {
namespace {

std::string fromBase64(const std::string& encoded) {
  gsize size = 0;
  guchar* bytes = g_base64_decode(encoded.c_str(), &size);
  std::string decoded(reinterpret_cast<const char*>(bytes), size);
  g_free(bytes);
  return decoded;
}

}  // namespace

OtherEditor::OtherEditor(Kind kind, std::string_view text) {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  const std::string shown(text);
  process_ = ::fork();
  if (process_ == 0) {
    ::dup2(ends[1], STDOUT_FILENO);
    if (kind == Kind::password) {
      ::execl(LEXWEND_CONTRACT_EDITOR, "contract-editor", "--password", shown.c_str(), nullptr);
    } else {
      ::execl(LEXWEND_CONTRACT_EDITOR, "contract-editor", shown.c_str(), nullptr);
    }
    ::_exit(127);
  }
  ::close(ends[1]);
  output_ = ends[0];
  ::fcntl(output_, F_SETFL, O_NONBLOCK);
}

OtherEditor::~OtherEditor() {
  ::kill(process_, SIGKILL);
  ::waitpid(process_, nullptr, 0);
  ::close(output_);
}

bool OtherEditor::isReady() {
  listen();
  return ready_;
}

std::string OtherEditor::text() {
  listen();
  return text_;
}

void OtherEditor::hang() {
  ::kill(process_, SIGSTOP);
}

void OtherEditor::listen() {
  char bytes[4096];
  for (ssize_t count = 0; (count = ::read(output_, bytes, sizeof bytes)) > 0;) {
    unread_.append(bytes, static_cast<std::size_t>(count));
  }
  constexpr std::string_view kText = "text ";
  for (auto end = unread_.find('\n'); end != std::string::npos; end = unread_.find('\n')) {
    const std::string line = unread_.substr(0, end);
    unread_.erase(0, end + 1);
    if (line == "ready") ready_ = true;
    if (line.rfind(kText, 0) == 0) text_ = fromBase64(line.substr(kText.size()));
  }
}

}  // namespace lexwend::contract
