// SPDX-License-Identifier: MIT
#include "platform/linux/windows/alerts.h"

#include <QAbstractButton>
#include <QFont>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <string>

#include "platform/linux/session/identity.h"

namespace lexwend::platform {
namespace {

QString text(const std::string& utf8) {
  return QString::fromStdString(utf8);
}

/// In device-independent pixels. Narrower texts would become a column of single words.
constexpr int kTextWidth = 380;

/// The message is set apart from the explanation, as in the desktop's own alerts.
void layOut(QMessageBox& box) {
  if (auto* message = box.findChild<QLabel*>("qt_msgbox_label")) {
    QFont font = message->font();
    font.setBold(true);
    message->setFont(font);
  }
  if (auto* explanation = box.findChild<QLabel*>("qt_msgbox_informativelabel")) {
    explanation->setMinimumWidth(kTextWidth);
  }
}

/// An ampersand would mark a mnemonic.
QString buttonTitle(const std::string& title) {
  return text(title).replace('&', "&&");
}

}  // namespace

int LinuxAlerts::runModal(const Alert& alert) {
  QMessageBox box;
  box.setWindowTitle(text(std::string(kDisplayName)));
  box.setWindowFlag(Qt::WindowStaysOnTopHint);
  box.setLayoutDirection(Qt::RightToLeft);
  box.setIcon(QMessageBox::Warning);
  box.setTextFormat(Qt::PlainText);
  box.setText(text(alert.messageText));
  box.setInformativeText(text(alert.informativeText));
  QList<QPushButton*> buttons;
  for (const auto& title : alert.buttons) {
    const auto role = buttons.isEmpty() ? QMessageBox::AcceptRole : QMessageBox::RejectRole;
    buttons.append(box.addButton(buttonTitle(title), role));
  }
  if (buttons.isEmpty()) return kAlertFirstButtonReturn;
  box.setDefaultButton(buttons.first());
  box.setEscapeButton(buttons.last());
  layOut(box);
  box.setModal(true);  // a window that is shown keeps its modality, so exec() would be too late
  box.show();
  box.raise();
  box.activateWindow();
  box.exec();
  const auto clicked = buttons.indexOf(qobject_cast<QPushButton*>(box.clickedButton()));
  return kAlertFirstButtonReturn + static_cast<int>(clicked >= 0 ? clicked : buttons.size() - 1);
}

}  // namespace lexwend::platform
