// SPDX-License-Identifier: MIT
// What the scenarios do not show of the whole agent on the macOS host: the order of its calls, and what no
// script says.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/entry.h"
#include "hotkey/hot_key_center.h"
#include "platform/host.h"
#include "tests/mac/mac_desktop.h"

namespace lexwend {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

constexpr std::uint32_t kF2 = 120;
constexpr std::uint32_t kSignature = 0x544B5652;

std::filesystem::path newHome() {
  std::string name = (std::filesystem::temp_directory_path() / "lexwend-home-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no home directory for the test");
  std::filesystem::create_directories(std::filesystem::path(name) / "Library" / "Logs");
  return name;
}

/// A user who has logged in, with the settings of a first run.
struct AgentOnMac : ::testing::Test {
  doubles::Session session;
  doubles::MacDesktop desktop;
  std::filesystem::path home = newHome();
  std::unique_ptr<platform::Host> host = platform::makeHost();
  std::ostringstream out, err;

  AgentOnMac() {
    doubles::process::setHomeDirectory(home.string());
    doubles::process::setIdentifier(4242);
    doubles::process::setBundleIdentifier("org.lexwend.Lexwend");
    doubles::process::setInfo("CFBundleShortVersionString", std::string("1.0"));
  }

  /// Runs the agent until it has nothing more to do; `whileRunning` happens once, in its event loop.
  void run(const std::function<void()>& whileRunning) {
    const platform::HostScope scope(*host);
    HotKeyCenter center;
    int loops = 0;
    doubles::app::setEventLoop([&] {
      ++loops;
      whileRunning();
    });
    EXPECT_EQ(runEntry({"/Applications/Lexwend.app/Contents/MacOS/Lexwend"}, center, out, err), 0);
    EXPECT_EQ(loops, 1);
  }

  std::string log() const {
    std::ifstream stream(home / "Library" / "Logs" / "Lexwend.log", std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
  }
  static std::string icon() { return doubles::status_bar::items().at(0).image.value().symbol; }

  void TearDown() override {
    host = nullptr;
    EXPECT_EQ(session.unbalancedObjects(), "");
    std::filesystem::remove_all(home);
  }
};

TEST_F(AgentOnMac, launchesIntoTheMenuBarInItsOrder) {
  run([&] {
    EXPECT_EQ(doubles::app::activationPolicy(), 1);
    std::vector<std::string> steps;
    for (const doubles::Call& call : doubles::calls()) {
      for (const char* step : {"+[NSApplication sharedApplication]", "-[NSApplication setDelegate:]",
                               "-[NSApplication setActivationPolicy:]", "-[NSApplication run]",
                               "-[NSStatusBar statusItemWithLength:]", "RegisterEventHotKey",
                               "-[SMAppService registerAndReturnError:]"}) {
        if (call.name == step) steps.push_back(call.name);
      }
    }
    EXPECT_THAT(steps, ElementsAre("+[NSApplication sharedApplication]", "-[NSApplication setDelegate:]",
                                   "-[NSApplication setActivationPolicy:]", "-[NSApplication run]",
                                   "-[NSStatusBar statusItemWithLength:]", "RegisterEventHotKey",
                                   "-[SMAppService registerAndReturnError:]"));
    EXPECT_THAT(doubles::hot_keys::registered(),
                ElementsAre(doubles::hot_keys::Registered{kF2, 0, kSignature, 1}));
    EXPECT_EQ(doubles::workspace::observers(), 2u);
    EXPECT_EQ(doubles::time::scheduledTimers(), 0u);
    EXPECT_EQ(doubles::accessibility::promptsShown(), 0);
  });
  EXPECT_THAT(log(), HasSubstr(" hotkey: register F2 ok=true\n"));
}

TEST_F(AgentOnMac, standsInTheMenuBarUntilItIsToQuit) {
  run([&] {
    const auto item = doubles::status_bar::items().at(0);
    EXPECT_EQ(item.length, -2);
    EXPECT_FALSE(item.menuAutoenables);
    EXPECT_EQ(item.image, (doubles::status_bar::Image{"keyboard", "Lexwend", true}));
    doubles::status_bar::choose("יציאה");
    EXPECT_TRUE(doubles::app::isTerminated());
  });
}

TEST_F(AgentOnMac, goesOnWhileTheAlertOfAFixFromTheMenuIsOpen) {
  doubles::accessibility::setTrusted(false);
  run([] {
    doubles::forgetCalls();
    doubles::time::later(10s, [] { doubles::workspace::postDidWake(); });
    doubles::time::later(20s, [] {
      EXPECT_EQ(doubles::callsNamed("RegisterEventHotKey").size(), 1u);
      doubles::accessibility::setTrusted(true);
    });
    doubles::time::later(30s, [] { EXPECT_EQ(icon(), "keyboard"); });
    doubles::alerts::answerNext(1001, 1min);
    doubles::status_bar::choose("תקן טקסט מסומן    F2");
    doubles::time::advance(300ms);
    EXPECT_EQ(doubles::alerts::shown().size(), 1u);
    EXPECT_GT(doubles::time::now(), 1min);
  });
}

}  // namespace
}  // namespace lexwend
