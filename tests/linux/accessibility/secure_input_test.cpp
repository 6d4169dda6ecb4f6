// SPDX-License-Identifier: MIT
#include "platform/linux/accessibility/secure_input.h"

#include <gtest/gtest.h>

namespace lexwend::platform {
namespace {

bool isSecure(const std::optional<std::string>& windowClass, bool focusIsSecure) {
  LinuxSecureInput input({[&] { return windowClass; }, [&] { return focusIsSecure; }});
  return input.isSecureEventInputEnabled();
}

TEST(LinuxSecureInput, followsTheFocusedField) {
  EXPECT_TRUE(isSecure("Mousepad", true));
  EXPECT_TRUE(isSecure(std::nullopt, true));
  EXPECT_FALSE(isSecure("Mousepad", false));
  EXPECT_FALSE(isSecure(std::nullopt, false));
}

TEST(LinuxSecureInput, isOnInATerminalAndInAPromptForAPassword) {
  for (const char* terminal : {"XTerm", "org.gnome.Terminal", "kitty", "Xfce4-terminal", "org.kde.konsole",
                               "Pinentry-gtk-2", "Gcr-prompter", "ssh-askpass"}) {
    EXPECT_TRUE(isSecure(terminal, false)) << terminal;
  }
}

TEST(LinuxSecureInput, isOnWhileTheScreenIsLocked) {
  LinuxSecureInput input(
      {[] { return std::optional<std::string>(); }, [] { return false; }, [] { return true; }});
  EXPECT_TRUE(input.isSecureEventInputEnabled());
}

}  // namespace
}  // namespace lexwend::platform
