// SPDX-License-Identifier: MIT
#include "platform/linux/gnome/input_sources.h"

#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/linux/gnome/fake_shell.h"
#include "tests/linux/gnome/shared_bus.h"
#include "tests/linux/testing/temporary_folder.h"
#include "tests/linux/testing/virtual_display.h"

namespace lexwend::platform {
namespace {

struct GnomeLayouts : OnSharedBus {
  FakeShell fake;
  std::shared_ptr<GnomeShell> shell;
  std::optional<GnomeInputSources> sources;
  GnomeLayouts() {
    fake.appear();
    shell = std::make_shared<GnomeShell>(true);
    sources.emplace(shell, [](KeyCode, EventFlags) {});
  }
  std::string id(const InputSourceRef& source) {
    return std::get<std::string>(sources->property(source, InputSourceProperty::id));
  }
};

TEST_F(GnomeLayouts, areThoseOfGnomeWithoutInputMethods) {
  const auto list = sources->createInputSourceList({}, false);
  ASSERT_TRUE(list);
  ASSERT_EQ(list->size(), 2U);
  EXPECT_EQ(id((*list)[0]), "us(dvorak)");
  EXPECT_EQ(id((*list)[1]), "il");
  EXPECT_EQ(id(sources->copyCurrentKeyboardLayoutInputSource()), "us(dvorak)");
}

TEST_F(GnomeLayouts, areSelectedByTheirPlaceAmongAllSources) {
  const auto list = sources->createInputSourceList({}, false);
  sources->select((*list)[1]);
  EXPECT_EQ(fake.calls(), std::vector<std::string>{"select 2"});
  EXPECT_EQ(id(sources->copyCurrentKeyboardLayoutInputSource()), "il");
}

constexpr KeyCode kSpace{49};

/// Without the extension the settings tell.
struct GnomeLayoutsBySettings : OnSharedBus {
  BusPeer ibus;
  // A folder of keymaps that the test can take away.
  const test::TemporaryFolder folder;
  const std::string keymaps = folder.file("xkb");
  const test::EnvironmentVariable root{"XKB_CONFIG_ROOT", keymaps.c_str()};
  std::vector<std::pair<KeyCode, EventFlags>> played;
  std::shared_ptr<GnomeShell> shell = std::make_shared<GnomeShell>(true);
  GnomeInputSources sources{shell,
                            [this](KeyCode key, EventFlags flags) { played.emplace_back(key, flags); }};

  GnomeLayoutsBySettings() {
    ibus.ownName("org.freedesktop.IBus");
    std::filesystem::create_directory_symlink("/usr/share/X11/xkb", keymaps);
    settings.setShortcuts("switch-input-source", {"<Super>space"});
    settings.setShortcuts("switch-input-source-backward", {});
    use({"us", "il"});
  }
  ~GnomeLayoutsBySettings() override { use({}); }
  /// The layouts that are enabled, the one in use first.
  void use(const std::vector<std::string>& layouts) {
    settings.setLayouts("sources", layouts);
    settings.setLayouts("mru-sources", layouts);
  }
  void selectSecond() { sources.select(sources.createInputSourceList({}, false)->at(1)); }
};

TEST_F(GnomeLayoutsBySettings, areSelectedByTheUsersShortcut) {
  selectSecond();
  EXPECT_EQ(played, (std::vector<std::pair<KeyCode, EventFlags>>{{kSpace, kEventFlagControl}}));
}

TEST_F(GnomeLayoutsBySettings, areNotSelectedWhereNothingWouldTellWhetherTheShortcutHasDoneIt) {
  ibus.releaseName("org.freedesktop.IBus");
  selectSecond();
  EXPECT_TRUE(played.empty());
}

TEST_F(GnomeLayoutsBySettings, areCompiledOnceUntilTheyChange) {
  selectSecond();
  ASSERT_EQ(played.size(), 1U);
  std::filesystem::remove(keymaps);
  use({"il", "us"});
  use({"us", "il"});
  selectSecond();
  EXPECT_EQ(played.size(), 2U);
  use({"us", "de"});
  selectSecond();
  EXPECT_EQ(played.size(), 2U) << "there is no keymap any more that could be compiled";
}

}  // namespace
}  // namespace lexwend::platform
