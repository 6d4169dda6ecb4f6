// SPDX-License-Identifier: MIT
#include "tests/tools/child_process.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <stdexcept>
#include <thread>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace lexwend {
namespace {

struct Pipe {
  int readEnd = -1;
  int writeEnd = -1;

  Pipe() {
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) throw std::runtime_error("no pipe");
    readEnd = ends[0];
    writeEnd = ends[1];
    // Only what is put on 0, 1 and 2 is for the child.
    fcntl(readEnd, F_SETFD, FD_CLOEXEC);
    fcntl(writeEnd, F_SETFD, FD_CLOEXEC);
  }
};

void closeEnd(int& descriptor) {
  if (descriptor >= 0) {
    close(descriptor);
    descriptor = -1;
  }
}

std::string readAll(int descriptor) {
  std::string all;
  std::array<char, 4096> buffer{};
  ssize_t count = 0;
  while ((count = read(descriptor, buffer.data(), buffer.size())) > 0) {
    all.append(buffer.data(), static_cast<std::size_t>(count));
  }
  return all;
}

}  // namespace

ChildProcess::ChildProcess(const std::string& program, const std::vector<std::string>& arguments,
                           const Streams& streams) {
  std::signal(SIGPIPE, SIG_IGN);  // write() reports the end of a reader
  Pipe input;
  Pipe output;
  Pipe errors;
  if (streams.nonBlocking) {
    fcntl(input.readEnd, F_SETFL, O_NONBLOCK);
    fcntl(output.writeEnd, F_SETFL, O_NONBLOCK);
  }
  const int outputFile =
      streams.outputFile.empty() ? -1 : open(streams.outputFile.c_str(), O_WRONLY | O_CLOEXEC);
  std::vector<char*> words{const_cast<char*>(program.c_str())};
  for (const std::string& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
  words.push_back(nullptr);

  process_ = fork();
  if (process_ == 0) {
    std::signal(SIGPIPE, SIG_DFL);
    dup2(input.readEnd, STDIN_FILENO);
    dup2(errors.writeEnd, STDERR_FILENO);
    if (streams.closedOutput) {
      close(STDOUT_FILENO);
    } else {
      dup2(outputFile >= 0 ? outputFile : output.writeEnd, STDOUT_FILENO);
    }
    execv(program.c_str(), words.data());
    _exit(127);
  }
  close(input.readEnd);
  close(output.writeEnd);
  close(errors.writeEnd);
  if (outputFile >= 0) close(outputFile);
  input_ = input.writeEnd;
  output_ = output.readEnd;
  errors_ = errors.readEnd;
  if (process_ < 0) throw std::runtime_error("no process");
}

ChildProcess::~ChildProcess() {
  closeInput();
  closeOutput();
  closeEnd(errors_);
  if (process_ > 0) {
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
  }
}

bool ChildProcess::write(const std::string& bytes) {
  std::size_t written = 0;
  while (written < bytes.size()) {
    const ssize_t count = ::write(input_, bytes.data() + written, bytes.size() - written);
    if (count < 0) return false;
    written += static_cast<std::size_t>(count);
  }
  return true;
}

void ChildProcess::closeInput() {
  closeEnd(input_);
}

void ChildProcess::closeOutput() {
  closeEnd(output_);
}

std::string ChildProcess::readOutput(std::size_t most) {
  std::string bytes(most, '\0');
  const ssize_t count = read(output_, bytes.data(), bytes.size());
  bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
  return bytes;
}

std::string ChildProcess::readAllOutput() {
  return readAll(output_);
}

std::string ChildProcess::readAllErrors() {
  return readAll(errors_);
}

int ChildProcess::wait() {
  int status = 0;
  while (waitpid(process_, &status, 0) < 0 && errno == EINTR) {
  }
  process_ = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

Outcome runProgram(const std::string& program, const std::vector<std::string>& arguments,
                   const std::string& input, const ChildProcess::Streams& streams) {
  ChildProcess child(program, arguments, streams);
  Outcome outcome;
  std::thread writer([&] {
    child.write(input);  // a program that fails early need not read it all
    child.closeInput();
  });
  std::thread errorReader([&] { outcome.errors = child.readAllErrors(); });
  outcome.output = child.readAllOutput();
  errorReader.join();
  writer.join();
  outcome.status = child.wait();
  return outcome;
}

}  // namespace lexwend
