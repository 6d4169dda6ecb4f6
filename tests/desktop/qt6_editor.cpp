// SPDX-License-Identifier: MIT
// A small Qt 6 editor for the desktop tests: `qt6_editor FILE` shows a text, `qt6_editor --password TEXT` a
// masked field, `qt6_editor --line TEXT [LENGTH]` a field of one line and at most that length, whose window
// is titled "edited" when its user has edited it. `qt6_editor --picture WIDTH HEIGHT` puts a picture on the
// clipboard, says "ready" and offers it until it is ended.
#include <QApplication>
#include <QClipboard>
#include <QFile>
#include <QImage>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <cstdio>

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  const QStringList arguments = application.arguments();
  if (arguments.size() >= 3 && (arguments[1] == "--password" || arguments[1] == "--line")) {
    auto* field = new QLineEdit(arguments[2]);
    if (arguments[1] == "--password") field->setEchoMode(QLineEdit::Password);
    if (arguments.size() > 3) field->setMaxLength(arguments[3].toInt());
    QObject::connect(field, &QLineEdit::textEdited, field, [field] { field->setWindowTitle("edited"); });
    field->setWindowTitle("line");
    field->resize(400, 40);
    field->show();
    field->setFocus();
    return application.exec();
  }
  if (arguments.size() == 4 && arguments[1] == "--picture") {
    QImage picture(arguments[2].toInt(), arguments[3].toInt(), QImage::Format_RGB32);
    for (int y = 0; y < picture.height(); ++y) {
      for (int x = 0; x < picture.width(); ++x) picture.setPixel(x, y, qRgb(x % 251, y % 251, (x + y) % 241));
    }
    QApplication::clipboard()->setImage(picture);
    std::puts("ready");
    std::fflush(stdout);
    return application.exec();
  }
  if (arguments.size() != 2) {
    qCritical("usage: qt6_editor FILE | --password TEXT | --line TEXT [LENGTH] | --picture WIDTH HEIGHT");
    return 2;
  }
  QFile file(arguments[1]);
  if (!file.open(QIODevice::ReadOnly)) {
    qCritical("qt6_editor: cannot read %s", qUtf8Printable(arguments[1]));
    return 1;
  }
  auto* editor = new QPlainTextEdit(QString::fromUtf8(file.readAll()));
  editor->setWindowTitle("qt6_editor");
  editor->resize(640, 400);
  editor->show();
  editor->setFocus();
  return application.exec();
}
