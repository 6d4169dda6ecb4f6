// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/fake/fake_system.h"
#include "platform/status_item.h"

namespace lexwend::platform {

struct FakeSymbolImage : SymbolImage {
  void setTemplate(bool value) override { isTemplate = value; }
  std::string name;
  std::string accessibilityDescription;
  bool isTemplate = false;
};

/// An entry of a menu, with everything that was set on it.
struct FakeMenuItem : MenuItem {
  void setTitle(std::string_view text) override { title = text; }
  void setAction(std::function<void()> function) override { action = std::move(function); }
  void setTerminatesApplication() override { terminatesApplication = true; }
  void setKeyEquivalent(std::string_view key) override { keyEquivalent = key; }
  void setChecked(bool value) override { checked = value; }
  void setHidden(bool value) override { hidden = value; }
  void setEnabled(bool value) override { enabled = value; }
  void setToolTip(std::string_view text) override { toolTip = text; }

  std::string title;
  std::function<void()> action;
  bool terminatesApplication = false;
  std::string keyEquivalent;
  bool checked = false;
  bool hidden = false;
  bool enabled = true;
  std::string toolTip;
  bool separator = false;
};

struct FakeMenu : Menu {
  void setAutoenablesItems(bool value) override { autoenablesItems = value; }
  void addItem(const MenuItemRef& item) override;
  void addSeparator() override;
  /// Whether the user can choose the item. A menu that enables items by itself enables those with an action.
  /// Any other menu leaves that to the item.
  bool canChoose(const FakeMenuItem& item) const;

  bool autoenablesItems = true;
  std::vector<std::shared_ptr<FakeMenuItem>> items;
};

class FakeStatusBar;

struct FakeStatusItem : StatusItem {
  void setImage(const SymbolImageRef& newImage) override;
  void setMenu(const MenuRef& newMenu) override;
  void openMenu() override { system->called("statusItem.openMenu"); }
  bool isShown() override;

  FakeSystem* system = nullptr;
  double length = 0;
  const FakeStatusBar* bar = nullptr;
  std::shared_ptr<FakeSymbolImage> image;
  std::shared_ptr<FakeMenu> menu;
  std::vector<std::string> icons;  ///< every image set so far, by name; empty for a cleared one
};

/// The menu bar in memory.
class FakeStatusBar : public StatusBar {
 public:
  FakeStatusBar(FakeSystem& system, std::function<void()> terminate)
      : system_(system), terminate_(std::move(terminate)) {}

  StatusItemRef statusItem(double length) override;
  MenuRef makeMenu() override;
  MenuItemRef makeMenuItem() override;
  SymbolImageRef symbolImage(std::string_view name, std::string_view accessibilityDescription) override;

  // Controls of a test.
  /// Whether the desktop has a bar that shows items.
  bool showsItems = true;
  /// The status item made last; null when it no longer exists.
  std::shared_ptr<FakeStatusItem> item() const { return item_.lock(); }
  /// Its menu; null when there is none.
  std::shared_ptr<FakeMenu> menu() const;
  /// The name of the symbol shown now; empty when none is.
  std::string icon() const;
  /// The menu's item of exactly that title, or null.
  std::shared_ptr<FakeMenuItem> menuItem(std::string_view title) const;
  /// The user chooses an item. An item that is hidden, disabled or absent is a complaint, and the result is
  /// false.
  bool choose(std::string_view title);
  bool choose(const std::shared_ptr<FakeMenuItem>& item);

 private:
  FakeSystem& system_;
  std::function<void()> terminate_;
  std::weak_ptr<FakeStatusItem> item_;
};

}  // namespace lexwend::platform
