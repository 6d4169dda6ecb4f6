// SPDX-License-Identifier: MIT
#include "platform/linux/sway/input_sources.h"

#include <chrono>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "tests/linux/sway/fake_sway.h"

namespace lexwend::platform {
namespace {

constexpr std::uint32_t kGetInputs = 100;
constexpr std::uint32_t kInput = 0x80000015;
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

TEST_F(SwayLayouts, haveTheirKeymapCompiledOnceUntilSwayTellsOfAnother) {
  // The machine's configuration and a layout of our own. A second path for it would do, but libxkbcommon 1.5
  // leaks the names of files that it looks for in two.
  const test::TemporaryFolder folder;
  const std::filesystem::path machine = "/usr/share/X11/xkb";
  std::filesystem::create_directory(folder.file("symbols"));
  for (const char* part : {"", "symbols"}) {
    for (const auto& entry : std::filesystem::directory_iterator(machine / part)) {
      const auto copy = folder.path() / std::filesystem::relative(entry.path(), machine);
      if (!std::filesystem::exists(copy)) std::filesystem::create_symlink(entry.path(), copy);
    }
  }
  const test::EnvironmentVariable root("XKB_CONFIG_ROOT", folder.path().c_str());
  const auto writeLayout = [&](const char* keysym) {
    test::putContents(folder.file("symbols/homemade"),
                      std::string("default xkb_symbols \"basic\" { key <AC01> { [") + keysym + "] }; };");
  };
  const auto typed = [&] {
    const auto list = sources.createInputSourceList({InputSourceType::keyboardLayout, true}, false);
    const auto data = sources.property(list.value().at(0), InputSourceProperty::unicodeKeyLayoutData);
    std::uint32_t deadKeyState = 0;
    return sources.translate(*std::get<KeyLayoutDataRef>(data), {.keyCode = kKeyA, .maxLength = 4},
                             deadKeyState);
  };
  sway.answer(kGetInputs, R"([{"identifier":"user","type":"keyboard","xkb_layout_names":["homemade"]}])");
  writeLayout("q");
  EXPECT_EQ(typed(), u"q");
  writeLayout("w");
  EXPECT_EQ(typed(), u"q");
  sway.tell(kInput, R"({"change":"xkb_keymap","input":{"identifier":"user"}})");
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
  while (typed() != u"w" && std::chrono::steady_clock::now() < end) ipc->handleEvents();
  EXPECT_EQ(typed(), u"w");
}

}  // namespace
}  // namespace lexwend::platform
