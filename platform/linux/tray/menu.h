// SPDX-License-Identifier: MIT
#pragma once

#include <QAction>
#include <QMenu>
#include <QPointer>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/status_item.h"

namespace lexwend::platform {

/// The data of a menu item, and the toolkit's action that shows it. The action exists once there is an
/// application object. Main thread only.
class LinuxMenuItem : public MenuItem {
 public:
  /// `terminate` ends the application.
  explicit LinuxMenuItem(std::function<void()> terminate) : terminate_(std::move(terminate)) {}

  void setTitle(std::string_view title) override;
  void setAction(std::function<void()> action) override;
  void setTerminatesApplication() override;
  /// One character. It is shown with Control and works with Control.
  void setKeyEquivalent(std::string_view key) override;
  void setChecked(bool checked) override;
  void setHidden(bool hidden) override;
  void setEnabled(bool enabled) override;
  /// Shown where the pointer rests, in the tooltip of the tray's icon, and below the title where a panel
  /// draws the menu.
  void setToolTip(std::string_view text) override;

  const std::string& title() const { return title_; }
  const std::string& toolTip() const { return toolTip_; }
  const std::string& keyEquivalent() const { return keyEquivalent_; }
  /// Nothing when the item never had a check mark.
  std::optional<bool> checked() const { return checked_; }
  bool isHidden() const { return hidden_; }
  bool isEnabled() const { return enabled_; }
  /// Does what the user's choice of the item does.
  void choose() const;
  /// The title of an item that only informs: one that is shown, disabled and without an action. Its tooltip
  /// follows in a line of its own.
  std::optional<std::string> information() const;
  /// Calls the observer after every change for as long as the observer exists.
  void observe(std::weak_ptr<std::function<void()>> observer) { observers_.push_back(std::move(observer)); }
  /// Adds the item's action to the menu, which owns it.
  void addTo(QMenu& menu);

 private:
  void changed();
  void show(QAction& action) const;

  std::function<void()> terminate_;
  std::string title_;
  std::function<void()> action_;
  bool terminates_ = false;
  std::string keyEquivalent_;
  std::optional<bool> checked_;
  bool hidden_ = false;
  bool enabled_ = true;
  std::string toolTip_;
  QPointer<QAction> shown_;
  std::vector<std::weak_ptr<std::function<void()>>> observers_;
};

class LinuxMenu : public Menu {
 public:
  ~LinuxMenu() override;
  /// Has no effect: what is set on an item enables it.
  void setAutoenablesItems(bool autoenables) override;
  void addItem(const MenuItemRef& item) override;
  void addSeparator() override;

  /// The right-to-left menu of the toolkit. The application object must exist.
  QMenu& shown();
  /// What the first item that only informs says.
  std::optional<std::string> information() const;
  /// Calls the observer after every change of an item and after each new entry.
  void observe(const std::weak_ptr<std::function<void()>>& observer);
  /// From top to bottom; null is a separator.
  const std::vector<std::shared_ptr<LinuxMenuItem>>& entries() const { return entries_; }

 private:
  void added(std::shared_ptr<LinuxMenuItem> entry);

  std::vector<std::shared_ptr<LinuxMenuItem>> entries_;
  std::vector<std::weak_ptr<std::function<void()>>> observers_;
  QPointer<QMenu> menu_;
};

}  // namespace lexwend::platform
