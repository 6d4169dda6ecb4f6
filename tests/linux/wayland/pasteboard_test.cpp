// SPDX-License-Identifier: MIT
#include "platform/linux/clipboard/pasteboard.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

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

class PasteboardOfWayland : public testing::Test {
 protected:
  /// Of what was on the clipboard; another program copies meanwhile, as the application in front does.
  void copyAndPaste(const std::string& copied, const std::string& replacement) {
    copy = playedNow();
    others.copy(copied);
    ASSERT_EQ(pasteboard.string(), copied);
    pasteboard.clearContents();
    pasteboard.setString(replacement);
    paste = playedNow();
  }
  void restore(const std::vector<PasteboardItemData>& items) {
    pasteboard.clearContents();
    if (!items.empty()) pasteboard.writeItems(items);
  }
  static std::vector<PasteboardItemData> text(const std::string& text) {
    return {{{"UTF8_STRING", bytesOf(text)}}};
  }
  /// What a fix that begins now would put back.
  std::vector<PasteboardItemData> read() {
    std::vector<PasteboardItemData> found;
    const auto items = pasteboard.items();
    for (const auto& item : items.value()) {
      PasteboardItemData data;
      for (const std::string& type : item->types()) data.emplace_back(type, item->data(type).value());
      found.push_back(std::move(data));
    }
    return found;
  }
  static void turnMainLoop() {
    while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
    }
  }

  PrivateSway sway;
  OtherPrograms others;
  std::optional<PlayedShortcut> copy;
  std::optional<PlayedShortcut> paste;
  // This process's own reading counts as no fetch: a restore comes when the patience is over.
  LinuxPasteboard pasteboard{{.takenOver = 0ms},  // as if nobody could ever give a text so quickly
                             {.lastCopy = [&] { return copy; }, .lastPaste = [&] { return paste; }},
                             {.patience = 3s},
                             selectionsOfWayland()};
};

TEST_F(PasteboardOfWayland, takesNothingOfItsOwnForACopy) {
  ASSERT_TRUE(pasteboard.items().has_value());
  copy = playedNow();
  pasteboard.setString("given back by the fix before");
  EXPECT_EQ(pasteboard.string(), std::nullopt);
  copy.reset();
  EXPECT_EQ(pasteboard.string(), "given back by the fix before") << "outside a fix it is read";
}

/// The clipboard was empty before the fix before, so that its restore clears it.
TEST_F(PasteboardOfWayland, leavesWhatTheUserCopiesAfterTheFixBeforeHasClearedWhatItHadTo) {
  others.copy("kept");
  ASSERT_EQ(read(), text("kept"));
  copyAndPaste("garbled", "replacement");
  restore({});
  turnMainLoop();
  std::this_thread::sleep_for(100ms);  // later than the application answers its copy shortcut
  others.copy("copied since");
  restore(text("kept"));
  pasteboard.changeCount();
  EXPECT_EQ(others.clipboard(), "copied since");
}

TEST_F(PasteboardOfWayland, keepsTheUsersContentsWhereAFixBeginsBeforeThePasteOfTheOneBeforeIsFetched) {
  others.copy("kept");
  ASSERT_EQ(read(), text("kept"));
  copyAndPaste("garbled", "replacement");
  restore(text("kept"));
  turnMainLoop();
  ASSERT_EQ(others.clipboard(), "replacement");
  const auto found = read();
  EXPECT_EQ(found, text("kept"));
  copyAndPaste("replacement", "garbled");
  EXPECT_EQ(others.clipboard(), "garbled");
  restore(found);
  turnMainLoop();
  const auto deadline = std::chrono::steady_clock::now() + 10s;
  while (others.clipboard() != "kept" && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(100ms);
  }
  EXPECT_EQ(others.clipboard(), "kept");
}

TEST_F(PasteboardOfWayland, putsBackWhatWasThereThoughTheCopyCannotBeReadAgain) {
  others.copy("kept");
  ASSERT_EQ(read(), text("kept"));
  copy = playedNow();
  std::this_thread::sleep_for(100ms);  // later than a prompt application copies
  others.copy("123");
  ASSERT_EQ(pasteboard.string(), "123");
  restore(text("kept"));  // at once: there is nothing to change
  EXPECT_EQ(others.clipboard(), "kept");
}

TEST_F(PasteboardOfWayland, keepsTheUsersContentsWhereAFixReadsInVainBeforeTheRestoreOfTheOneBefore) {
  others.copy("kept");
  ASSERT_EQ(read(), text("kept"));
  copyAndPaste("garbled", "replacement");
  sway.stop();
  read();
  sway.goOn();
  restore(text("kept"));
  const auto deadline = std::chrono::steady_clock::now() + 10s;
  while (others.clipboard() != "kept" && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(100ms);
  }
  EXPECT_EQ(others.clipboard(), "kept");
}

TEST_F(PasteboardOfWayland, isThereThoughTheCompositorDoesNotAnswerAtFirst) {
  others.copy("kept");
  sway.stop();
  LinuxPasteboard late({}, {}, {}, selectionsOfWayland());
  EXPECT_EQ(late.items(), std::nullopt);
  EXPECT_FALSE(late.canBeGivenBack());
  sway.goOn();
  ASSERT_TRUE(late.items().has_value());
  EXPECT_TRUE(late.canBeGivenBack());
  EXPECT_EQ(late.string(), "kept");
}

TEST_F(PasteboardOfWayland, findsAnEmptyClipboardBehindATextThatIsStillToBeFetched) {
  ASSERT_EQ(read(), std::vector<PasteboardItemData>{});
  copyAndPaste("garbled", "replacement");
  restore({});
  turnMainLoop();
  EXPECT_EQ(read(), std::vector<PasteboardItemData>{});
}

TEST_F(PasteboardOfWayland, findsWhatTheUserCopiesWhileATextIsStillToBeFetched) {
  others.copy("kept");
  ASSERT_EQ(read(), text("kept"));
  copyAndPaste("garbled", "replacement");
  restore(text("kept"));
  turnMainLoop();
  others.copy("copied since");
  EXPECT_EQ(read(), text("copied since"));
}

}  // namespace
}  // namespace lexwend::platform
