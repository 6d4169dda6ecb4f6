// SPDX-License-Identifier: MIT
#include "platform/linux/kwin/fake_input.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <fake-input.h>
#include <gtest/gtest.h>
#include <linux/input-event-codes.h>
#include <wayland-server-core.h>

#include "tests/linux/testing/temporary_folder.h"

namespace lexwend::platform {
namespace {

using namespace std::chrono_literals;

/// A compositor with a seat that takes keys as KWin does, on a thread of its own. It is that of
/// WAYLAND_DISPLAY.
class KeyTaker {
 public:
  KeyTaker() : display_(wl_display_create()) {
    const char* name = wl_display_add_socket_auto(display_);
    if (name == nullptr) throw std::runtime_error("no socket");
    variable_ = std::make_unique<test::EnvironmentVariable>("WAYLAND_DISPLAY", name);
    wl_global_create(display_, &wl_seat_interface, 1, this, bind<&wl_seat_interface>);
    wl_global_create(display_, &org_kde_kwin_fake_input_interface, 4, this,
                     bind<&org_kde_kwin_fake_input_interface>);
    thread_ = std::thread([this] { serve(); });
  }
  ~KeyTaker() {
    hasEnded_ = true;
    thread_.join();
    wl_display_destroy_clients(display_);
    wl_display_destroy(display_);
  }
  KeyTaker(const KeyTaker&) = delete;
  KeyTaker& operator=(const KeyTaker&) = delete;

  /// Returns when it handles nothing any more.
  void stop() {
    isStopped_ = true;
    const std::lock_guard<std::mutex> lock(handling_);
  }
  void goOn() { isStopped_ = false; }
  /// What was played so far and handled, without the modifiers that are let go first.
  std::vector<std::string> keys() {
    const std::lock_guard<std::mutex> lock(handling_);
    return keys_;
  }

 private:
  void serve() {
    while (!hasEnded_) {
      {
        const std::lock_guard<std::mutex> lock(handling_);
        if (!isStopped_) {
          wl_event_loop_dispatch(wl_display_get_event_loop(display_), 0);
          wl_display_flush_clients(display_);
        }
      }
      std::this_thread::sleep_for(1ms);
    }
  }

  template <const wl_interface* interface>
  static void bind(wl_client* client, void* self, std::uint32_t version, std::uint32_t id) {
    wl_resource* resource = wl_resource_create(client, interface, static_cast<int>(version), id);
    wl_resource_set_dispatcher(resource, handle, nullptr, self, nullptr);
  }

  static int handle(const void* /*implementation*/, void* resource, std::uint32_t /*opcode*/,
                    const wl_message* message, wl_argument* arguments) {
    auto& self = *static_cast<KeyTaker*>(wl_resource_get_user_data(static_cast<wl_resource*>(resource)));
    if (std::string_view(message->name) != "keyboard_key") return 0;
    const std::uint32_t key = arguments[0].u;
    const bool isDown = arguments[1].u != 0;
    if (isDown) self.down_.insert(key);
    if (isDown || self.down_.erase(key) > 0) {
      self.keys_.push_back(std::to_string(key) + (isDown ? " down" : " up"));
    }
    return 0;
  }

  test::TemporaryFolder folder_;
  test::EnvironmentVariable runtimeFolder_{"XDG_RUNTIME_DIR", folder_.path().c_str()};
  wl_display* display_;
  std::unique_ptr<test::EnvironmentVariable> variable_;
  std::atomic<bool> isStopped_ = false;
  std::atomic<bool> hasEnded_ = false;
  std::mutex handling_;
  // Under the mutex.
  std::set<std::uint32_t> down_;
  std::vector<std::string> keys_;
  std::thread thread_;
};

bool press(KeyPlayer& player) {
  return player.play(KEY_LEFTCTRL, true, KeyPlayer::control) &&
         player.play(KEY_INSERT, true, KeyPlayer::control) && player.settle();
}

bool release(KeyPlayer& player) {
  return player.play(KEY_INSERT, false, KeyPlayer::control) && player.play(KEY_LEFTCTRL, false, 0) &&
         player.settle();
}

const std::vector<std::string> kChord = {"29 down", "110 down", "110 up", "29 up"};
const std::vector<std::string> kTwice = {"29 down", "110 down", "110 up", "29 up",
                                         "29 down", "110 down", "110 up", "29 up"};

struct KeysOfKWin : testing::Test {
  /// After a silence the connection waits for a tenth of a second only.
  void goOn() {
    kwin.goOn();
    const auto deadline = std::chrono::steady_clock::now() + 10s;
    while (!connection->roundTrip() && std::chrono::steady_clock::now() < deadline) {
    }
  }

  KeyTaker kwin;
  std::unique_ptr<WaylandConnection> connection = WaylandConnection::open();
  std::unique_ptr<KeyPlayer> player = FakeInput::open(*connection);
};

TEST_F(KeysOfKWin, arePlayedInTheirOrder) {
  EXPECT_TRUE(press(*player));
  EXPECT_TRUE(release(*player));
  EXPECT_EQ(kwin.keys(), kChord);
}

TEST_F(KeysOfKWin, comeNotLateWhereItDoesNotAnswer) {
  kwin.stop();
  EXPECT_FALSE(press(*player));
  EXPECT_FALSE(press(*player));
  goOn();
  EXPECT_TRUE(press(*player));
  EXPECT_TRUE(release(*player));
  EXPECT_EQ(kwin.keys(), kChord);
}

TEST_F(KeysOfKWin, areLetGoWhenItGoesOn) {
  EXPECT_TRUE(press(*player));
  kwin.stop();
  EXPECT_FALSE(release(*player));
  EXPECT_FALSE(press(*player));
  goOn();
  EXPECT_TRUE(press(*player));
  EXPECT_TRUE(release(*player));
  EXPECT_EQ(kwin.keys(), kTwice);
}

TEST_F(KeysOfKWin, areLetGoWhereItTakesTheirPressLate) {
  EXPECT_TRUE(player->play(KEY_LEFTCTRL, true, KeyPlayer::control));
  kwin.stop();
  EXPECT_TRUE(player->play(KEY_INSERT, true, KeyPlayer::control));
  EXPECT_FALSE(player->settle());
  goOn();
  EXPECT_EQ(kwin.keys(), kChord);
}

}  // namespace
}  // namespace lexwend::platform
