// SPDX-License-Identifier: MIT
#include "platform/fake/fake_status_bar.h"

#include <array>

namespace lexwend::platform {

void FakeMenu::addItem(const MenuItemRef& item) {
  items.push_back(std::dynamic_pointer_cast<FakeMenuItem>(item));
}

void FakeMenu::addSeparator() {
  items.push_back(std::make_shared<FakeMenuItem>());
  items.back()->separator = true;
}

bool FakeMenu::canChoose(const FakeMenuItem& item) const {
  const bool acts = item.action || item.terminatesApplication;
  const bool enabled = autoenablesItems ? acts : item.enabled;
  return !item.separator && !item.hidden && enabled;
}

void FakeStatusItem::setImage(const SymbolImageRef& newImage) {
  image = std::dynamic_pointer_cast<FakeSymbolImage>(newImage);
  icons.push_back(image ? image->name : std::string());
  system->called("statusItem.setImage " + icons.back());
}

void FakeStatusItem::setMenu(const MenuRef& newMenu) {
  menu = std::dynamic_pointer_cast<FakeMenu>(newMenu);
  system->called("statusItem.setMenu");
}

bool FakeStatusItem::isShown() {
  return bar->showsItems;
}

StatusItemRef FakeStatusBar::statusItem(double length) {
  system_.called("statusBar.statusItem");
  auto item = std::make_shared<FakeStatusItem>();
  item->system = &system_;
  item->length = length;
  item->bar = this;
  item_ = item;
  return item;
}

MenuRef FakeStatusBar::makeMenu() {
  return std::make_shared<FakeMenu>();
}

MenuItemRef FakeStatusBar::makeMenuItem() {
  return std::make_shared<FakeMenuItem>();
}

SymbolImageRef FakeStatusBar::symbolImage(std::string_view name, std::string_view accessibilityDescription) {
  constexpr std::array<std::string_view, 4> kSymbols = {"keyboard", "keyboard.badge.ellipsis", "checkmark",
                                                        "xmark"};
  if (system_.failure(FakeOperation::symbolImage)) return nullptr;
  for (const auto symbol : kSymbols) {
    if (symbol != name) continue;
    auto image = std::make_shared<FakeSymbolImage>();
    image->name = name;
    image->accessibilityDescription = accessibilityDescription;
    return image;
  }
  return nullptr;
}

std::shared_ptr<FakeMenu> FakeStatusBar::menu() const {
  const auto shown = item();
  return shown ? shown->menu : nullptr;
}

std::string FakeStatusBar::icon() const {
  const auto shown = item();
  return shown && shown->image ? shown->image->name : std::string();
}

std::shared_ptr<FakeMenuItem> FakeStatusBar::menuItem(std::string_view title) const {
  const auto shown = menu();
  if (!shown) return nullptr;
  for (const auto& item : shown->items) {
    if (!item->separator && item->title == title) return item;
  }
  return nullptr;
}

bool FakeStatusBar::choose(std::string_view title) {
  const auto item = menuItem(title);
  if (!item) {
    system_.complain("the menu has no item \"" + std::string(title) + "\"");
    return false;
  }
  return choose(item);
}

bool FakeStatusBar::choose(const std::shared_ptr<FakeMenuItem>& item) {
  const auto shown = menu();
  if (!shown || !item || !shown->canChoose(*item)) {
    system_.complain("the menu item \"" + (item ? item->title : std::string()) +
                     "\" cannot be chosen: it is " +
                     (!item             ? "not there"
                      : item->hidden    ? "hidden"
                      : item->separator ? "a separator"
                                        : "disabled"));
    return false;
  }
  if (item->terminatesApplication) {
    terminate_();
  } else if (const auto action = item->action) {
    action();
  }
  return true;
}

}  // namespace lexwend::platform
