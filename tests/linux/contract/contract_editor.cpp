// SPDX-License-Identifier: MIT
// Another application's editor: `linux_contract_editor TEXT` shows the text, all of it selected;
// `linux_contract_editor --password TEXT` a masked field. It tells on its standard output when it has the
// keyboard ("ready") and, as Base64, each text that it holds from then on ("text ...").
#include <QApplication>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QWindow>
#include <cstdio>

namespace {

void tell(const QByteArray& line) {
  std::fputs((line + '\n').constData(), stdout);
  std::fflush(stdout);
}

void show(QWidget& field) {
  field.resize(400, 200);
  field.setFocus();
  bool told = false;
  QObject::connect(qGuiApp, &QGuiApplication::focusWindowChanged, &field, [told](QWindow* window) mutable {
    if (window != nullptr && !std::exchange(told, true)) tell("ready");
  });
  field.show();
  field.activateWindow();
}

}  // namespace

int main(int argc, char** argv) {
  const QApplication application(argc, argv);
  const QStringList arguments = QApplication::arguments();
  if (arguments.size() == 3 && arguments[1] == "--password") {
    QLineEdit field(arguments[2]);
    field.setEchoMode(QLineEdit::Password);
    show(field);
    return QApplication::exec();
  }
  if (arguments.size() != 2) {
    qCritical("usage: linux_contract_editor TEXT | --password TEXT");
    return 2;
  }
  QPlainTextEdit editor(arguments[1]);
  editor.selectAll();
  const auto tellText = [&editor] { tell("text " + editor.toPlainText().toUtf8().toBase64()); };
  QObject::connect(&editor, &QPlainTextEdit::textChanged, &editor, tellText);
  tellText();
  show(editor);
  return QApplication::exec();
}
