// SPDX-License-Identifier: MIT
#include "platform/linux/windows/recorder_window.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDialog>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QLabel>
#include <QPainter>
#include <QPalette>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QStringList>
#include <QTextLayout>
#include <QTimer>
#include <QWidget>
#include <QWindow>
#include <memory>
#include <utility>

#include <qpa/qplatformnativeinterface.h>

#include "platform/linux/tray/isolated_combination.h"
#include "platform/linux/tray/toolkit.h"
#include "platform/linux/wayland/shortcuts_inhibitor.h"

namespace lexwend::platform {
namespace {

/// The macOS colors of these names as shares of the label color.
constexpr double kSecondaryShare = 0.62;
constexpr double kQuaternaryShare = 0.12;
constexpr int kSmallestFont = 7;  // smaller text is not legible

QString qtText(std::string_view utf8) {
  return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

QColor blended(const QColor& front, const QColor& back, double share) {
  const auto mix = [share](float a, float b) { return static_cast<float>(a * share + b * (1 - share)); };
  return QColor::fromRgbF(mix(front.redF(), back.redF()), mix(front.greenF(), back.greenF()),
                          mix(front.blueF(), back.blueF()));
}

QColor colorOf(ColorRole role, const QPalette& palette) {
  const QColor label = palette.color(QPalette::WindowText);
  const QColor window = palette.color(QPalette::Window);
  constexpr int kMiddle = 128;
  switch (role) {
    case ColorRole::label:
      return label;
    case ColorRole::secondaryLabel:
      return blended(label, window, kSecondaryShare);
    case ColorRole::quaternaryLabel:
      return blended(label, window, kQuaternaryShare);
    case ColorRole::systemRed:
      return window.lightness() < kMiddle ? QColor(0xff, 0x6b, 0x61) : QColor(0xc4, 0x14, 0x0a);
  }
  return label;
}

QFont::Weight weightOf(FontWeight weight) {
  switch (weight) {
    case FontWeight::regular:
      return QFont::Normal;
    case FontWeight::medium:
      return QFont::Medium;
    case FontWeight::semibold:
      return QFont::DemiBold;
  }
  return QFont::Normal;
}

/// Converts from the bottom-left corner to the top-left corner.
QRect geometryOf(const Frame& frame, const Frame& content) {
  return QRectF(frame.x, content.height - frame.y - frame.height, frame.width, frame.height).toRect();
}

/// The text with a line feed wherever it wraps at that width. When the toolkit wraps right-to-left text, it
/// keeps the space at the visible edge of the line, and the line moves inwards.
QString wrapped(const QString& text, const QFont& font, int width) {
  QTextOption option;
  option.setWrapMode(QTextOption::WordWrap);
  QTextLayout layout(text, font);
  layout.setTextOption(option);
  QStringList lines;
  layout.beginLayout();
  for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
    line.setLineWidth(width);
    lines.append(text.mid(line.textStart(), line.textLength()).trimmed());
  }
  layout.endLayout();
  return lines.join('\n');
}

class Label : public QLabel {
 public:
  Label(const LabelLook& look, const Frame& content, QWidget* parent)
      : QLabel(parent), look_(look), role_(look.color) {
    setGeometry(geometryOf(look.frame, content));
    setTextFormat(Qt::PlainText);
    show(qtText(look.text), look.color);
  }

  /// A combination in the text is drawn from left to right. A screen reader gets the text unchanged.
  void show(const QString& text, ColorRole role, const QString& combination = {}) {
    role_ = role;
    setLayoutDirection(text.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
    setAlignment(alignment());
    fit(withIsolated(text, combination));
    setAccessibleName(text);
    applyColor();
  }

 protected:
  void paintEvent(QPaintEvent* event) override {
    if (look_.background) {
      QPainter painter(this);
      painter.setRenderHint(QPainter::Antialiasing);
      painter.setPen(Qt::NoPen);
      painter.setBrush(colorOf(*look_.background, window()->palette()));
      painter.drawRoundedRect(rect(), look_.cornerRadius, look_.cornerRadius);
    }
    QLabel::paintEvent(event);
  }
  void changeEvent(QEvent* event) override {
    QLabel::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && !coloring_) applyColor();
  }

 private:
  /// Right is the right-hand side, whatever the direction of the text.
  Qt::Alignment alignment() const {
    const auto vertical = look_.wraps ? Qt::AlignTop : Qt::AlignVCenter;
    switch (look_.alignment) {
      case TextAlignment::natural:
        return vertical | Qt::AlignLeading;
      case TextAlignment::right:
        return vertical | Qt::AlignRight | Qt::AlignAbsolute;
      case TextAlignment::center:
        return vertical | Qt::AlignHCenter;
    }
    return vertical;
  }

  /// Sets the text in the size of the look, or in the largest smaller size in which all of it fits.
  void fit(const QString& shown) {
    QFont font = QApplication::font();
    font.setWeight(weightOf(look_.fontWeight));
    for (int size = qRound(look_.fontSize);; --size) {
      font.setPixelSize(size);
      const QString lines = look_.wraps ? wrapped(shown, font, width()) : shown;
      const QSize taken = QFontMetrics(font).size(0, lines);
      if (size > kSmallestFont && (taken.width() > width() || taken.height() > height())) continue;
      setFont(font);
      setText(lines);
      return;
    }
  }

  void applyColor() {
    coloring_ = true;  // the desktop did not change this palette
    QPalette own = palette();
    own.setColor(QPalette::WindowText, colorOf(role_, window()->palette()));
    setPalette(own);
    coloring_ = false;
  }

  LabelLook look_;
  ColorRole role_;
  bool coloring_ = false;
};

/// Null where there is no compositor. The window must have been shown. Qt 6.4 has no public way to a surface.
std::unique_ptr<ShortcutsInhibitor> inhibitorOf(QWindow& window) {
  if (!toolkitIsOfWayland()) return nullptr;
  QPlatformNativeInterface* toolkit = QGuiApplication::platformNativeInterface();
  auto* display = static_cast<wl_display*>(toolkit->nativeResourceForIntegration("wl_display"));
  auto* seat = static_cast<wl_seat*>(toolkit->nativeResourceForIntegration("wl_seat"));
  auto* surface = static_cast<wl_surface*>(toolkit->nativeResourceForWindow("surface", &window));
  if (display == nullptr || seat == nullptr || surface == nullptr) return nullptr;
  return std::make_unique<ShortcutsInhibitor>(display, seat, surface);
}

/// The next try to take the keyboard, which the menu or the desktop's own shortcut may still hold.
constexpr int kGrabAgainMilliseconds = 20;

/// The toolkit's window. It outlives the service's window while a button or a close is handled.
///
/// While it is active it holds the keyboard, so that a combination of the desktop comes here and not to the
/// desktop. On an X server it grabs the keyboard, a Wayland compositor is asked for the combinations.
class Panel : public QDialog {
 public:
  Panel(const RecorderWindowLook& look, RecorderWindowEvents events)
      : events_(std::move(events)),
        prompt_(look.prompt, look.contentRect, this),
        combination_(look.combination, look.contentRect, this),
        message_(look.message, look.contentRect, this),
        save_(qtText(look.save.title), this),
        cancel_(qtText(look.cancel.title), this) {
    setWindowTitle(qtText(look.title));
    setWindowFlags(flagsOf(look));
    setLayoutDirection(Qt::RightToLeft);
    const QSize size(qRound(look.contentRect.width), qRound(look.contentRect.height));
    if (look.resizable) {
      resize(size);
    } else {
      setFixedSize(size);
    }
    centered_ = look.centered;
    combination_.setFocusPolicy(Qt::StrongFocus);
    combination_.setFocus();
    grabAgain_.setSingleShot(true);
    grabAgain_.setInterval(kGrabAgainMilliseconds);
    QObject::connect(&grabAgain_, &QTimer::timeout, this, [this] { holdKeyboard(); });
    placeButton(save_, look.save, look.contentRect);
    placeButton(cancel_, look.cancel, look.contentRect);
    QObject::connect(&save_, &QPushButton::clicked, this, [this] { call(events_.save); });
    QObject::connect(&cancel_, &QPushButton::clicked, this, [this] { call(events_.cancel); });
  }

  Label& combination() { return combination_; }
  Label& message() { return message_; }
  QPushButton& saveButton() { return save_; }

  void showAndMakeKey() {
    closed_ = false;
    if (centered_ && !isVisible()) center();
    show();
    raise();
    activateWindow();
  }
  void setVisible(bool visible) override {
    if (!visible) inhibitor_.reset();  // its surface goes now
    QDialog::setVisible(visible);
    if (visible && !inhibitor_) inhibitor_ = inhibitorOf(*windowHandle());
  }
  /// The owner no longer exists, so nothing is reported.
  void forget() {
    events_ = {};
    closed_ = true;
    hide();
    deleteLater();
  }

 protected:
  void changeEvent(QEvent* event) override {
    QDialog::changeEvent(event);
    if (event->type() == QEvent::ActivationChange) holdKeyboard();
  }
  void hideEvent(QHideEvent* event) override {
    QDialog::hideEvent(event);
    holdKeyboard();
  }
  /// The monitor of keys gets Escape first. What the window manager sends closes the window.
  void reject() override { close(); }
  void closeEvent(QCloseEvent* event) override {
    event->accept();
    if (std::exchange(closed_, true)) return;
    call(events_.willClose);
  }

 private:
  /// Takes the keyboard while the window is active, and gives it back otherwise.
  void holdKeyboard() {
    QWindow* window = windowHandle();
    if (window == nullptr || toolkitIsOfWayland()) return;
    const bool wanted = isVisible() && isActiveWindow();
    if (wanted == holdsKeyboard_) return;
    const bool done = window->setKeyboardGrabEnabled(wanted);
    holdsKeyboard_ = wanted && done;
    if (wanted && !done) grabAgain_.start();
  }
  static Qt::WindowFlags flagsOf(const RecorderWindowLook& look) {
    Qt::WindowFlags flags = Qt::Dialog | Qt::CustomizeWindowHint;
    if (look.titled) flags |= Qt::WindowTitleHint | Qt::WindowSystemMenuHint;
    if (look.closable) flags |= Qt::WindowCloseButtonHint;
    if (look.miniaturizable) flags |= Qt::WindowMinimizeButtonHint;
    if (look.level > 0) flags |= Qt::WindowStaysOnTopHint;
    return flags;
  }
  static void placeButton(QPushButton& button, const ButtonLook& look, const Frame& content) {
    button.setGeometry(geometryOf(look.frame, content));
    button.setEnabled(look.enabled);
    button.setAccessibleName(button.text());
  }
  /// The function may destroy this window.
  static void call(const std::function<void()>& function) {
    const auto copy = function;
    if (copy) copy();
  }
  void center() {
    if (const QScreen* screen = QGuiApplication::primaryScreen()) {
      move(screen->availableGeometry().center() - rect().center());
    }
  }

  RecorderWindowEvents events_;
  Label prompt_;
  Label combination_;
  Label message_;
  QPushButton save_;
  QPushButton cancel_;
  std::unique_ptr<ShortcutsInhibitor> inhibitor_;
  QTimer grabAgain_;
  bool holdsKeyboard_ = false;
  bool centered_ = false;
  bool closed_ = false;
};

class LinuxRecorderWindow : public RecorderWindow {
 public:
  LinuxRecorderWindow(const RecorderWindowLook& look, RecorderWindowEvents events)
      : look_(look), panel_(new Panel(look, std::move(events))) {}
  ~LinuxRecorderWindow() override {
    if (panel_ && QCoreApplication::instance() != nullptr) panel_->forget();
  }
  LinuxRecorderWindow(const LinuxRecorderWindow&) = delete;
  LinuxRecorderWindow& operator=(const LinuxRecorderWindow&) = delete;

  void setCombination(std::string_view utf8) override {
    combination_ = qtText(utf8);
    panel_->combination().show(combination_, look_.combination.color, combination_);
  }
  void setMessage(std::string_view utf8, ColorRole color) override {
    panel_->message().show(qtText(utf8), color, combination_);
    // A screen reader reads changes of what has the focus.
    panel_->combination().setAccessibleDescription(qtText(utf8));
  }
  void setSaveEnabled(bool enabled) override { panel_->saveButton().setEnabled(enabled); }
  void showAndMakeKey() override { panel_->showAndMakeKey(); }
  void close() override {
    const QPointer<Panel> panel = panel_;
    // The toolkit's close() reports nothing for a window that was never shown.
    QCloseEvent event;
    QCoreApplication::sendEvent(panel, &event);
    if (panel) panel->hide();
  }

 private:
  RecorderWindowLook look_;
  QString combination_;
  QPointer<Panel> panel_;
};

}  // namespace

std::unique_ptr<RecorderWindow> LinuxRecorderWindows::create(const RecorderWindowLook& look,
                                                             RecorderWindowEvents events) {
  return std::make_unique<LinuxRecorderWindow>(look, std::move(events));
}

}  // namespace lexwend::platform
