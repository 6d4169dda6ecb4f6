// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

#include <dlfcn.h>
#include <glib.h>
#include <gtest/gtest.h>

namespace {

// One piece of memory, looked at when the C library gets it back; the linker leads its function here.
void* watched = nullptr;
std::size_t watchedSize = 0;
bool wasWiped = false;

}  // namespace

// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming): the linker's own names
extern "C" void* __real_dlsym(void* handle, const char* name);

namespace {

void lookAndFree(void* memory) {
  if (memory == watched) {
    const auto* bytes = static_cast<const char*>(memory);
    wasWiped = std::all_of(bytes, bytes + watchedSize, [](char byte) { return byte == 0; });
    watched = nullptr;
  }
  static const auto kFree = reinterpret_cast<void (*)(void*)>(__real_dlsym(RTLD_NEXT, "free"));
  kFree(memory);
}

}  // namespace

extern "C" void* __wrap_dlsym(void* handle, const char* name) {
  return std::string_view(name) == "free" ? reinterpret_cast<void*>(&lookAndFree)
                                          : __real_dlsym(handle, name);
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)

namespace lexwend::platform {
namespace {

void watch(void* memory, std::size_t size) {
  watched = memory;
  watchedSize = size;
  wasWiped = false;
}

TEST(WipedMemory, isWhatStringsGiveBackAlsoWhenTheyGrow) {
  std::string text(100, 'x');
  watch(text.data(), text.size());
  text.reserve(100000);
  EXPECT_TRUE(wasWiped);
  watch(text.data(), text.size());
  text = std::string();
  text.shrink_to_fit();
  EXPECT_TRUE(wasWiped);
}

TEST(WipedMemory, isWhatLibrariesGiveBack) {
  char* const text = g_strnfill(200, 'x');
  watch(text, 200);
  g_free(text);
  EXPECT_TRUE(wasWiped);
}

}  // namespace
}  // namespace lexwend::platform
