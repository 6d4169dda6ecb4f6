// SPDX-License-Identifier: MIT
#include "platform/linux/tray/menu.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QKeySequence>
#include <QPainter>
#include <QStyleOptionMenuItem>
#include <QThread>
#include <algorithm>

#include "platform/linux/tray/isolated_combination.h"
#include "platform/linux/tray/toolkit.h"

namespace lexwend::platform {
namespace {

/// An ampersand would mark a mnemonic, and a tab would begin the column of shortcuts.
QString withoutMnemonic(const std::string& text) {
  return QString::fromStdString(text).replace('&', "&&").replace('\t', ' ');
}

/// Calls the observers that still exist and removes the others.
void tell(std::vector<std::weak_ptr<std::function<void()>>>& observers) {
  observers.erase(std::remove_if(observers.begin(), observers.end(),
                                 [](const auto& observer) { return observer.expired(); }),
                  observers.end());
  for (const auto& weak : std::vector(observers)) {
    if (const auto observer = weak.lock()) (*observer)();
  }
}

}  // namespace

void LinuxMenuItem::setTitle(std::string_view title) {
  title_ = title;
  changed();
}

void LinuxMenuItem::setAction(std::function<void()> action) {
  action_ = std::move(action);
  changed();
}

void LinuxMenuItem::setTerminatesApplication() {
  terminates_ = true;
  changed();
}

void LinuxMenuItem::setKeyEquivalent(std::string_view key) {
  keyEquivalent_ = key;
  changed();
}

void LinuxMenuItem::setChecked(bool checked) {
  checked_ = checked;
  changed();
}

void LinuxMenuItem::setHidden(bool hidden) {
  hidden_ = hidden;
  changed();
}

void LinuxMenuItem::setEnabled(bool enabled) {
  enabled_ = enabled;
  changed();
}

void LinuxMenuItem::setToolTip(std::string_view text) {
  toolTip_ = text;
  changed();
}

std::optional<std::string> LinuxMenuItem::information() const {
  if (hidden_ || enabled_ || action_ || terminates_) return std::nullopt;
  return toolTip_.empty() ? title_ : title_ + "\n" + toolTip_;
}

void LinuxMenuItem::addTo(QMenu& menu) {
  shown_ = menu.addAction(QString());
  shown_->setShortcutVisibleInContextMenu(true);
  QObject::connect(shown_, &QAction::triggered, shown_, [this] {
    if (checked_ && shown_) shown_->setChecked(*checked_);  // the setting decides, not the click
    choose();
  });
  show(*shown_);
}

void LinuxMenuItem::choose() const {
  const auto action = terminates_ ? terminate_ : action_;  // a copy, because it may destroy this item
  if (action) action();
}

void LinuxMenuItem::changed() {
  if (shown_) show(*shown_);
  tell(observers_);
}

void LinuxMenuItem::show(QAction& action) const {
  action.setText(withoutMnemonic(title_));
  action.setToolTip(QString::fromStdString(toolTip_));
  action.setCheckable(checked_.has_value());
  action.setChecked(checked_.value_or(false));
  action.setVisible(!hidden_);
  action.setEnabled(enabled_);
  action.setShortcut(keyEquivalent_.empty()
                         ? QKeySequence()
                         : QKeySequence("Ctrl+" + QString::fromStdString(keyEquivalent_).toUpper()));
}

namespace {

constexpr int kLineLightness = 400;  // of the background's, in per cent
constexpr int kSeparatorMargin = 5;  // device-independent pixels

/// A menu whose shortcuts work while it is open. The toolkit offers a menu's shortcuts to windows only, and
/// the tray's menu belongs to no window. A combination of keys at the end of a title is drawn from left to
/// right. The title itself, which a screen reader reads, is unchanged.
class TrayMenu : public QMenu {
 protected:
  void initStyleOption(QStyleOptionMenuItem* option, const QAction* action) const override {
    QMenu::initStyleOption(option, action);
    const QString title = option->text.section('\t', 0, 0);
    option->text = withIsolated(option->text, combinationIn(title));
    if (const auto line = lineColor()) option->palette.setColor(QPalette::Window, *line);
  }
  void paintEvent(QPaintEvent* event) override {
    QMenu::paintEvent(event);
    const auto line = lineColor();
    if (!line) return;
    QPainter painter(this);
    painter.setPen(*line);
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
    for (QAction* action : actions()) {
      const QRect place = actionGeometry(action).adjusted(kSeparatorMargin, 0, -kSeparatorMargin, 0);
      if (action->isSeparator() && place.isValid()) {
        painter.drawLine(place.left(), place.center().y(), place.right(), place.center().y());
      }
    }
  }
  void keyPressEvent(QKeyEvent* event) override {
    for (QAction* action : actions()) {
      const bool meant = action->isVisible() && action->isEnabled() &&
                         action->shortcut().matches(event->keyCombination()) == QKeySequence::ExactMatch;
      if (!meant) continue;
      close();
      action->trigger();
      return;
    }
    QMenu::keyPressEvent(event);
  }

 private:
  /// The color of separators, empty boxes and the edge in a dark theme, where the style draws them darker
  /// than the background: a color between the background and the text.
  std::optional<QColor> lineColor() const {
    const QColor background = palette().color(QPalette::Base);
    if (background.lightness() >= palette().color(QPalette::Text).lightness()) return std::nullopt;
    return background.lighter(kLineLightness);
  }
};

}  // namespace

LinuxMenu::~LinuxMenu() {
  if (!menu_ || QCoreApplication::instance() == nullptr) return;
  // An item of this menu may be destroying it, and the toolkit is then still using it.
  if (QThread::currentThread()->loopLevel() > 0) {
    menu_->close();
    menu_->deleteLater();
  } else {
    delete menu_.data();
  }
}

void LinuxMenu::setAutoenablesItems(bool) {}

void LinuxMenu::addItem(const MenuItemRef& item) {
  auto entry = std::dynamic_pointer_cast<LinuxMenuItem>(item);
  if (entry == nullptr) return;
  for (const auto& observer : observers_) entry->observe(observer);
  if (menu_) entry->addTo(*menu_);
  added(std::move(entry));
}

void LinuxMenu::addSeparator() {
  if (menu_) menu_->addSeparator();
  added(nullptr);
}

void LinuxMenu::added(std::shared_ptr<LinuxMenuItem> entry) {
  entries_.push_back(std::move(entry));
  tell(observers_);
}

QMenu& LinuxMenu::shown() {
  if (!menu_) {
    menu_ = new TrayMenu;
    menu_->setLayoutDirection(Qt::RightToLeft);
    menu_->setToolTipsVisible(true);
    // On Wayland a menu that belongs to no window is one itself.
    if (toolkitIsOfWayland()) menu_->setWindowFlag(Qt::FramelessWindowHint);
    for (const auto& entry : entries_) {
      if (entry != nullptr) {
        entry->addTo(*menu_);
      } else {
        menu_->addSeparator();
      }
    }
  }
  return *menu_;
}

std::optional<std::string> LinuxMenu::information() const {
  for (const auto& entry : entries_) {
    if (entry == nullptr) continue;
    if (auto information = entry->information()) return information;
  }
  return std::nullopt;
}

void LinuxMenu::observe(const std::weak_ptr<std::function<void()>>& observer) {
  observers_.push_back(observer);
  for (const auto& entry : entries_) {
    if (entry != nullptr) entry->observe(observer);
  }
}

}  // namespace lexwend::platform
