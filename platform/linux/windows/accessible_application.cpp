// SPDX-License-Identifier: MIT
#include "platform/linux/windows/accessible_application.h"

#include <QAccessible>
#include <QAccessibleObject>
#include <QApplication>
#include <QList>
#include <QMenu>

namespace lexwend::platform {
namespace {

class AccessibleApplication : public QAccessibleApplication {
 public:
  int childCount() const override {
    return QAccessibleApplication::childCount() + static_cast<int>(openMenus().size());
  }
  QAccessibleInterface* child(int index) const override {
    const int windows = QAccessibleApplication::childCount();
    if (index < windows) return QAccessibleApplication::child(index);
    return openMenus().value(index - windows);
  }
  int indexOfChild(const QAccessibleInterface* child) const override {
    const auto menu = openMenus().indexOf(const_cast<QAccessibleInterface*>(child));
    if (menu < 0) return QAccessibleApplication::indexOfChild(child);
    return QAccessibleApplication::childCount() + static_cast<int>(menu);
  }

 private:
  static QList<QAccessibleInterface*> openMenus() {
    QList<QAccessibleInterface*> menus;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
      if (qobject_cast<QMenu*>(widget) == nullptr || !widget->isVisible()) continue;
      menus.append(QAccessible::queryAccessibleInterface(widget));
    }
    return menus;
  }
};

QAccessibleInterface* make(const QString& className, QObject* object) {
  const bool isApplication = object == QCoreApplication::instance() && className == "QApplication";
  return isApplication ? new AccessibleApplication : nullptr;
}

}  // namespace

void showOpenMenusInAccessibilityTree() {
  QAccessible::installFactory(&make);
}

}  // namespace lexwend::platform
