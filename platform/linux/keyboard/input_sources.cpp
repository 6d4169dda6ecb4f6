// SPDX-License-Identifier: MIT
#include "platform/linux/keyboard/input_sources.h"

#include <algorithm>

#include <glib.h>
#include <xkbcommon/xkbcommon-x11.h>
#include <xkbcommon/xkbcommon.h>

#include "platform/linux/display/xcb_xkb.h"
#include "platform/linux/keyboard/desktop_layouts.h"

namespace lexwend::platform {
namespace {

// Long enough for all events of one setxkbmap, too short for a user to notice.
constexpr guint kChangeDelayMilliseconds = 50;

}  // namespace

/// Watches the server's keymap and its names.
class LinuxInputSources::Watch {
 public:
  explicit Watch(LinuxInputSources& owner) : owner_(owner) {
    X11Connection& x11 = *owner_.x11_;
    const xcb_atom_t names = x11.atom("_XKB_RULES_NAMES");
    observation_ = x11.observe([this, names](const xcb_generic_event_t& event) {
      const bool namesChanged =
          eventType(event) == XCB_PROPERTY_NOTIFY &&
          reinterpret_cast<const xcb_property_notify_event_t&>(event).window == owner_.x11_->root() &&
          reinterpret_cast<const xcb_property_notify_event_t&>(event).atom == names;
      if (namesChanged || owner_.x11_->isKeymapChange(event)) reportSoon();
    });
    x11.selectKeymapEvents();
    x11.selectRootEvents(XCB_EVENT_MASK_PROPERTY_CHANGE);
  }
  ~Watch() { stopTimer(); }
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;

  /// Reports a pending change now.
  void settle() {
    if (timer_ != 0) {
      stopTimer();
      owner_.reportChange();
    }
  }

 private:
  void reportSoon() {
    stopTimer();
    timer_ = g_timeout_add(
        kChangeDelayMilliseconds,
        [](gpointer self) {
          static_cast<Watch*>(self)->timer_ = 0;
          static_cast<Watch*>(self)->owner_.reportChange();
          return G_SOURCE_REMOVE;
        },
        this);
  }
  void stopTimer() {
    if (timer_ != 0) g_source_remove(timer_);
    timer_ = 0;
  }

  LinuxInputSources& owner_;
  guint timer_ = 0;
  X11Connection::Observation observation_;
};

LinuxInputSources::LinuxInputSources(std::shared_ptr<X11Connection> x11, SessionBus sessionBus, Play play)
    : x11_(std::move(x11)), sessionBus_(std::move(sessionBus)) {
  if (x11_ && !x11_->hasXkb()) x11_ = nullptr;
  if (x11_) {
    std::uint16_t major = 0;
    std::uint16_t minor = 0;
    const int usable =
        xkb_x11_setup_xkb_extension(x11_->get(), XKB_X11_MIN_MAJOR_XKB_VERSION, XKB_X11_MIN_MINOR_XKB_VERSION,
                                    XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, &major, &minor, nullptr, nullptr);
    if (usable == 0 || context() == nullptr) x11_ = nullptr;
  }
  if (x11_) {
    keymapChanges_ = x11_->observe([this](const xcb_generic_event_t& event) {
      if (x11_->isKeymapChange(event)) keymap_.reset();
    });
    x11_->selectKeymapEvents();
  }
  if (x11_ && play) {
    shortcut_.emplace(
        LayoutShortcut::Needs{.current = [this]() -> std::optional<XkbLayoutName> {
                                const auto now = layouts();
                                if (!now || !now->active || *now->active >= now->enabled.size()) {
                                  return std::nullopt;
                                }
                                return now->enabled[*now->active];
                              },
                              .keyGiving = [this](std::uint32_t keysym) -> std::optional<KeyCode> {
                                const std::shared_ptr<xkb_keymap> keymap = serverKeymap();
                                return keymap ? platform::keyGiving(*keymap, keysym) : std::nullopt;
                              },
                              .play = std::move(play)});
  }
}

LinuxInputSources::~LinuxInputSources() = default;

std::optional<XkbInputSources::Layouts> LinuxInputSources::layouts() {
  if (!x11_) return std::nullopt;
  xcb_connection_t* c = x11_->get();
  const auto controlsCookie = xcb_xkb_get_controls(c, usersKeyboard());
  const auto stateCookie = xcb_xkb_get_state(c, XCB_XKB_ID_USE_CORE_KBD);
  const auto rules = x11_->property(x11_->root(), x11_->atom("_XKB_RULES_NAMES"));
  const XcbReply<xcb_xkb_get_controls_reply_t> controls(
      xcb_xkb_get_controls_reply(c, controlsCookie, nullptr));
  const XcbReply<xcb_xkb_get_state_reply_t> state(xcb_xkb_get_state_reply(c, stateCookie, nullptr));
  Layouts layouts;
  if (state) layouts.active = state->group;
  if (rules && controls) {
    layouts.enabled = parseRulesNames(*rules);
    // The configuration may name more layouts than the four groups that a keymap can hold.
    layouts.enabled.resize(std::min<std::size_t>(layouts.enabled.size(), controls->numGroups));
  }
  return layouts;
}

InputSourceRef LinuxInputSources::copyCurrentKeyboardLayoutInputSource() {
  if (watch_) watch_->settle();
  return XkbInputSources::copyCurrentKeyboardLayoutInputSource();
}

void LinuxInputSources::selectLayout(const std::vector<XkbLayoutName>& enabled, std::size_t place) {
  if (shortcut_ && sessionBus_ && desktopKeepsItsLayout(sessionBus_()) && shortcut_->select(enabled[place])) {
    return;
  }
  // Waits until the server has selected it, so that the next key that the user types is of that layout.
  const XcbReply<xcb_generic_error_t> error(xcb_request_check(
      x11_->get(), xcb_xkb_latch_lock_state_checked(x11_->get(), XCB_XKB_ID_USE_CORE_KBD, 0, 0, 1,
                                                    static_cast<std::uint8_t>(place), 0, 0, 0)));
  if (error != nullptr) return;
  if (sessionBus_) {
    const auto sameLayout = [&](const XkbLayoutName& name) { return name.layout == enabled[place].layout; };
    const auto end = enabled.begin() + static_cast<std::ptrdiff_t>(place);
    tellDesktopOfLayout(sessionBus_(), enabled[place].layout,
                        static_cast<std::size_t>(std::count_if(enabled.begin(), end, sameLayout)));
  }
}

KeyLayoutDataRef LinuxInputSources::dataOf(const XkbInputSource& source) {
  std::shared_ptr<xkb_keymap> keymap = x11_ ? serverKeymap() : nullptr;
  if (!keymap || source.group >= xkb_keymap_num_layouts(keymap.get())) return nullptr;
  return keyLayoutData(std::move(keymap), source.group);
}

std::string LinuxInputSources::typedInFirst(std::size_t count) {
  const std::shared_ptr<xkb_keymap> keymap = serverKeymap();
  return keymap ? typedIn(*keymap, count) : std::string();
}

Registration LinuxInputSources::observeEnabledLayoutsChanged(std::function<void()> handler) {
  if (!x11_) return {};
  if (!watch_) watch_ = std::make_unique<Watch>(*this);
  return XkbInputSources::observeEnabledLayoutsChanged(std::move(handler));
}

std::uint16_t LinuxInputSources::usersKeyboard() {
  const KeyboardDevices devices = readKeyboardDevices(*x11_);
  if (devices.isReal(devices.lastUsed)) {
    usersKeyboard_ = devices.lastUsed;
  } else if (!devices.isReal(usersKeyboard_)) {
    usersKeyboard_ = devices.real.empty() ? devices.core : devices.real.front();
  }
  return usersKeyboard_ == KeyboardDevices::kNone ? std::uint16_t{XCB_XKB_ID_USE_CORE_KBD} : usersKeyboard_;
}

std::shared_ptr<xkb_keymap> LinuxInputSources::serverKeymap() {
  std::int32_t device = usersKeyboard();
  if (device == XCB_XKB_ID_USE_CORE_KBD) device = xkb_x11_get_core_keyboard_device_id(x11_->get());
  if (device < 0) return nullptr;
  std::optional<std::string> rules = x11_->property(x11_->root(), x11_->atom("_XKB_RULES_NAMES"));
  if (keymap_ && keymapsKeyboard_ == device && keymapsRules_ == rules) return keymap_;
  keymap_.reset(xkb_x11_keymap_new_from_device(context(), x11_->get(), device, XKB_KEYMAP_COMPILE_NO_FLAGS),
                xkb_keymap_unref);
  keymapsKeyboard_ = device;
  keymapsRules_ = std::move(rules);
  return keymap_;
}

}  // namespace lexwend::platform
