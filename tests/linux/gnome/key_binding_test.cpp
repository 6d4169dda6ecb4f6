// SPDX-License-Identifier: MIT
#include "platform/linux/gnome/key_binding.h"

#include <map>
#include <string>

#include <gtest/gtest.h>

#include "platform/linux/gnome/hot_key_service.h"
#include "tests/linux/gnome/fake_shell.h"
#include "tests/linux/gnome/shared_bus.h"
#include "tests/linux/testing/virtual_display.h"

namespace lexwend::platform {
namespace {

using Bindings = std::map<std::string, DesktopSettings::KeyBinding>;

constexpr char kFolder[] = "/org/gnome/settings-daemon/plugins/media-keys/custom-keybindings/";
constexpr KeyCode kF2{120};
constexpr KeyCode kK{40};

std::string at(const char* name) {
  return std::string(kFolder) + name + "/";
}

struct ABinding : OnSharedBus {
  BusPeer daemon;
  GnomeKeyBinding binding{"/opt/my programs/lexwend"};
  const std::string own = at("org.lexwend.Lexwend");
  const Bindings others = {{at("custom0"), {"Terminal", "foot", "<Super>t"}}};

  void startDaemon() { daemon.ownName("org.gnome.SettingsDaemon.MediaKeys"); }
};

TEST_F(ABinding, isPossibleWhereTheDaemonRunsThatActsOnIt) {
  EXPECT_FALSE(binding.isPossible());
  startDaemon();
  EXPECT_TRUE(binding.isPossible());
}

TEST_F(ABinding, runsTheProgramAndComesAndGoesBesideThoseOfTheUser) {
  settings.setKeyBindings(others);
  EXPECT_FALSE(binding.isSet());
  binding.set("<Control>k");
  EXPECT_TRUE(binding.isSet());
  Bindings expected = others;
  expected[own] = {"Lexwend", "'/opt/my programs/lexwend' --fix", "<Control>k"};
  EXPECT_EQ(settings.keyBindings(), expected);
  binding.set("F2");
  expected[own].key = "F2";
  EXPECT_EQ(settings.keyBindings(), expected);
  binding.remove();
  EXPECT_FALSE(binding.isSet());
  EXPECT_EQ(settings.keyBindings(), others);
  EXPECT_EQ(settings.keyBindingAt(own), DesktopSettings::KeyBinding());
}

TEST_F(ABinding, ofTheUserIsKnownByItsCommand) {
  const auto isMadeByUserWith = [&](const std::string& command, const std::string& key) {
    settings.setKeyBindings({{at("custom0"), {"Fix", command, key}}});
    return binding.isMadeByUser();
  };
  EXPECT_TRUE(isMadeByUserWith("lexwend --fix", "F2"));
  EXPECT_TRUE(isMadeByUserWith("sh -c '/usr/bin/lexwend --fix'", "<Super>F2"));
  EXPECT_FALSE(isMadeByUserWith("lexwend --fix", "")) << "it has no key";
  EXPECT_FALSE(isMadeByUserWith("lexwend --menu", "F2"));
  EXPECT_FALSE(isMadeByUserWith("another --fix", "F2"));
}

TEST_F(ABinding, ofTheProgramIsNoneOfTheUser) {
  binding.set("F2");
  EXPECT_FALSE(binding.isMadeByUser());
}

struct HotKeysByABinding : ABinding {
  FakeShell fake;
  std::shared_ptr<GnomeShell> shell = std::make_shared<GnomeShell>(true);
  GnomeHotKeyService service{shell, GnomeKeyBinding("/usr/bin/lexwend")};
};

TEST_F(HotKeysByABinding, areSetWhenTheUserAgreesAndGoWithTheHotKey) {
  startDaemon();
  auto registration = service.registerHotKey(kF2, kNoModifiers, {1, 5});
  EXPECT_EQ(settings.keyBindings(), Bindings()) << "nobody was asked";
  EXPECT_TRUE(service.needsAgreement());
  EXPECT_FALSE(service.hasHotKeys());
  service.agree();
  EXPECT_EQ(settings.keyBindings().at(own).key, "F2");
  EXPECT_TRUE(service.hasHotKeys());
  EXPECT_FALSE(service.needsAgreement());
  registration.hotKey.cancel();
  EXPECT_EQ(settings.keyBindings(), Bindings());
}

TEST_F(HotKeysByABinding, areNamedByWhatTheKeyTypesInTheUsLayout) {
  startDaemon();
  service.agree();
  const auto registration =
      service.registerHotKey(kK, kCmdKey | kShiftKey | kOptionKey | kControlKey, {1, 5});
  EXPECT_EQ(settings.keyBindings().at(own).key, "<Control><Shift><Alt><Super>k");
}

TEST_F(HotKeysByABinding, areNotAskedForWhereTheUserHasMadeOne) {
  startDaemon();
  settings.setKeyBindings({{at("custom0"), {"Fix", "lexwend --fix", "F9"}}});
  const auto registration = service.registerHotKey(kF2, kNoModifiers, {1, 5});
  EXPECT_FALSE(service.needsAgreement());
  EXPECT_TRUE(service.hasHotKeys());
  service.agree();
  EXPECT_FALSE(settings.keyBindings().contains(own));
}

TEST_F(HotKeysByABinding, areHeldByTheAgentForEveryOtherProgram) {
  startDaemon();
  GnomeHotKeyService other{std::make_shared<GnomeShell>(/*isAgent=*/false),
                           GnomeKeyBinding("/usr/bin/other")};
  EXPECT_EQ(other.registerHotKey(kF2, kNoModifiers, {1, 5}).status, kHotKeyExistsErr);
  EXPECT_EQ(settings.keyBindings(), Bindings());
}

TEST_F(HotKeysByABinding, giveWayToTheExtension) {
  startDaemon();
  service.agree();
  const auto registration = service.registerHotKey(kF2, kNoModifiers, {1, 5});
  ASSERT_TRUE(settings.keyBindings().contains(own));
  fake.appear();
  EXPECT_TRUE(pumpUntil([&] { return !fake.calls().empty(); }));
  EXPECT_EQ(settings.keyBindings(), Bindings());
}

}  // namespace
}  // namespace lexwend::platform
