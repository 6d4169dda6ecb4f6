// SPDX-License-Identifier: MIT
#include "platform/linux/windows/key_monitor.h"

#include <QApplication>
#include <QEvent>
#include <QKeyEvent>
#include <QObject>
#include <QPointer>
#include <utility>

#include "platform/linux/keymap/mac_key_codes.h"

namespace lexwend::platform {
namespace {

/// The lock bit of an X11 modifier state.
constexpr quint32 kXLockMask = 2;

/// Modifier keys by their place. The symbol of a modifier key may be a switch of the layout (Alt, then Shift)
/// or one that the toolkit has no name for.
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
    // An open menu or alert gets all keys.
    if (QApplication::activePopupWidget() != nullptr || QApplication::activeModalWidget() != nullptr) {
      return false;
    }
    if (event->type() == QEvent::ShortcutOverride) {
      event->accept();  // the press is delivered, not used as a shortcut
      return true;
    }
    // The press is delivered to the window and then, if it is passed on, to the widget. It must be handled
    // once.
    if (!receiver->isWindowType()) return false;
    const auto& press = *static_cast<QKeyEvent*>(event);
    const auto keyDown = keyDownEventOf(press);
    if (!keyDown) return !isModifierKey(press);  // a key without a code must not press a button
    const auto handler = handler_;               // the handler may remove the monitor
    ++callsRunning_;
    const KeyDisposition answer = handler(*keyDown);
    --callsRunning_;
    return answer == KeyDisposition::consumed;
  }
  /// Now, or when the handler has returned.
  void destroy() {
    if (callsRunning_ > 0) {
      deleteLater();
    } else {
      delete this;
    }
  }

 private:
  std::function<KeyDisposition(const KeyDownEvent&)> handler_;
  int callsRunning_ = 0;
};

}  // namespace

std::optional<KeyDownEvent> keyDownEventOf(const QKeyEvent& event) {
  if (isModifierKey(event)) return std::nullopt;
  const auto keyCode = macFromXKeyCode(event.nativeScanCode());
  if (!keyCode) return std::nullopt;
  return KeyDownEvent{*keyCode, flagsOf(event)};
}

Registration LinuxKeyMonitor::addLocalKeyDownMonitor(
    std::function<KeyDisposition(const KeyDownEvent&)> handler) {
  QPointer<Filter> filter = new Filter(std::move(handler));
  QCoreApplication::instance()->installEventFilter(filter);
  return Registration([filter] {
    if (!filter) return;
    if (auto* application = QCoreApplication::instance()) application->removeEventFilter(filter);
    filter->destroy();
  });
}

}  // namespace lexwend::platform
