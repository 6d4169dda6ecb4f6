// SPDX-License-Identifier: MIT
#include <QGuiApplication>
#include <QWidget>
#include <cstring>
#include <memory>
#include <stdexcept>

#include <gtest/gtest.h>

#include "platform/linux/clipboard/owner_thread.h"
#include "platform/linux/keymap/mac_key_codes.h"
#include "platform/linux/wayland/selections.h"
#include "tests/linux/contract/surroundings.h"
#include "tests/linux/testing/bytes.h"
#include "tests/linux/testing/private_sway.h"
#include "tests/linux/typist/wayland_pointer.h"

/// Qt's Wayland plugin does not destroy what it has bound when an application ends. The tests of the rooms
/// `wayland` and `sway` have no Qt and find leaks of ours.
extern "C" const char* __lsan_default_suppressions() {
  return "leak:libwayland-client";
}

namespace lexwend::contract {
namespace {

using namespace platform;
using namespace std::chrono_literals;

/// A window of this process as sway lists it.
struct Window {
  gint64 id;
  QPoint corner;
};

std::optional<Window> windowTitled(JsonObject* node, const std::string& title) {
  const bool isOurs = json_object_get_int_member_with_default(node, "pid", 0) == ::getpid();
  if (isOurs && textOf(node, "name") == title) {
    JsonObject* place = json_object_get_object_member(node, "rect");
    return Window{json_object_get_int_member(node, "id"),
                  QPoint(static_cast<int>(json_object_get_int_member(place, "x")),
                         static_cast<int>(json_object_get_int_member(place, "y")))};
  }
  for (const char* list : {"nodes", "floating_nodes"}) {
    if (json_object_has_member(node, list) == FALSE) continue;
    JsonArray* children = json_object_get_array_member(node, list);
    for (guint i = 0; i < json_array_get_length(children); ++i) {
      if (auto found = windowTitled(json_array_get_object_element(children, i), title)) return found;
    }
  }
  return std::nullopt;
}

/// The compositor sway.
class SwaySurroundings : public Surroundings {
 public:
  SwaySurroundings() { ::setenv("QT_QPA_PLATFORM", "wayland", 1); }

  std::vector<std::string> variables() const override { return {"WAYLAND_DISPLAY", "SWAYSOCK"}; }
  void setLayouts(const std::string& layouts) override { sway_.setLayouts(layouts); }
  void press(int evdevKey) override { sway_.press(evdevKey); }
  void release(int evdevKey) override { sway_.release(evdevKey); }

  void takeHotKey(KeyCode keyCode, Modifiers modifiers) override {
    std::string combination;
    constexpr std::pair<Modifiers, const char*> kNames[] = {
        {kCmdKey, "Ctrl+"}, {kShiftKey, "Shift+"}, {kOptionKey, "Mod1+"}, {kControlKey, "Mod4+"}};
    for (const auto& [modifier, name] : kNames) {
      if (overlap(modifiers, modifier)) combination += name;
    }
    ASSERT_TRUE(sway_.ipc().run("bindcode " + combination + std::to_string(*xFromMacKeyCode(keyCode)) +
                                " nop other"));
  }
  bool sharesHotKeys() const override { return true; }
  bool tellsHeldModifiers() const override { return false; }
  bool tellsBrokenPromises() const override { return false; }
  bool hasBell() const override { return false; }
  bool panelDrawsMenu() const override { return true; }
  int beeps() override { return 0; }

  void copy(std::string_view text) override { own({{"UTF8_STRING", "UTF8_STRING", 8, bytesOf(text)}}); }
  std::optional<std::string> paste() override {
    const auto reader = selectionsOfWayland().openReader("CLIPBOARD");
    return reader ? reader->readText({1000ms, 1000ms, 1U << 20}) : std::nullopt;
  }
  /// A promise that is broken is a type of which nothing comes.
  void promise(const HostUnderTest::Promises& item) override {
    ClipboardContents contents;
    for (const auto& [type, bytes] : item) contents.push_back({type, type, 8, bytesOf(bytes.value_or(""))});
    own(std::move(contents));
  }

  void pointAt(const QWidget& widget, QPoint place) override {
    if (const auto window = windowOf(widget)) {
      const QPoint there = window->corner + widget.mapTo(widget.window(), place);
      // By way of a place beside it: the pointer may be there already, and then nobody is told.
      for (const int aside : {1, 0}) {
        pointer_.moveTo(static_cast<std::uint32_t>(there.x() + aside), static_cast<std::uint32_t>(there.y()));
      }
    }
  }
  void click() override { pointer_.click(); }
  bool close(const QWidget& window) override {
    const auto shown = windowOf(window);
    return shown && sway_.ipc().run("[con_id=" + std::to_string(shown->id) + "] kill");
  }

 private:
  std::optional<Window> windowOf(const QWidget& widget) {
    const JsonRef tree = sway_.ipc().tree();
    if (!tree) throw std::runtime_error("sway has gone");
    // Qt names a window without a title after the application.
    const QString title = widget.window()->windowTitle();
    const QString shown = title.isEmpty() ? QGuiApplication::applicationDisplayName() : title;
    return windowTitled(json_node_get_object(tree.get()), shown.toStdString());
  }
  void own(ClipboardContents contents) {
    constexpr OwnerTimes kNoWait{0ms, 0ms, 0ms, 0ms};
    auto next = OwnerThread::open(kNoWait, selectionsOfWayland());
    next->pass(std::move(contents));  // which nobody hands over
    copying_ = std::move(next);
  }

  PrivateSway sway_;
  WaylandPointer pointer_{PrivateSway::kWidth, PrivateSway::kHeight};
  std::unique_ptr<OwnerThread> copying_;
};

}  // namespace

std::unique_ptr<Surroundings> makeSurroundings() {
  return std::make_unique<SwaySurroundings>();
}

}  // namespace lexwend::contract
