// SPDX-License-Identifier: MIT
#include "platform/linux/gnome/input_sources.h"

#include <gtest/gtest.h>

#include "tests/linux/gnome/fake_shell.h"
#include "tests/linux/gnome/shared_bus.h"
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

}  // namespace
}  // namespace lexwend::platform
