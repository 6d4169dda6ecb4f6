// SPDX-License-Identifier: MIT
#include "platform/linux/server/display_server.h"

#include <cstdlib>

#include <gtest/gtest.h>

#include "tests/linux/testing/private_sway.h"

namespace lexwend::platform {
namespace {

std::unique_ptr<DisplayServer> open() {
  return DisplayServer::open({.play = [](KeyCode, EventFlags) {},
                              .activeProcess = [] { return std::nullopt; },
                              .thisIsTheAgent = [] { return false; },
                              .anotherIsTheAgent = [] { return false; }});
}

TEST(DisplayServer, withoutAnyIsAnXServerThatControlsNothing) {
  ASSERT_EQ(unsetenv("DISPLAY"), 0);
  ASSERT_EQ(unsetenv("WAYLAND_DISPLAY"), 0);
  ASSERT_EQ(unsetenv("SWAYSOCK"), 0);
  const auto server = open();
  EXPECT_FALSE(server->isCompositor());
  EXPECT_FALSE(server->mayControl());
  EXPECT_EQ(server->x11(), nullptr);
  EXPECT_FALSE(server->frontProcess());
  EXPECT_FALSE(server->frontWindowClass());
}

TEST(DisplayServer, isTheCompositorThatAnswers) {
  const PrivateSway sway;
  const auto server = open();
  EXPECT_TRUE(server->isCompositor());
  EXPECT_TRUE(server->mayControl());
  EXPECT_EQ(server->x11(), nullptr);
  const auto keyEvents = server->makeKeyEvents([] { return true; }, [] { return true; });
  EXPECT_NE(keyEvents->createSource(EventSourceState::hidSystem), nullptr);
  EXPECT_NE(server->makeInputSources()->copyCurrentKeyboardLayoutInputSource(), nullptr);
}

TEST(DisplayServer, isACompositorAlsoWhereNothingElseIsKnownOfIt) {
  const PrivateSway sway;
  ASSERT_EQ(unsetenv("SWAYSOCK"), 0);
  const auto server = open();
  EXPECT_TRUE(server->isCompositor());
  EXPECT_FALSE(server->tellsFront());
  const auto inputSources = server->makeInputSources();
  const auto layouts = inputSources->createInputSourceList({}, false);
  ASSERT_TRUE(layouts);
  EXPECT_EQ(layouts->size(), 2U);
  EXPECT_EQ(inputSources->copyCurrentKeyboardLayoutInputSource(), nullptr);
  const auto hotKeys = server->makeHotKeyService();
  EXPECT_EQ(hotKeys->whyNoPressComes(), server->hotKeyLimit().what.hebrew);
  EXPECT_FALSE(server->hotKeyLimit().what.hebrew.empty());
}

}  // namespace
}  // namespace lexwend::platform
