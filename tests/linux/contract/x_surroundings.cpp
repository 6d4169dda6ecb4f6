// SPDX-License-Identifier: MIT
#include <cstdlib>
#include <memory>

#include <gtest/gtest.h>
#include <xcb/xcb.h>

#include "platform/linux/keymap/mac_key_codes.h"
#include "tests/linux/contract/bells.h"
#include "tests/linux/contract/pointer.h"
#include "tests/linux/contract/surroundings.h"
#include "tests/linux/testing/other_application.h"
#include "tests/linux/testing/virtual_display.h"

namespace lexwend::contract {
namespace {

using namespace platform;

/// An X server.
class XSurroundings : public Surroundings {
 public:
  XSurroundings() {
    for (const char* name : {"WAYLAND_DISPLAY", "SWAYSOCK", "QT_QPA_PLATFORM"}) ::unsetenv(name);
    setLayouts("us,il");
  }

  std::vector<std::string> variables() const override { return {"DISPLAY"}; }
  void setLayouts(const std::string& layouts) override { VirtualDisplay::setLayouts(layouts); }
  void press(int evdevKey) override { typist_.pressPhysically(evdevKey); }
  void release(int evdevKey) override { typist_.releasePhysically(evdevKey); }

  void takeHotKey(KeyCode keyCode, Modifiers modifiers) override {
    const auto key = xFromMacKeyCode(keyCode);
    ASSERT_TRUE(key.has_value()) << number(keyCode);
    constexpr std::pair<Modifiers, std::uint16_t> kMasks[] = {{kCmdKey, XCB_MOD_MASK_CONTROL},
                                                              {kShiftKey, XCB_MOD_MASK_SHIFT},
                                                              {kOptionKey, XCB_MOD_MASK_1},
                                                              {kControlKey, XCB_MOD_MASK_4}};
    std::uint16_t mask = 0;
    for (const auto& [modifier, bit] : kMasks) {
      if (overlap(modifiers, modifier)) mask = static_cast<std::uint16_t>(mask | bit);
    }
    // Taken on the connection of the keyboard's user, which is another client of the server than the host's.
    auto* connection = typist_.connection();
    xcb_generic_error_t* refusal =
        xcb_request_check(connection, xcb_grab_key_checked(connection, 0, typist_.root(), mask, *key,
                                                           XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
    EXPECT_EQ(refusal, nullptr);
    std::free(refusal);
  }

  void copy(std::string_view text) override {
    CopyingApplication::Behaviour behaviour;
    behaviour.targets = {{"UTF8_STRING", {"UTF8_STRING", 8, std::string(text)}}};
    // The one before goes after the new one has the clipboard, so that there is one change.
    copying_ = std::make_unique<CopyingApplication>(behaviour);
  }
  std::optional<std::string> paste() override {
    PastingApplication pasting;
    const auto value = pasting.paste("UTF8_STRING");
    return value ? std::optional(value->bytes) : std::nullopt;
  }
  void promise(const HostUnderTest::Promises& item) override {
    // A selection's owner is asked for everything; nothing is handed over beforehand.
    CopyingApplication::Behaviour behaviour;
    for (const auto& [type, bytes] : item) {
      behaviour.targets.push_back({type, {type, 8, bytes.value_or("")}});
      if (!bytes) behaviour.refusedTargets.insert(type);
    }
    copying_ = std::make_unique<CopyingApplication>(behaviour);
  }

  void pointAt(const QWidget& widget, QPoint place) override { pointer_.moveTo(widget, place); }
  void click() override { pointer_.click(); }
  bool close(const QWidget& window) override {
    pointer_.closeBox(window);
    return true;
  }
  int beeps() override { return bells_.rung(); }

 private:
  VirtualDisplay display_;
  Typist typist_;
  Pointer pointer_{typist_.connection(), typist_.root()};
  Bells bells_;
  std::unique_ptr<CopyingApplication> copying_;
};

}  // namespace

std::unique_ptr<Surroundings> makeSurroundings() {
  return std::make_unique<XSurroundings>();
}

}  // namespace lexwend::contract
