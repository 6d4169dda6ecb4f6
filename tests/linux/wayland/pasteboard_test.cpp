// SPDX-License-Identifier: MIT
#include "platform/linux/clipboard/pasteboard.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

#include <glib.h>
#include <gtest/gtest.h>

#include "platform/linux/clipboard/owner_thread.h"
#include "platform/linux/wayland/selections.h"
#include "tests/linux/testing/bytes.h"
#include "tests/linux/testing/private_sway.h"

namespace lexwend::platform {
namespace {

using namespace std::chrono_literals;

PlayedShortcut playedNow() {
  return {{}, XCB_WINDOW_NONE, std::chrono::steady_clock::now()};
}

/// One that copies, and one that reads.
class OtherPrograms {
 public:
  void copy(const std::string& text) const {
    owner_->pass({{"UTF8_STRING", "UTF8_STRING", 8, bytesOf(text)}});
  }
  std::optional<std::string> clipboard() const { return reader_->readText({1000ms, 1000ms, 1U << 20}); }

 private:
  std::unique_ptr<OwnerThread> owner_ = OwnerThread::open({0ms, 0ms, 0ms, 0ms}, selectionsOfWayland());
  std::unique_ptr<ClipboardReader> reader_ = selectionsOfWayland().openReader("CLIPBOARD");
};

TEST(PasteboardOfWayland, takesNothingOfItsOwnForACopy) {
  const PrivateSway sway;
  std::optional<PlayedShortcut> copy;
  LinuxPasteboard pasteboard({}, {.lastCopy = [&] { return copy; }, .lastPaste = [] { return std::nullopt; }},
                             {}, selectionsOfWayland());
  ASSERT_TRUE(pasteboard.items().has_value());
  copy = playedNow();
  pasteboard.setString("given back by the fix before");
  EXPECT_EQ(pasteboard.string(), std::nullopt);
  copy.reset();
  EXPECT_EQ(pasteboard.string(), "given back by the fix before") << "outside a fix it is read";
}

/// The clipboard was empty before the fix before, so that its restore clears it.
TEST(PasteboardOfWayland, leavesWhatTheUserCopiesAfterTheFixBeforeHasClearedWhatItHadTo) {
  const PrivateSway sway;
  const OtherPrograms others;
  std::optional<PlayedShortcut> copy;
  std::optional<PlayedShortcut> paste;
  LinuxPasteboard pasteboard({}, {.lastCopy = [&] { return copy; }, .lastPaste = [&] { return paste; }}, {},
                             selectionsOfWayland());
  others.copy("kept");
  const auto kept = pasteboard.items();
  ASSERT_TRUE(kept.has_value());
  copy = playedNow();
  others.copy("garbled");
  ASSERT_EQ(pasteboard.string(), "garbled");
  pasteboard.clearContents();
  pasteboard.setString("replacement");
  paste = playedNow();
  pasteboard.clearContents();
  while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
  }
  std::this_thread::sleep_for(100ms);  // later than the application answers its copy shortcut
  others.copy("copied since");
  pasteboard.clearContents();
  pasteboard.writeItems({{{"UTF8_STRING", bytesOf("kept")}}});
  pasteboard.changeCount();
  EXPECT_EQ(others.clipboard(), "copied since");
}

}  // namespace
}  // namespace lexwend::platform
