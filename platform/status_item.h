// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace lexwend::platform {

/// A symbol for the status item. Opaque.
class SymbolImage {
 public:
  virtual ~SymbolImage() = default;
  /// A template image is drawn in the bar's own colour.
  virtual void setTemplate(bool isTemplate) = 0;
};
using SymbolImageRef = std::shared_ptr<SymbolImage>;

/// One entry of a menu. It may be changed while the menu is open. Texts are UTF-8.
class MenuItem {
 public:
  virtual ~MenuItem() = default;
  virtual void setTitle(std::string_view title) = 0;
  /// What choosing the item does, on the main thread. The function may end the program.
  virtual void setAction(std::function<void()> action) = 0;
  /// Choosing the item ends the application in the system's standard way.
  virtual void setTerminatesApplication() = 0;
  /// The character (UTF-8) that chooses the item together with the system's command key; empty for none.
  virtual void setKeyEquivalent(std::string_view key) = 0;
  virtual void setChecked(bool checked) = 0;
  virtual void setHidden(bool hidden) = 0;
  virtual void setEnabled(bool enabled) = 0;
  /// A sentence that explains the title; empty for none. A host may show none.
  virtual void setToolTip(std::string_view /*text*/) {}
};
using MenuItemRef = std::shared_ptr<MenuItem>;

/// A menu. Items are added and never removed.
class Menu {
 public:
  virtual ~Menu() = default;
  /// Whether the system enables and disables items by itself.
  virtual void setAutoenablesItems(bool autoenables) = 0;
  virtual void addItem(const MenuItemRef& item) = 0;
  virtual void addSeparator() = 0;
};
using MenuRef = std::shared_ptr<Menu>;

/// The agent's icon in the menu bar or tray; it disappears with the last reference.
class StatusItem {
 public:
  virtual ~StatusItem() = default;
  /// The image of the item's button; null clears it.
  virtual void setImage(const SymbolImageRef& image) = 0;
  virtual void setMenu(const MenuRef& menu) = 0;
  /// Opens the menu as a click does. Does nothing where only the user can.
  virtual void openMenu() {}
  /// Whether a bar or tray shows the item. False also where none has said so yet.
  virtual bool isShown() { return true; }
};
using StatusItemRef = std::shared_ptr<StatusItem>;

/// A status item as wide as the bar is high.
inline constexpr double kSquareStatusItemLength = -2.0;

/// The menu bar or tray. Main thread only, as is everything that it makes. No call waits for the bar or tray.
/// Without one the item exists and is not shown.
class StatusBar {
 public:
  virtual ~StatusBar() = default;
  /// `length` is its width in points, or kSquareStatusItemLength.
  virtual StatusItemRef statusItem(double length) = 0;
  virtual MenuRef makeMenu() = 0;
  /// An item without a title and an action. May be made before the application runs.
  virtual MenuItemRef makeMenuItem() = 0;
  /// A symbol of the system by its name ("keyboard", "checkmark", ...); null when there is none of that name.
  virtual SymbolImageRef symbolImage(std::string_view name, std::string_view accessibilityDescription) = 0;
};

/// The service of the installed host.
StatusBar& statusBar();

}  // namespace lexwend::platform
