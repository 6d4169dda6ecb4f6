// SPDX-License-Identifier: MIT
#include "platform/linux/tray/symbol_image.h"

#include <QFile>
#include <QPainter>
#include <QPixmap>
#include <QStandardPaths>
#include <QSvgRenderer>

/// The resources of a static library are found only after this macro has named them. It must be used in the
/// global namespace.
static void initializeSymbols() {
  Q_INIT_RESOURCE(symbols);
}

namespace lexwend::platform {

namespace {

struct Symbol {
  std::string_view name;
  const char* themeName;
  QRgb field;
};
constexpr QRgb kUsualField = 0xff2f6fd6;  // of the application's icon
constexpr Symbol kSymbols[] = {
    {"keyboard", "org.lexwend.Lexwend-symbolic", kUsualField},
    {"keyboard.badge.ellipsis", "org.lexwend.Lexwend-waiting-symbolic", kUsualField},
    {"checkmark", "org.lexwend.Lexwend-done-symbolic", 0xff1e8449},
    {"xmark", "org.lexwend.Lexwend-failed-symbolic", 0xffc0392b},
};

// Shares of the side.
constexpr double kFieldRadius = 0.2;
constexpr double kSymbolMargin = 0.1;

}  // namespace

std::shared_ptr<LinuxSymbolImage> LinuxSymbolImage::named(std::string_view name,
                                                          std::string_view description) {
  initializeSymbols();
  for (const Symbol& symbol : kSymbols) {
    if (symbol.name != name) continue;
    return std::shared_ptr<LinuxSymbolImage>(new LinuxSymbolImage(":/symbols/" + std::string(name) + ".svg",
                                                                  symbol.themeName, QColor(symbol.field),
                                                                  std::string(description)));
  }
  return nullptr;
}

LinuxSymbolImage::LinuxSymbolImage(std::string path, std::string themeName, QColor field,
                                   std::string description)
    : path_(std::move(path)),
      themeName_(std::move(themeName)),
      field_(field),
      description_(std::move(description)) {}

QImage LinuxSymbolImage::rendered(int side) const {
  QImage symbol(side, side, QImage::Format_ARGB32_Premultiplied);
  symbol.fill(Qt::transparent);
  QPainter painter(&symbol);
  const double margin = isTemplate_ ? side * kSymbolMargin : 0;
  QSvgRenderer(QString::fromStdString(path_))
      .render(&painter, QRectF(symbol.rect()).adjusted(margin, margin, -margin, -margin));
  if (!isTemplate_) return symbol;
  painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
  painter.fillRect(symbol.rect(), Qt::white);
  painter.setCompositionMode(QPainter::CompositionMode_DestinationOver);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(field_);
  painter.drawRoundedRect(symbol.rect(), side * kFieldRadius, side * kFieldRadius);
  return symbol;
}

QIcon LinuxSymbolImage::icon() const {
  QIcon icon;
  for (const int side : kTrayIconSides) icon.addPixmap(QPixmap::fromImage(rendered(side)));
  return icon;
}

std::string folderOfInstalledIcon(const std::string& name) {
  for (const QString& data : QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation)) {
    const QString folder = data + "/icons";
    if (QFile::exists(folder + "/hicolor/symbolic/apps/" + QString::fromStdString(name) + ".svg")) {
      return folder.toStdString();
    }
  }
  return "";
}

QIcon applicationIcon() {
  initializeSymbols();
  return QIcon(":/application/icon.svg");
}

}  // namespace lexwend::platform
