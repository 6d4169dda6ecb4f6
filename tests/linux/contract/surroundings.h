// SPDX-License-Identifier: MIT
#pragma once

#include <QPoint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/keys.h"
#include "tests/contract/host_under_test.h"

class QWidget;

namespace lexwend::contract {

/// The display of one test with the user and the other programs at it; from construction to destruction the
/// environment names it.
class Surroundings {
 public:
  virtual ~Surroundings() = default;

  /// The variables by which programs find the display.
  virtual std::vector<std::string> variables() const = 0;
  virtual void setLayouts(const std::string& layouts) = 0;
  /// Keys by their evdev codes.
  virtual void press(int evdevKey) = 0;
  virtual void release(int evdevKey) = 0;
  virtual void takeHotKey(platform::KeyCode keyCode, platform::Modifiers modifiers) = 0;

  virtual void copy(std::string_view text) = 0;
  virtual std::optional<std::string> paste() = 0;
  virtual void promise(const HostUnderTest::Promises& item) = 0;

  /// Moves the pointer to a place of a widget's, in the widget's coordinates.
  virtual void pointAt(const QWidget& widget, QPoint place) = 0;
  /// Presses and releases the first button.
  virtual void click() = 0;
  /// What the close box of the window does. False while the compositor does not list the window yet.
  virtual bool close(const QWidget& window) = 0;

  virtual int beeps() = 0;
  /// What a display of this kind does not have.
  virtual bool sharesHotKeys() const { return false; }
  virtual bool tellsHeldModifiers() const { return true; }
  virtual bool tellsBrokenPromises() const { return true; }
  virtual bool hasBell() const { return true; }
  /// The agent has no menu of its own: the panel draws the one that the item exports.
  virtual bool panelDrawsMenu() const { return false; }
};

/// Defined by each runner.
std::unique_ptr<Surroundings> makeSurroundings();

}  // namespace lexwend::contract
