// SPDX-License-Identifier: MIT
// A settings file of any bytes. Every key reads as something, twice the same; what is set is there
// afterwards, also for the next reader; and what else was in a sound file is still in it.
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

#include <unistd.h>

#include "platform/linux/session/user_defaults.h"
#include "tests/linux/testing/temporary_folder.h"

namespace {

using lexwend::platform::DefaultsValue;
using lexwend::platform::LinuxUserDefaults;

constexpr std::string_view kKeys[] = {"hotKeyCode", "hotKeyModifiers", "switchLayoutAfterFix", "compatMode",
                                      "didRegisterLoginItem"};

void require(bool truth) {
  if (!truth) std::abort();
}

bool isNumberThatIsNone(const std::optional<DefaultsValue>& value) {
  const double* number = value ? std::get_if<double>(&*value) : nullptr;
  return number != nullptr && *number != *number;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const lexwend::test::TemporaryFolder kFolder;
  static const std::string kPath = kFolder.file("settings");
  constexpr std::chrono::milliseconds kAtOnce{0};
  lexwend::test::putContents(kPath, {reinterpret_cast<const char*>(data), size});
  LinuxUserDefaults first(kPath, kAtOnce);
  std::optional<DefaultsValue> before[std::size(kKeys)];
  for (std::size_t i = 0; i < std::size(kKeys); ++i) {
    before[i] = first.objectForKey(kKeys[i]);
    first.boolForKey(kKeys[i]);
    require(isNumberThatIsNone(before[i]) || first.objectForKey(kKeys[i]) == before[i]);
  }
  first.setInteger(-7, "hotKeyCode");
  first.setBool(true, "compatMode");
  LinuxUserDefaults next(kPath, kAtOnce);
  require(next.objectForKey("hotKeyCode") == DefaultsValue(std::int64_t{-7}));
  require(next.objectForKey("compatMode") == DefaultsValue(true));
  for (const std::size_t i : {1U, 2U, 4U}) {
    require(isNumberThatIsNone(before[i]) || next.objectForKey(kKeys[i]) == before[i]);
  }
  ::unlink(kPath.c_str());
  return 0;
}
