// SPDX-License-Identifier: MIT
#include "platform/linux/tray/symbol_image.h"

#include <QFile>
#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

/// The resources of a static library are found only after this macro has named them. It must be used in the
/// global namespace.
static void initializeSymbols() {
  Q_INIT_RESOURCE(symbols);
}

namespace lexwend::platform {

std::shared_ptr<LinuxSymbolImage> LinuxSymbolImage::named(std::string_view name,
                                                          std::string_view description) {
  initializeSymbols();
  const auto path = ":/symbols/" + std::string(name) + ".svg";
  if (!QFile::exists(QString::fromStdString(path))) return nullptr;
  return std::shared_ptr<LinuxSymbolImage>(new LinuxSymbolImage(path, std::string(description)));
}

LinuxSymbolImage::LinuxSymbolImage(std::string path, std::string description)
    : path_(std::move(path)), description_(std::move(description)) {}

QImage LinuxSymbolImage::rendered(int side, const QColor& color) const {
  QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  QSvgRenderer(QString::fromStdString(path_)).render(&painter);
  if (isTemplate_) {
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), color);
  }
  return image;
}

QIcon LinuxSymbolImage::icon(const QColor& color) const {
  QIcon icon;
  for (const int side : kTrayIconSides) icon.addPixmap(QPixmap::fromImage(rendered(side, color)));
  return icon;
}

QIcon applicationIcon() {
  initializeSymbols();
  return QIcon(":/application/icon.svg");
}

}  // namespace lexwend::platform
