// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

namespace lexwend {

/// A program that runs with its three standard streams on pipes. The destructor ends it if it still runs.
class ChildProcess {
 public:
  /// What stands in for the pipe of standard output.
  struct Streams {
    std::string outputFile;     ///< standard output is this file, opened for writing; empty: a pipe
    bool closedOutput = false;  ///< standard output is not open at all
    bool nonBlocking = false;   ///< the program's ends of the pipes do not block
  };

  ChildProcess(const std::string& program, const std::vector<std::string>& arguments, const Streams& streams);
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  /// Writes to its standard input; false when nobody reads there any more.
  bool write(const std::string& bytes);
  void closeInput();
  void closeOutput();

  /// Up to `most` bytes of its standard output, waiting until there is one; empty at the end.
  std::string readOutput(std::size_t most);
  std::string readAllOutput();
  std::string readAllErrors();

  /// Waits for its end: the exit status, or minus the signal that ended it.
  int wait();

 private:
  pid_t process_ = -1;
  int input_ = -1;
  int output_ = -1;
  int errors_ = -1;
};

/// How a program ended that was given all its input at once.
struct Outcome {
  int status = 0;
  std::string output;
  std::string errors;
};

Outcome runProgram(const std::string& program, const std::vector<std::string>& arguments,
                   const std::string& input, const ChildProcess::Streams& streams = {});

}  // namespace lexwend
