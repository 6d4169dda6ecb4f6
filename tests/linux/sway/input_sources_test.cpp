// SPDX-License-Identifier: MIT
#include "platform/linux/sway/input_sources.h"

#include <string>

#include <gtest/gtest.h>

#include "tests/linux/sway/fake_sway.h"

namespace lexwend::platform {
namespace {

constexpr std::uint32_t kGetInputs = 100;
constexpr const char* kInputs = R"json([
  {"identifier":"power","type":"keyboard","xkb_layout_names":["English (US)"],"xkb_active_layout_index":0
},
  {"identifier":"mouse","type":"pointer"},
  {"identifier":"own","type":"keyboard","xkb_layout_names":["Lexwend"],"xkb_active_layout_index":0},
  {"identifier":"user","type":"keyboard","xkb_layout_names":["English (US)","Hebrew","My own"],
   "xkb_active_layout_index":1}])json";

struct SwayLayouts : testing::Test {
  SwayLayouts() { sway.answer(kGetInputs, kInputs); }
  std::vector<std::string> names() {
    std::vector<std::string> names;
    const auto list = sources.createInputSourceList({InputSourceType::keyboardLayout, true}, false);
    for (const auto& source : list.value_or(std::vector<InputSourceRef>())) {
      names.push_back(std::get<std::string>(sources.property(source, InputSourceProperty::id)));
    }
    return names;
  }

  FakeSway sway;
  std::shared_ptr<SwayIpc> ipc = SwayIpc::open();
  SwayInputSources sources{ipc, "Lexwend"};
};

TEST_F(SwayLayouts, areThoseOfTheKeyboardWithTheMostOfThem) {
  EXPECT_EQ(names(), (std::vector<std::string>{"us", "il", "My own"}));
  const auto current = sources.copyCurrentKeyboardLayoutInputSource();
  ASSERT_NE(current, nullptr);
  EXPECT_EQ(std::get<std::string>(sources.property(current, InputSourceProperty::id)), "il");
}

TEST_F(SwayLayouts, areSelectedByTheirPlaceOnEveryKeyboard) {
  const auto list = sources.createInputSourceList({InputSourceType::keyboardLayout, true}, false);
  ASSERT_TRUE(list && list->size() == 3);
  sources.select((*list)[1]);
  EXPECT_EQ(sway.commands().back(), "input type:keyboard xkb_switch_layout 1");
}

TEST_F(SwayLayouts, areNoneWithoutAKeyboard) {
  sway.answer(kGetInputs, "[]");
  EXPECT_FALSE(sources.createInputSourceList({InputSourceType::keyboardLayout, true}, false));
  EXPECT_EQ(sources.copyCurrentKeyboardLayoutInputSource(), nullptr);
}

}  // namespace
}  // namespace lexwend::platform
