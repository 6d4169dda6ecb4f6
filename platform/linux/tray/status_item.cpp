// SPDX-License-Identifier: MIT
#include "platform/linux/tray/status_item.h"

#include <QCoreApplication>
#include <QCursor>
#include <QEvent>
#include <QGuiApplication>
#include <QMenu>
#include <QScreen>
#include <QSystemTrayIcon>
#include <optional>

#include "platform/linux/display/x11_connection.h"
#include "platform/linux/session/buses.h"
#include "platform/linux/session/identity.h"
#include "platform/linux/tray/menu.h"
#include "platform/linux/tray/menu_export.h"
#include "platform/linux/tray/panel_color.h"
#include "platform/linux/tray/status_notifier.h"
#include "platform/linux/tray/symbol_image.h"

namespace lexwend::platform {
namespace {

/// A panel that has just appeared, or has a new theme, has drawn itself by this time, so its color can be
/// read.
constexpr std::chrono::milliseconds kPanelDrawn(1000);

/// Reports each change of the desktop's colors.
class ThemeWatch : public QObject {
 public:
  explicit ThemeWatch(std::function<void()> changed) : changed_(std::move(changed)) {
    QCoreApplication::instance()->installEventFilter(this);
  }
  bool eventFilter(QObject* receiver, QEvent* event) override {
    const bool isOfApplication = receiver == QCoreApplication::instance();
    if (isOfApplication && event->type() == QEvent::ApplicationPaletteChange) changed_();
    return false;
  }

 private:
  std::function<void()> changed_;
};

class TrayItem : public StatusItem, public std::enable_shared_from_this<TrayItem> {
 public:
  explicit TrayItem(LinuxStatusBar::Needs needs) : needs_(std::move(needs)) {}

  void appear() {
    watchForTrays();
    // The panel follows the same theme, but perhaps later.
    theme_.emplace([this] {
      drawIcon();
      drawIconAgain();
    });
    bus_ = observeSessionBus([this](GDBusConnection* bus) { busChanged(bus); });
  }

  void setImage(const SymbolImageRef& image) override {
    image_ = std::dynamic_pointer_cast<LinuxSymbolImage>(image);
    drawIcon();
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
    notifier_.reset();
    exported_.reset();
    if (bus == nullptr) {
      hostPresenceKnown(false);
      return;
    }
    exported_.emplace(bus);
    exported_->setMenu(menu_);
    notifier_.emplace(bus, StatusNotifier::Events{[this] { openMenu(); },
                                                  [this](bool present) { hostPresenceKnown(present); }});
    drawIcon();
    showToolTip();
  }

  void hostPresenceKnown(bool present) {
    if (present) {
      embedded_.reset();
    } else if (!embedded_) {
      embedded_ = std::make_unique<QSystemTrayIcon>();
      QObject::connect(embedded_.get(), &QSystemTrayIcon::activated, embedded_.get(),
                       [this](QSystemTrayIcon::ActivationReason) { openMenu(); });
      showToolTip();
    }
    drawIcon();
    drawIconAgain();
  }

  /// A tray announces itself with a message to the root window (System Tray Protocol Specification). The
  /// toolkit moves the icon into it, but the new tray may have another color.
  void watchForTrays() {
    const auto x11 = needs_.x11();
    if (x11 == nullptr) return;
    x11->selectRootEvents(XCB_EVENT_MASK_STRUCTURE_NOTIFY);
    trays_ = x11->observe([this, manager = x11->atom("MANAGER")](const xcb_generic_event_t& event) {
      if (eventType(event) != XCB_CLIENT_MESSAGE) return;
      if (reinterpret_cast<const xcb_client_message_event_t&>(event).type == manager) drawIconAgain();
    });
  }

  void drawIconAgain() {
    needs_.runLoop().dispatchAfter(kPanelDrawn, [weak = weak_from_this()] {
      if (const auto self = weak.lock()) self->drawIcon();
    });
  }

  void drawIcon() {
    const QColor color = panelForeground(needs_.x11().get(), embeddedPlace());
    QList<QImage> sizes;
    if (image_ != nullptr) {
      for (const int side : kTrayIconSides) sizes.append(image_->rendered(side, color));
    }
    if (notifier_) notifier_->setIcon(std::move(sizes), image_ != nullptr ? image_->description() : "");
    if (embedded_) {
      embedded_->setIcon(image_ != nullptr ? image_->icon(color) : QIcon());
      embedded_->setVisible(image_ != nullptr);
    }
  }

  /// The place of the icon in an XEmbed tray, in device pixels.
  std::optional<QRect> embeddedPlace() const {
    if (!embedded_) return std::nullopt;
    const QRect place = embedded_->geometry();
    const QScreen* screen = QGuiApplication::primaryScreen();
    if (place.isEmpty() || screen == nullptr) return std::nullopt;
    const double ratio = screen->devicePixelRatio();
    return QRectF(place.x() * ratio, place.y() * ratio, place.width() * ratio, place.height() * ratio)
        .toAlignedRect();
  }

  void showToolTip() {
    const auto text = menu_ != nullptr ? menu_->information().value_or("") : "";
    if (notifier_) notifier_->setToolTip(std::string(kDisplayName), text);
    if (embedded_) embedded_->setToolTip(QString::fromStdString(std::string(kDisplayName) + "\n" + text));
  }

  void openMenu() {
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
  X11Connection::Observation trays_;
  std::optional<ThemeWatch> theme_;
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
