// SPDX-License-Identifier: MIT
#include "tests/linux/contract/url_opener.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "tests/linux/testing/temporary_folder.h"

namespace lexwend::contract {

UrlOpener::UrlOpener(std::string folder) : folder_(std::move(folder)) {
  std::filesystem::create_directories(folder_ + "/applications");
  const std::string program = folder_ + "/open-url";
  test::putContents(program, "#!/bin/sh\nprintf '%s\\n' \"$1\" >> '" + folder_ + "/opened'\n");
  std::filesystem::permissions(program, std::filesystem::perms::owner_all);
  test::putContents(folder_ + "/applications/opener.desktop",
                    "[Desktop Entry]\nType=Application\nName=Opener\nExec=" + program +
                        " %u\nMimeType=x-scheme-handler/lexwend-contract;\n");
  test::putContents(folder_ + "/applications/mimeapps.list",
                    "[Default Applications]\nx-scheme-handler/lexwend-contract=opener.desktop\n");
  const char* others = std::getenv("XDG_DATA_DIRS");
  const std::string usual = others != nullptr ? others : "/usr/local/share:/usr/share";
  ::setenv("XDG_DATA_DIRS", (folder_ + ":" + usual).c_str(), 1);
}

std::vector<std::string> UrlOpener::opened() const {
  std::vector<std::string> urls;
  std::ifstream lines(folder_ + "/opened");
  for (std::string line; std::getline(lines, line);) urls.push_back(line);
  return urls;
}

void UrlOpener::forget() const {
  std::filesystem::remove(folder_ + "/opened");
}

}  // namespace lexwend::contract
