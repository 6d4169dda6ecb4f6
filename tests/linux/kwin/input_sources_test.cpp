// SPDX-License-Identifier: MIT
#include "platform/linux/kwin/input_sources.h"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/linux/kwin/fake_kwin.h"
#include "tests/linux/testing/virtual_display.h"

namespace lexwend::platform {
namespace {

using ::testing::ElementsAre;

constexpr KeyCode kKeyT{17};

struct KWinLayouts : testing::Test {
  std::vector<InputSourceRef> list() {
    return sources.createInputSourceList({InputSourceType::keyboardLayout, true}, false)
        .value_or(std::vector<InputSourceRef>());
  }
  std::string nameOf(const InputSourceRef& source) {
    return source ? std::get<std::string>(sources.property(source, InputSourceProperty::id)) : "";
  }
  std::vector<std::string> names() {
    std::vector<std::string> names;
    for (const auto& source : list()) names.push_back(nameOf(source));
    return names;
  }

  FakeKWin fake;
  KWinInputSources sources{fake.kwin()};
};

TEST_F(KWinLayouts, areTheGroupsOfTheKeymap) {
  EXPECT_THAT(names(), ElementsAre("us", "il"));
  EXPECT_EQ(nameOf(sources.copyCurrentKeyboardLayoutInputSource()), "us");
}

TEST_F(KWinLayouts, typeWhatTheirGroupTypes) {
  const auto layouts = list();
  ASSERT_EQ(layouts.size(), 2U);
  const auto data = sources.property(layouts[1], InputSourceProperty::unicodeKeyLayoutData);
  ASSERT_TRUE(std::holds_alternative<KeyLayoutDataRef>(data));
  std::uint32_t deadKeys = 0;
  KeyTranslation translation;
  translation.keyCode = kKeyT;
  translation.maxLength = 4;
  EXPECT_EQ(sources.translate(*std::get<KeyLayoutDataRef>(data), translation, deadKeys), u"א");
}

TEST_F(KWinLayouts, areSelectedByTheirPlace) {
  const auto layouts = list();
  ASSERT_EQ(layouts.size(), 2U);
  sources.select(layouts[1]);
  EXPECT_THAT(fake.calls("setLayout"), ElementsAre("setLayout(1,)"));
  EXPECT_EQ(nameOf(sources.copyCurrentKeyboardLayoutInputSource()), "il");
}

TEST_F(KWinLayouts, ofWhichThereIsOneIsActiveWithoutBeingTold) {
  fake.setLayouts("il");
  fake.peer().releaseName("org.kde.keyboard");
  EXPECT_TRUE(pumpUntil([&] { return names() == std::vector<std::string>{"il"}; }));
  EXPECT_EQ(nameOf(sources.copyCurrentKeyboardLayoutInputSource()), "il");
}

TEST_F(KWinLayouts, ofWhichTheActiveOneIsNotToldHaveNone) {
  fake.peer().releaseName("org.kde.keyboard");
  EXPECT_EQ(sources.copyCurrentKeyboardLayoutInputSource(), nullptr);
}

TEST_F(KWinLayouts, areReportedWhenTheyAreOthers) {
  int changes = 0;
  const auto observation = sources.observeEnabledLayoutsChanged([&] { ++changes; });
  fake.setLayouts("il,us");
  EXPECT_TRUE(pumpUntil([&] { return changes > 0; }));
  EXPECT_THAT(names(), ElementsAre("il", "us"));
}

}  // namespace
}  // namespace lexwend::platform
