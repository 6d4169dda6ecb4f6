// SPDX-License-Identifier: MIT
// Keys and the clipboard by mutter's remote control.

#include <algorithm>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <poll.h>

#include "platform/linux/clipboard/owner_thread.h"
#include "platform/linux/gnome/key_player.h"
#include "platform/linux/gnome/mutter_owner.h"
#include "platform/linux/gnome/mutter_reader.h"
#include "platform/linux/session/buses.h"
#include "tests/linux/gnome/fake_mutter.h"
#include "tests/linux/gnome/shared_bus.h"
#include "tests/linux/testing/virtual_display.h"

namespace lexwend::platform {
namespace {

using std::chrono::milliseconds;

/// The clipboard of XWayland, for the test to look at.
class FakeXOwner : public SelectionOwner {
 public:
  explicit FakeXOwner(std::shared_ptr<ClipboardContents> owned) : owned_(std::move(owned)) {}
  void claim(const ClipboardContents& contents, xcb_timestamp_t) override { *owned_ = contents; }
  bool owns() const override { return !owned_->empty(); }
  bool isOwnWindow(xcb_window_t) const override { return true; }
  bool stillOwns() override { return owns(); }
  void serveOthers(const ClipboardContents&, const XApplication&) override {}
  bool handleEvents() override { return false; }
  void wait(int descriptor, std::optional<Clock::time_point> until) override {
    pollfd waited{descriptor, POLLIN, 0};
    const auto left = until ? std::chrono::ceil<milliseconds>(*until - Clock::now()) : milliseconds(50);
    poll(&waited, 1, static_cast<int>(std::clamp(left, milliseconds(0), milliseconds(50)).count()));
  }
  bool connected() const override { return true; }
  std::optional<Clock::time_point> firstFetchBy(const XApplication&, Clock::time_point) override {
    return {};
  }
  bool wasFetched(Clock::time_point) const override { return true; }
  void watch(xcb_window_t) override {}
  bool watchedIsGone() const override { return false; }
  XApplication application(xcb_window_t) override { return {}; }
  bool handOver(Clock::time_point) override { return false; }
  static constexpr xcb_timestamp_t kTime = 7;
  xcb_timestamp_t serverTime() override { return kTime; }
  Clock::time_point inOwnTime(xcb_timestamp_t) const override { return Clock::now(); }

 private:
  std::shared_ptr<ClipboardContents> owned_;
};

ClipboardContents text(std::string_view words) {
  const auto* first = reinterpret_cast<const std::byte*>(words.data());
  return {{"text/plain", "text/plain", 8, Bytes(first, first + words.size())}};
}

struct Mutter : OnSharedBus {
  FakeMutter fake;
  std::shared_ptr<MutterRemoteDesktop> remote = std::make_shared<MutterRemoteDesktop>();
  std::shared_ptr<ClipboardContents> ownedByX = std::make_shared<ClipboardContents>();
  bool hasX = true;
  std::function<bool(xcb_timestamp_t xTime)> startKeeper = [](xcb_timestamp_t) { return false; };
  MutterReader reader{remote};
  static constexpr ClipboardReader::Budget kBudget{milliseconds(1000), milliseconds(400), 1 << 20};

  std::unique_ptr<OwnerThread> makeOwner() {
    return OwnerThread::open(
        {}, {[this](SelectionOwner::Changed changed) -> std::unique_ptr<SelectionOwner> {
               return std::make_unique<MutterOwner>(
                   remote,
                   [this](const SelectionOwner::Changed&) -> std::unique_ptr<SelectionOwner> {
                     if (!hasX) return nullptr;
                     return std::make_unique<FakeXOwner>(ownedByX);
                   },
                   [this](xcb_timestamp_t xTime) { return startKeeper(xTime); }, std::move(changed));
             },
             {}});
  }
};

TEST_F(Mutter, isFoundByItsName) {
  EXPECT_TRUE(MutterRemoteDesktop::isOffered());
}

TEST_F(Mutter, readsEveryTypeOnce) {
  fake.copy({{"text/html", "<b>kept</b>"}, {"text/plain", "kept"}});
  const auto result = reader.readAll(kBudget);
  EXPECT_EQ(result.outcome, ClipboardReader::Outcome::complete);
  ASSERT_EQ(result.contents.size(), 2U);
  EXPECT_EQ(result.contents[0].name, "text/html");
  EXPECT_EQ(result.contents[1], text("kept")[0]);
}

TEST_F(Mutter, readsATypeAgainThatIsRefusedBecauseTheReadBeforeHasNotEnded) {
  fake.copy({{"text/html", "<b>kept</b>"}, {"text/plain", "kept"}});
  fake.beBusyFor(3);
  EXPECT_EQ(reader.readAll(kBudget).contents.size(), 2U);
}

TEST_F(Mutter, tellsAnEmptyClipboardWithoutWaiting) {
  EXPECT_EQ(reader.readAll(kBudget).outcome, ClipboardReader::Outcome::noOwner);
  EXPECT_EQ(fake.sessions(), 1);
}

TEST_F(Mutter, isReadAlsoWhereTheSessionTakesLongerToOpenThanItLingers) {
  const auto owner = makeOwner();
  fake.copy({{"text/plain", "kept"}});
  fake.openSlowly(MutterOwner::kLinger * 2 / 5);
  EXPECT_EQ(reader.readAll(kBudget).contents, text("kept"));
}

TEST_F(Mutter, isNotClosedWhileAPictureIsRead) {
  const auto owner = makeOwner();
  fake.copy({{"image/png", "slow"}});
  fake.holdReads();
  std::thread encoder([this] {
    std::this_thread::sleep_for(MutterOwner::kLinger + milliseconds(500));
    fake.endReads();
  });
  const auto result = reader.readAll({.time = milliseconds(1000),
                                      .silence = milliseconds(400),
                                      .bytes = 1 << 20,
                                      .picture = std::chrono::seconds(10)});
  encoder.join();
  EXPECT_EQ(result.outcome, ClipboardReader::Outcome::complete);
  EXPECT_EQ(result.contents.size(), 1U);
}

TEST_F(Mutter, isNotEmptyBecauseTheUserEndsTheSessionWhileItIsRead) {
  fake.copy({{"text/plain", "kept"}});
  fake.holdReads();
  std::thread user([this] {
    std::this_thread::sleep_for(milliseconds(100));
    fake.end();
  });
  EXPECT_EQ(reader.readAll(kBudget).outcome, ClipboardReader::Outcome::overBudget);
  user.join();
}

TEST_F(Mutter, isNotEmptyBecauseNoSessionCanBeOpened) {
  fake.copy({{"text/plain", "kept"}});
  fake.openSlowly(kBusCallTimeout * milliseconds(1) + milliseconds(200));
  EXPECT_EQ(reader.readAll(kBudget).outcome, ClipboardReader::Outcome::overBudget);
  fake.openSlowly(milliseconds(0));
}

TEST_F(Mutter, readsItsOwnOfferWithoutAskingForIt) {
  const auto owner = makeOwner();
  ASSERT_TRUE(remote->open());
  owner->pass(text("passing"));
  const auto result = reader.readAll(kBudget);
  ASSERT_EQ(result.contents.size(), 1U);
  EXPECT_EQ(result.contents[0], text("passing")[0]) << "the stand-in refuses to be asked, as mutter does";
}

TEST_F(Mutter, givesPassingTextToWhoeverFetchesIt) {
  const auto owner = makeOwner();
  ASSERT_TRUE(remote->open());
  owner->pass(text("passing"));
  EXPECT_EQ(fake.owned(), std::vector<std::string>{"text/plain"});
  EXPECT_EQ(fake.fetch("text/plain"), "passing");
  EXPECT_EQ(fake.fetch("text/html"), "");
  EXPECT_TRUE(owner->lastChange().isOwn);
}

TEST_F(Mutter, restoresOverXWaylandWhenThePasteWasFetched) {
  const auto owner = makeOwner();
  ASSERT_TRUE(remote->open());
  owner->pass(text("passing"));
  owner->stay(text("kept"), PlayedShortcut{{}, XCB_WINDOW_NONE, std::chrono::steady_clock::now()});
  EXPECT_EQ(fake.fetch("text/plain"), "passing") << "until the application has it";
  EXPECT_TRUE(pumpUntil([&] { return !ownedByX->empty(); }));
  EXPECT_EQ(*ownedByX, text("kept"));
}

TEST_F(Mutter, restoresByTheSessionWhereThereIsNoX) {
  hasX = false;
  const auto owner = makeOwner();
  ASSERT_TRUE(remote->open());
  owner->stay(text("kept"), std::nullopt);
  EXPECT_EQ(fake.fetch("text/plain"), "kept");
  std::this_thread::sleep_for(MutterOwner::kLinger + milliseconds(200));  // what would close it has passed
  EXPECT_TRUE(fake.isOpen()) << "mutter would forget all types but one";
}

TEST_F(Mutter, isServedUntilAnotherProcessHasTakenOverWhatXOwns) {
  auto owner = makeOwner();
  owner->stay(text("kept"), std::nullopt);
  ASSERT_EQ(*ownedByX, text("kept"));
  std::vector<xcb_timestamp_t> times;
  ClipboardContents taken;
  startKeeper = [&](xcb_timestamp_t xTime) {
    times.push_back(xTime);
    taken = *ownedByX;
    ownedByX->clear();  // the other one has claimed it
    return true;
  };
  owner.reset();
  EXPECT_EQ(times, std::vector<xcb_timestamp_t>{FakeXOwner::kTime});
  EXPECT_EQ(taken, text("kept"));
}

TEST_F(Mutter, isServedUntilAnotherProcessHasTakenOverWhatTheSessionOwns) {
  hasX = false;
  auto owner = makeOwner();
  ASSERT_TRUE(remote->open());
  owner->stay(text("kept"), std::nullopt);
  std::vector<xcb_timestamp_t> times;
  std::string taken;
  std::thread keeper;
  startKeeper = [&](xcb_timestamp_t xTime) {
    times.push_back(xTime);
    keeper = std::thread([&] {
      taken = fake.fetch("text/plain");
      fake.copy({{"text/plain", taken}});
    });
    return true;
  };
  owner.reset();
  keeper.join();
  EXPECT_EQ(times, std::vector<xcb_timestamp_t>{XCB_CURRENT_TIME}) << "there is no X to take it over from";
  EXPECT_EQ(taken, "kept");
}

TEST_F(Mutter, leavesAnEmptyClipboardToNobody) {
  auto owner = makeOwner();
  ASSERT_TRUE(remote->open());
  owner->pass(text("passing"));
  owner->stay({}, std::nullopt);
  owner->settle();
  bool isAsked = false;
  startKeeper = [&](xcb_timestamp_t) { return isAsked = true; };
  owner.reset();
  EXPECT_FALSE(isAsked);
}

TEST_F(Mutter, closesASessionThatNobodyUses) {
  const auto owner = makeOwner();
  ASSERT_TRUE(remote->open());
  EXPECT_TRUE(pumpUntil([&] { return !fake.isOpen(); }));
  ASSERT_TRUE(remote->open());
  EXPECT_EQ(fake.sessions(), 2);
}

TEST_F(Mutter, countsWhatOthersCopy) {
  const auto owner = makeOwner();
  fake.copy({{"text/plain", "before"}});
  ASSERT_TRUE(remote->open());
  const auto before = owner->lastChange().number;
  fake.copy({{"text/plain", "after"}});
  EXPECT_TRUE(pumpUntil([&] { return owner->changeCount() == before + 1; }));
  EXPECT_FALSE(owner->lastChange().isOwn);
}

TEST_F(Mutter, opensAnotherSessionWhenTheUserHasEndedOne) {
  ASSERT_TRUE(remote->open());
  fake.end();
  EXPECT_TRUE(pumpUntil([&] { return !remote->isOpen(); }));
  ASSERT_TRUE(remote->open());
  EXPECT_EQ(fake.sessions(), 2);
}

TEST_F(Mutter, playsAChordWithPauses) {
  MutterKeyPlayer player(remote);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_TRUE(player.play(29, true, KeyPlayer::control));
  EXPECT_TRUE(player.play(110, true, KeyPlayer::control));
  EXPECT_TRUE(player.play(110, false, KeyPlayer::control));
  EXPECT_TRUE(player.play(29, false, 0));
  EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(45));
  EXPECT_EQ(fake.keys(), (std::vector<std::string>{"29 down", "110 down", "110 up", "29 up"}));
}

}  // namespace
}  // namespace lexwend::platform
