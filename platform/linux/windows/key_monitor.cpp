// SPDX-License-Identifier: MIT
#include "platform/linux/windows/key_monitor.h"

#include <QApplication>
#include <QEvent>
#include <QKeyEvent>
#include <QObject>
#include <QPointer>
#include <utility>

#include "platform/linux/keyboard/mac_key_codes.h"

namespace lexwend::platform {
namespace {

/// The lock bit of an X11 modifier state.
constexpr quint32 kXLockMask = 2;

/// Modifier keys by their place: the symbol of one may be a switch of the layout (Alt, then Shift) or of
/// something else that the toolkit has no name for.
constexpr KeyCode kFirstModifierKeyCode{54};
constexpr KeyCode kLastModifierKeyCode{62};

bool isModifierKey(const QKeyEvent& event) {
  const auto place = macFromXKeyCode(event.nativeScanCode());
  if (place && *place >= kFirstModifierKeyCode && *place <= kLastModifierKeyCode) return true;
  switch (event.key()) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_Meta:
    case Qt::Key_Super_L:
    case Qt::Key_Super_R:
    case Qt::Key_Hyper_L:
    case Qt::Key_Hyper_R:
    case Qt::Key_CapsLock:
    case Qt::Key_NumLock:
    case Qt::Key_ScrollLock:
    case Qt::Key_Mode_switch:
      return true;
    default:
      return false;
  }
}

EventFlags flagsOf(const QKeyEvent& event) {
  constexpr std::pair<Qt::KeyboardModifier, EventFlags> kFlags[] = {{Qt::ShiftModifier, kEventFlagShift},
                                                                    {Qt::ControlModifier, kEventFlagCommand},
                                                                    {Qt::AltModifier, kEventFlagOption},
                                                                    {Qt::MetaModifier, kEventFlagControl}};
  EventFlags flags = kNoEventFlags;
  for (const auto& [modifier, flag] : kFlags) {
    if (event.modifiers().testFlag(modifier)) flags |= flag;
  }
  if ((event.nativeModifiers() & kXLockMask) != 0) flags |= kEventFlagCapsLock;
  if (event.key() >= Qt::Key_F1 && event.key() <= Qt::Key_F35) flags |= kEventFlagSecondaryFn;
  return flags;
}

class Filter : public QObject {
 public:
  explicit Filter(std::function<KeyDisposition(const KeyDownEvent&)> handler)
      : handler_(std::move(handler)) {}

  bool eventFilter(QObject* receiver, QEvent* event) override {
    if (event->type() != QEvent::ShortcutOverride && event->type() != QEvent::KeyPress) return false;
    // An open menu and an alert have the keyboard for themselves.
    if (QApplication::activePopupWidget() != nullptr || QApplication::activeModalWidget() != nullptr) {
      return false;
    }
    if (event->type() == QEvent::ShortcutOverride) {
      event->accept();  // no shortcut takes the press away before it is delivered
      return true;
    }
    // The press comes to the window first and then, if it is passed on, to the widget: once is enough.
    if (!receiver->isWindowType()) return false;
    const auto& press = *static_cast<QKeyEvent*>(event);
    const auto keyDown = keyDownEventOf(press);
    if (!keyDown) return !isModifierKey(press);  // what cannot be told must not press a button either
    const auto handler = handler_;               // the handler may remove the monitor
    return handler(*keyDown) == KeyDisposition::consumed;
  }

 private:
  std::function<KeyDisposition(const KeyDownEvent&)> handler_;
};

class Token : public KeyMonitorToken {
 public:
  explicit Token(std::function<KeyDisposition(const KeyDownEvent&)> handler)
      : filter_(new Filter(std::move(handler))) {
    QCoreApplication::instance()->installEventFilter(filter_);
  }
  ~Token() override {
    if (!filter_) return;
    if (auto* application = QCoreApplication::instance()) application->removeEventFilter(filter_);
    filter_->deleteLater();  // it may be the one that is running
  }
  Token(const Token&) = delete;
  Token& operator=(const Token&) = delete;

 private:
  QPointer<Filter> filter_;
};

}  // namespace

std::optional<KeyDownEvent> keyDownEventOf(const QKeyEvent& event) {
  if (isModifierKey(event)) return std::nullopt;
  const auto keyCode = macFromXKeyCode(event.nativeScanCode());
  if (!keyCode) return std::nullopt;
  return KeyDownEvent{*keyCode, flagsOf(event)};
}

KeyMonitorTokenRef LinuxKeyMonitor::addLocalKeyDownMonitor(
    std::function<KeyDisposition(const KeyDownEvent&)> handler) {
  return std::make_unique<Token>(std::move(handler));
}

}  // namespace lexwend::platform
