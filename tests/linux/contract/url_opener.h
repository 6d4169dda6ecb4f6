// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace lexwend::contract {

/// The program that opens URLs of the scheme "lexwend-contract" on the desktop of this process. It must be
/// there before anybody asks the desktop for a program.
class UrlOpener {
 public:
  /// Installs it in that folder, and shows the folder to this process and its programs.
  explicit UrlOpener(std::string folder);
  /// What it was given, in order.
  std::vector<std::string> opened() const;
  void forget() const;

 private:
  std::string folder_;
};

}  // namespace lexwend::contract
