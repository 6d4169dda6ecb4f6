// SPDX-License-Identifier: MIT
#include <QApplication>
#include <QPlainTextEdit>
#include <QSocketNotifier>
#include <QTimer>

#include <unistd.h>

#include "platform/linux/diagnosis/diagnosis.h"

namespace lexwend::platform {
namespace {

constexpr int kFieldWidth = 480;
constexpr int kFieldHeight = 80;
constexpr int kFontSize = 18;
constexpr std::chrono::milliseconds kLookAgain(20);

}  // namespace

bool LinuxDiagnosis::runTrialField(std::string_view text, const std::function<void()>& ready,
                                   const std::function<void(std::string_view)>& changed) {
  if (needs_.x11() == nullptr) return false;
  // Qt joins the accessibility bus only if that was on when the program started, or if it is told to.
  qputenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1");
  static char name[] = "lexwend-doctor";
  static char option[] = "-platform";
  static char platform[] = "xcb";
  static char* arguments[] = {name, option, platform, nullptr};
  static int count = 3;
  const QApplication application(count, arguments);

  QPlainTextEdit field(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())));
  field.setWindowTitle(QStringLiteral("Lexwend"));
  field.resize(kFieldWidth, kFieldHeight);
  QFont font = field.font();
  font.setPointSize(kFontSize);
  field.setFont(font);
  field.show();
  field.activateWindow();
  field.setFocus();
  field.selectAll();
  QObject::connect(&field, &QPlainTextEdit::textChanged, &field,
                   [&] { changed(field.toPlainText().toStdString()); });

  QTimer look;
  QObject::connect(&look, &QTimer::timeout, &field, [&] {
    if (!field.hasFocus() || !field.isActiveWindow()) return;
    look.stop();
    field.selectAll();
    ready();
  });
  look.start(kLookAgain);

  const QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
  QObject::connect(&input, &QSocketNotifier::activated, &field, [] {
    char byte = 0;
    if (::read(STDIN_FILENO, &byte, 1) <= 0) QCoreApplication::exit();
  });
  QApplication::exec();
  return true;
}

}  // namespace lexwend::platform
