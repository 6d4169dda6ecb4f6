// SPDX-License-Identifier: MIT
#include "platform/linux/tray/status_item.h"

#include <QApplication>
#include <QCursor>
#include <QMenu>
#include <QSystemTrayIcon>
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <optional>
#include <string_view>

#include "platform/linux/session/buses.h"
#include "platform/linux/session/identity.h"
#include "platform/linux/tray/menu.h"
#include "platform/linux/tray/menu_export.h"
#include "platform/linux/tray/status_notifier.h"
#include "platform/linux/tray/symbol_image.h"
#include "platform/linux/tray/theme_watch.h"

namespace lexwend::platform {
namespace {

/// When a panel has drawn itself in its new theme: usually, and on a busy machine.
constexpr std::array<std::chrono::milliseconds, 2> kPanelDrawn{std::chrono::seconds(1),
                                                               std::chrono::seconds(6)};
/// A panel has taken notice of a change of the icon by this time.
constexpr std::chrono::milliseconds kIconTaken{300};

/// Whether the panel gives a symbolic icon the color of its text, as those of these desktops do. Others draw
/// it in the color of its file, which is legible on a dark panel only; a picture has a field of its own.
bool panelColorsIcons() {
  const char* desktop = std::getenv("XDG_CURRENT_DESKTOP");
  if (desktop == nullptr) return false;
  constexpr std::array<std::string_view, 3> kColoring{"XFCE", "GNOME", "KDE"};
  return std::any_of(kColoring.begin(), kColoring.end(), [&](std::string_view name) {
    return std::string_view(desktop).find(name) != std::string_view::npos;
  });
}

class TrayItem : public StatusItem, public std::enable_shared_from_this<TrayItem> {
 public:
  explicit TrayItem(LinuxStatusBar::Needs needs) : needs_(std::move(needs)) {}

  void appear() {
    theme_.emplace(needs_.x11(), [this] { themeChanged(); });
    bus_ = observeSessionBus([this](GDBusConnection* bus) { busChanged(bus); });
  }

  void setImage(const SymbolImageRef& image) override {
    image_ = std::dynamic_pointer_cast<LinuxSymbolImage>(image);
    drawIcon();
  }

  void openMenu() override {
    if (menu_ != nullptr && !menu_->shown().isVisible()) toggleMenu();
  }

  bool isShown() override {
    return image_ != nullptr && (isInPanel_ || (embedded_ && QSystemTrayIcon::isSystemTrayAvailable()));
  }

  void setMenu(const MenuRef& menu) override {
    menu_ = std::dynamic_pointer_cast<LinuxMenu>(menu);
    menuChanged_ = std::make_shared<std::function<void()>>([this] { showToolTip(); });
    if (menu_ != nullptr) menu_->observe(menuChanged_);
    if (exported_) exported_->setMenu(menu_);
    showToolTip();
  }

 private:
  void busChanged(GDBusConnection* bus) {
    theme_->follow(bus);
    notifier_.reset();
    exported_.reset();
    if (bus == nullptr) {
      hostPresenceKnown(false);
      return;
    }
    exported_.emplace(bus);
    exported_->setMenu(menu_);
    notifier_.emplace(bus, StatusNotifier::Events{[this] { toggleMenu(); },
                                                  [this](bool present) { hostPresenceKnown(present); }});
    drawIcon();
    showToolTip();
  }

  void hostPresenceKnown(bool present) {
    isInPanel_ = present;
    if (present) {
      embedded_.reset();
    } else if (!embedded_) {
      embedded_ = std::make_unique<QSystemTrayIcon>();
      QObject::connect(embedded_.get(), &QSystemTrayIcon::activated, embedded_.get(),
                       [this](QSystemTrayIcon::ActivationReason) { toggleMenu(); });
      showToolTip();
    }
    drawIcon();
  }

  void drawIcon() {
    if (notifier_) notifier_->setIcon(iconOf(image_.get()));
    if (embedded_) {
      embedded_->setIcon(image_ != nullptr ? image_->icon() : QIcon());
      embedded_->setVisible(image_ != nullptr);
    }
  }

  /// The panels of Xfce and Plasma keep the color that an icon had when its name was told.
  void themeChanged() {
    if (themeIsNew_) return;
    themeIsNew_ = true;
    for (const auto delay : kPanelDrawn) later(delay, [](TrayItem& self) { self.drawIconAnew(); });
    later(kPanelDrawn.back(), [](TrayItem& self) { self.themeIsNew_ = false; });
  }

  void drawIconAnew() {
    if (!notifier_) return;
    StatusNotifier::Icon picture = iconOf(image_.get());
    picture.name.clear();
    notifier_->setIcon(std::move(picture));
    later(kIconTaken, [](TrayItem& self) { self.drawIcon(); });
  }

  void later(std::chrono::milliseconds delay, void (*work)(TrayItem&)) {
    needs_.runLoop().dispatchAfter(delay, [weak = weak_from_this(), work] {
      if (const auto self = weak.lock()) work(*self);
    });
  }

  static StatusNotifier::Icon iconOf(const LinuxSymbolImage* image) {
    StatusNotifier::Icon icon;
    if (image == nullptr) return icon;
    if (panelColorsIcons()) icon.themePath = folderOfInstalledIcon(image->themeName());
    if (!icon.themePath.empty()) icon.name = image->themeName();
    for (const int side : kTrayIconSides) icon.sizes.append(image->rendered(side));
    icon.description = image->description();
    return icon;
  }

  void showToolTip() {
    const auto text = menu_ != nullptr ? menu_->information().value_or("") : "";
    if (notifier_) notifier_->setToolTip(std::string(kDisplayName), text);
    if (embedded_) embedded_->setToolTip(QString::fromStdString(std::string(kDisplayName) + "\n" + text));
  }

  void toggleMenu() {
    if (menu_ == nullptr) return;
    QMenu& menu = menu_->shown();
    if (menu.isVisible()) {
      menu.close();
    } else {
      menu.popup(QCursor::pos());
    }
  }

  LinuxStatusBar::Needs needs_;
  std::shared_ptr<LinuxSymbolImage> image_;
  std::shared_ptr<LinuxMenu> menu_;
  std::shared_ptr<std::function<void()>> menuChanged_;
  std::optional<ThemeWatch> theme_;
  bool themeIsNew_ = false;
  bool isInPanel_ = false;
  std::optional<MenuExport> exported_;
  std::optional<StatusNotifier> notifier_;
  std::unique_ptr<QSystemTrayIcon> embedded_;
  BusObservation bus_;
};

}  // namespace

StatusItemRef LinuxStatusBar::statusItem(double) {
  const auto item = std::make_shared<TrayItem>(needs_);
  item->appear();
  return item;
}

bool LinuxStatusBar::menuIsOpen() {
  return QApplication::activePopupWidget() != nullptr;
}

MenuRef LinuxStatusBar::makeMenu() {
  return std::make_shared<LinuxMenu>();
}

MenuItemRef LinuxStatusBar::makeMenuItem() {
  return std::make_shared<LinuxMenuItem>(needs_.terminate);
}

SymbolImageRef LinuxStatusBar::symbolImage(std::string_view name, std::string_view accessibilityDescription) {
  return LinuxSymbolImage::named(name, accessibilityDescription);
}

}  // namespace lexwend::platform
