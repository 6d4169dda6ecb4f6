// SPDX-License-Identifier: MIT
#include <atomic>
#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <data-control.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/linux/wayland/data_control_owner.h"
#include "platform/linux/wayland/data_control_reader.h"
#include "tests/linux/testing/bytes.h"
#include "tests/linux/testing/private_sway.h"

// There with a sanitizer only.
extern "C" [[gnu::weak]] void __lsan_disable();
extern "C" [[gnu::weak]] void __lsan_enable();

namespace lexwend::platform {
namespace {

using namespace std::chrono_literals;

/// What the library has read of a connection that it then ends for an error it does not give back.
struct LeaksDoNotCount {
  LeaksDoNotCount() {
    if (__lsan_disable != nullptr) __lsan_disable();
  }
  ~LeaksDoNotCount() {
    if (__lsan_enable != nullptr) __lsan_enable();
  }
  LeaksDoNotCount(const LeaksDoNotCount&) = delete;
  LeaksDoNotCount& operator=(const LeaksDoNotCount&) = delete;
};

constexpr ClipboardReader::Budget kBudget{1000ms, 400ms, std::size_t{1} << 26};

ClipboardContents text(const std::string& text) {
  return {{"UTF8_STRING", "UTF8_STRING", 8, bytesOf(text)}};
}

struct DataControlClipboard : testing::Test {
  std::unique_ptr<SelectionOwner> open(std::vector<bool>& changes) {
    return DataControlOwner::open([&changes, this](const SelectionOwner::Change& change) {
      changes.push_back(change.owner != XCB_WINDOW_NONE && another->isOwnWindow(change.owner));
    });
  }
  /// What another program finds there, while `owner` serves, and `meanwhile` is done again and again.
  std::optional<std::string> read(
      SelectionOwner& owner, const std::function<void()>& meanwhile = [] {}) {
    std::optional<std::string> found;
    std::atomic<bool> isDone = false;
    std::thread reading([&] {
      found = DataControlReader::open("CLIPBOARD")->readText(kBudget);
      isDone = true;
    });
    while (!isDone) {
      owner.wait(-1, SelectionOwner::Clock::now() + 5ms);
      owner.handleEvents();
      meanwhile();
    }
    reading.join();
    return found;
  }

  /// What a program without the ways of this one reads, while `owner` serves.
  static std::string fetch(SelectionOwner& owner) {
    const auto fetching = DataControl::open();
    DataControl::OfferRef offer;
    fetching->watch([&](DataControl::OfferRef offered) { offer = std::move(offered); });
    fetching->connection().roundTrip();
    int ends[2];
    if (!offer || pipe(ends) != 0) return "nothing";
    offer->receive("UTF8_STRING", ends[1]);
    fetching->connection().roundTrip();
    close(ends[1]);
    std::string found;
    std::atomic<bool> isDone = false;
    std::thread reading([&] {
      char bytes[4096];
      for (ssize_t count; (count = ::read(ends[0], bytes, sizeof bytes)) > 0;) {
        found.append(bytes, static_cast<std::size_t>(count));
      }
      isDone = true;
    });
    while (!isDone) {
      owner.wait(-1, SelectionOwner::Clock::now() + 5ms);
      owner.handleEvents();
    }
    reading.join();
    close(ends[0]);
    return found;
  }

  PrivateSway sway;
  std::unique_ptr<SelectionOwner> another = DataControlOwner::open([](const SelectionOwner::Change&) {});
};

TEST_F(DataControlClipboard, tellsItsOwnClaimFromThoseOfOthers) {
  std::vector<bool> areOwn;
  const auto owner = open(areOwn);
  owner->claim(text("own"), owner->serverTime());
  EXPECT_TRUE(owner->owns());
  another->claim(text("another's"), another->serverTime());
  EXPECT_FALSE(owner->stillOwns());
  EXPECT_EQ(areOwn, (std::vector<bool>{true, false}));
}

TEST_F(DataControlClipboard, isLeftToWhomeverHasCopiedSinceTheTimeOfAClaim) {
  std::vector<bool> areOwn;
  const auto owner = open(areOwn);
  const auto time = owner->serverTime();
  another->claim(text("copied since"), another->serverTime());
  owner->claim(text("late"), time);
  EXPECT_FALSE(owner->owns());
  EXPECT_EQ(read(*another), "copied since");
}

TEST_F(DataControlClipboard, tellsWhenItsTextWasFetched) {
  std::vector<bool> areOwn;
  const auto owner = open(areOwn);
  owner->claim(text(std::string(1 << 20, 'a')), owner->serverTime());
  const auto before = SelectionOwner::Clock::now();
  EXPECT_FALSE(owner->firstFetchBy({}, before).has_value());
  EXPECT_EQ(fetch(*owner), std::string(1 << 20, 'a'));
  owner->handleEvents();
  EXPECT_TRUE(owner->firstFetchBy({}, before).has_value());
  EXPECT_FALSE(owner->firstFetchBy({}, SelectionOwner::Clock::now()).has_value());
}

TEST_F(DataControlClipboard, countsAsFetchedOnlyWhenTheProgramHasReadIt) {
  std::vector<bool> areOwn;
  const auto owner = open(areOwn);
  owner->claim(text("own"), owner->serverTime());
  const auto before = SelectionOwner::Clock::now();
  const auto fetching = DataControl::open();
  DataControl::OfferRef offer;
  fetching->watch([&](DataControl::OfferRef offered) { offer = std::move(offered); });
  fetching->connection().roundTrip();
  ASSERT_NE(offer, nullptr);
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  offer->receive("UTF8_STRING", ends[1]);
  fetching->connection().roundTrip();
  close(ends[1]);
  const auto serveFor = [&](std::chrono::milliseconds time) {
    const auto end = SelectionOwner::Clock::now() + time;
    while (SelectionOwner::Clock::now() < end) {
      owner->wait(-1, end);
      owner->handleEvents();
    }
  };
  serveFor(200ms);
  EXPECT_FALSE(owner->firstFetchBy({}, before).has_value()) << "nobody has read it";
  char bytes[8];
  EXPECT_EQ(::read(ends[0], bytes, sizeof bytes), 3);
  serveFor(200ms);
  EXPECT_EQ(::read(ends[0], bytes, sizeof bytes), 0) << "that is the end";
  EXPECT_TRUE(owner->firstFetchBy({}, before).has_value());
  close(ends[0]);
}

TEST_F(DataControlClipboard, isNotFetchedByItsOwnProcess) {
  std::vector<bool> areOwn;
  const auto owner = open(areOwn);
  owner->claim(text("own"), owner->serverTime());
  const auto before = SelectionOwner::Clock::now();
  EXPECT_EQ(read(*owner), "own");
  EXPECT_FALSE(owner->firstFetchBy({}, before).has_value());
  EXPECT_FALSE(owner->wasFetched(before));
}

TEST_F(DataControlClipboard, isEmptyAfterAClaimOfNothing) {
  std::vector<bool> areOwn;
  const auto owner = open(areOwn);
  owner->claim(text("own"), owner->serverTime());
  owner->claim({}, owner->serverTime());
  EXPECT_EQ(read(*owner), std::nullopt);
  EXPECT_EQ(areOwn.size(), 2U);
}

TEST_F(DataControlClipboard, ofAnOwnerThatDoesNotAnswerIsGivenUpInTime) {
  another->claim(text("promised"), another->serverTime());
  const auto begin = SelectionOwner::Clock::now();
  const auto result = DataControlReader::open("CLIPBOARD")->readAll(kBudget);
  EXPECT_EQ(result.outcome, ClipboardReader::Outcome::overBudget);
  EXPECT_LT(SelectionOwner::Clock::now() - begin, 2s);
}

TEST_F(DataControlClipboard, countsNoClaimOfItsOwnAsACopyThatItIsToldOfLate) {
  std::vector<bool> areOwn;
  const auto owner = open(areOwn);
  sway.stop();
  const xcb_timestamp_t time = owner->serverTime();
  owner->claim(text("own"), time);
  EXPECT_EQ(areOwn, std::vector<bool>{true});
  sway.goOn();
  EXPECT_EQ(owner->serverTime(), time);
  EXPECT_TRUE(owner->owns());
  EXPECT_EQ(fetch(*owner), "own");
  another->claim(text("copied since"), another->serverTime());
  EXPECT_NE(owner->serverTime(), time);
  EXPECT_EQ(areOwn, (std::vector<bool>{true, false}));
}

TEST_F(DataControlClipboard, isNotEmptyBecauseTheCompositorDoesNotAnswer) {
  another->claim(text("kept"), another->serverTime());
  const auto reader = DataControlReader::open("CLIPBOARD");
  sway.stop();
  EXPECT_EQ(reader->readAll(kBudget).outcome, ClipboardReader::Outcome::overBudget);
  sway.goOn();
  another->claim({}, another->serverTime());
  const auto deadline = SelectionOwner::Clock::now() + 10s;
  ClipboardReader::Outcome outcome;
  do {
    outcome = reader->readAll(kBudget).outcome;
  } while (outcome == ClipboardReader::Outcome::overBudget && SelectionOwner::Clock::now() < deadline);
  EXPECT_EQ(outcome, ClipboardReader::Outcome::noOwner);
}

TEST_F(DataControlClipboard, isReadThoughItChangedRightAfterTheReadBefore) {
  const auto reader = DataControlReader::open("CLIPBOARD");
  std::atomic<bool> isDone = false;
  std::thread copying([&] {
    const auto copier = DataControlOwner::open([](const SelectionOwner::Change&) {});
    while (!isDone) {
      copier->claim(text("copied"), copier->serverTime());
      copier->claim({}, copier->serverTime());
    }
  });
  {
    const LeaksDoNotCount ofTheLibrary;
    for (int i = 0; i < 3000; ++i) reader->readAll({1ms, 1ms, 1});
  }
  isDone = true;
  copying.join();
  EXPECT_EQ(reader->readAll(kBudget).outcome, ClipboardReader::Outcome::noOwner);
}

/// A program that copies again when it is asked for what it had copied before, and does not give that any
/// more. An editor that finds two copy shortcuts at once does so.
struct CopiesAnew {
  CopiesAnew() {
    control->watch([](const DataControl::OfferRef&) {});
    first = copy();
    control->connection().roundTrip();
  }
  ~CopiesAnew() {
    zwlr_data_control_source_v1_destroy(first);
    if (second != nullptr) zwlr_data_control_source_v1_destroy(second);
  }
  CopiesAnew(const CopiesAnew&) = delete;
  CopiesAnew& operator=(const CopiesAnew&) = delete;

  zwlr_data_control_source_v1* copy() {
    auto* source = zwlr_data_control_manager_v1_create_data_source(control->manager());
    zwlr_data_control_source_v1_add_listener(source, &kListener, this);
    zwlr_data_control_source_v1_offer(source, "UTF8_STRING");
    zwlr_data_control_device_v1_set_selection(control->device(), source);
    return source;
  }
  void copyAnew() {
    second = copy();
    control->connection().flush();
  }
  void proceed() {
    control->connection().handleEvents();
    if (std::exchange(isToCopy, false)) copyAnew();
  }
  static void isAsked(void* data, zwlr_data_control_source_v1* source, const char* /*type*/, int descriptor) {
    auto& self = *static_cast<CopiesAnew*>(data);
    if (source == self.second) {
      EXPECT_EQ(::write(descriptor, "second", 6), 6);
    } else if (self.second == nullptr) {
      self.isToCopy = self.isLate;
      if (!self.isLate) self.copyAnew();
    }
    close(descriptor);
  }
  static void isReplaced(void* /*data*/, zwlr_data_control_source_v1* /*source*/) {}
  static constexpr zwlr_data_control_source_v1_listener kListener = {isAsked, isReplaced};

  std::unique_ptr<DataControl> control = DataControl::open();
  zwlr_data_control_source_v1* first = nullptr;
  zwlr_data_control_source_v1* second = nullptr;
  bool isLate = false;  // copies only when it has given nothing
  bool isToCopy = false;
};

TEST_F(DataControlClipboard, ofAProgramThatCopiesAnewWhenItIsAskedIsReadAnew) {
  // Which of the two comes first, the end of the answer or the word of the new copy, is up to the scheduler.
  for (int round = 0; round < 40; ++round) {
    CopiesAnew program;
    ASSERT_EQ(read(*another, [&] { program.proceed(); }), "second");
    ASSERT_NE(program.second, nullptr);
  }
}

TEST_F(DataControlClipboard, ofAProgramThatCopiesAnewAMomentLaterIsReadAnew) {
  CopiesAnew program;
  program.isLate = true;
  EXPECT_EQ(read(*another, [&] { program.proceed(); }), "second");
}

TEST(WithoutACompositor, thereIsNoDataControl) {
  const test::EnvironmentVariable none("WAYLAND_DISPLAY", "nonexistent");
  EXPECT_EQ(DataControlOwner::open([](const SelectionOwner::Change&) {}), nullptr);
  EXPECT_EQ(DataControlReader::open("CLIPBOARD"), nullptr);
}

}  // namespace
}  // namespace lexwend::platform
