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

/// Watches the server's keymap and its names. Reports a change only when what the layouts type is different.
class LinuxInputSources::Observer {
 public:
  explicit Observer(LinuxInputSources& owner) : owner_(owner), known_(owner.signature()) {
    X11Connection& x11 = *owner_.x11_;
    const xcb_atom_t names = x11.atom("_XKB_RULES_NAMES");
    observation_ = x11.observe([this, names](const xcb_generic_event_t& event) {
      const bool namesChanged =
          eventType(event) == XCB_PROPERTY_NOTIFY &&
          reinterpret_cast<const xcb_property_notify_event_t&>(event).window == owner_.x11_->root() &&
          reinterpret_cast<const xcb_property_notify_event_t&>(event).atom == names;
      if (namesChanged || owner_.x11_->isKeymapChange(event)) checkSoon();
    });
    x11.selectKeymapEvents();
    x11.selectRootEvents(XCB_EVENT_MASK_PROPERTY_CHANGE);
  }
  ~Observer() { stopTimer(); }
  Observer(const Observer&) = delete;
  Observer& operator=(const Observer&) = delete;

  Registration add(std::function<void()> handler) { return handlers_.add(std::move(handler)); }
  /// Reports a pending change now.
  void settle() {
    if (timer_ != 0) {
      stopTimer();
      check();
    }
  }

 private:
  void checkSoon() {
    stopTimer();
    timer_ = g_timeout_add(
        kChangeDelayMilliseconds,
        [](gpointer self) {
          static_cast<Observer*>(self)->timer_ = 0;
          static_cast<Observer*>(self)->check();
          return G_SOURCE_REMOVE;
        },
        this);
  }
  void stopTimer() {
    if (timer_ != 0) g_source_remove(timer_);
    timer_ = 0;
  }
  void check() {
    std::string now = owner_.signature();
    if (now == known_) return;
    known_ = std::move(now);
    for (const auto& handler : handlers_.all()) (*handler)();
  }

  LinuxInputSources& owner_;
  std::string known_;
  Handlers<std::function<void()>> handlers_;
  guint timer_ = 0;
  X11Connection::Observation observation_;
};

LinuxInputSources::LinuxInputSources(std::shared_ptr<X11Connection> x11, SessionBus sessionBus, Play play)
    : x11_(std::move(x11)), sessionBus_(std::move(sessionBus)) {
  if (x11_ && !x11_->hasXkb()) x11_ = nullptr;
  if (x11_) {
    context_.reset(xkb_context_new(XKB_CONTEXT_NO_FLAGS), xkb_context_unref);
    std::uint16_t major = 0;
    std::uint16_t minor = 0;
    const int usable =
        xkb_x11_setup_xkb_extension(x11_->get(), XKB_X11_MIN_MAJOR_XKB_VERSION, XKB_X11_MIN_MINOR_XKB_VERSION,
                                    XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, &major, &minor, nullptr, nullptr);
    if (usable == 0 || !context_) x11_ = nullptr;
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
                                const auto source = sourceInUse();
                                return source ? std::optional(source->name) : std::nullopt;
                              },
                              .keyGiving = [this](std::uint32_t keysym) -> std::optional<KeyCode> {
                                const std::shared_ptr<xkb_keymap> keymap = serverKeymap();
                                return keymap ? platform::keyGiving(*keymap, keysym) : std::nullopt;
                              },
                              .play = std::move(play)});
  }
}

LinuxInputSources::~LinuxInputSources() = default;

std::vector<XkbLayoutName> LinuxInputSources::enabledLayouts() {
  const auto rules = x11_->property(x11_->root(), x11_->atom("_XKB_RULES_NAMES"));
  const XcbReply<xcb_xkb_get_controls_reply_t> controls(
      xcb_xkb_get_controls_reply(x11_->get(), xcb_xkb_get_controls(x11_->get(), usersKeyboard()), nullptr));
  if (!rules || !controls) {
    return {};
  }
  std::vector<XkbLayoutName> names = parseRulesNames(*rules);
  // The configuration may name more layouts than the four groups that a keymap can hold.
  names.resize(std::min<std::size_t>(names.size(), controls->numGroups));
  return names;
}

std::optional<std::vector<InputSourceRef>> LinuxInputSources::createInputSourceList(
    const InputSourceFilter& filter, bool /*includeAllInstalled*/) {
  if (!x11_) return std::nullopt;
  std::vector<InputSourceRef> sources;
  if (filter.isEnabled == false) {
    return sources;  // every group of the keymap is enabled
  }
  const std::vector<XkbLayoutName> names = enabledLayouts();
  for (std::size_t group = 0; group < names.size(); ++group) {
    sources.push_back(std::make_shared<XkbInputSource>(names[group], static_cast<std::uint32_t>(group)));
  }
  return sources;
}

InputSourceValue LinuxInputSources::property(const InputSourceRef& source, InputSourceProperty key) {
  const auto* xkbSource = dynamic_cast<const XkbInputSource*>(source.get());
  if (xkbSource == nullptr) {
    return std::monostate{};
  }
  switch (key) {
    case InputSourceProperty::id:
      return xkbSource->name.id();
    case InputSourceProperty::languages:
      return languagesOf(xkbSource->name);
    case InputSourceProperty::unicodeKeyLayoutData: {
      std::shared_ptr<xkb_keymap> keymap = x11_ ? serverKeymap() : nullptr;
      if (!keymap || xkbSource->group >= xkb_keymap_num_layouts(keymap.get())) {
        return std::monostate{};
      }
      return keyLayoutData(std::move(keymap), xkbSource->group);
    }
  }
  return std::monostate{};
}

InputSourceRef LinuxInputSources::copyCurrentKeyboardLayoutInputSource() {
  if (!x11_) return nullptr;
  if (observer_) observer_->settle();
  return sourceInUse();
}

void LinuxInputSources::select(const InputSourceRef& source) {
  const auto* xkbSource = dynamic_cast<const XkbInputSource*>(source.get());
  if (!x11_ || xkbSource == nullptr) return;
  // The layouts may have been reordered since the source was listed, so its name counts, not its old group.
  const std::vector<XkbLayoutName> names = enabledLayouts();
  const auto group = placeOf(*xkbSource, names);
  if (!group) return;
  if (shortcut_ && sessionBus_ && desktopKeepsItsLayout(sessionBus_()) && shortcut_->select(names[*group])) {
    return;
  }
  // Waits until the server has selected it, so that the next key that the user types is of that layout.
  const XcbReply<xcb_generic_error_t> error(xcb_request_check(
      x11_->get(), xcb_xkb_latch_lock_state_checked(x11_->get(), XCB_XKB_ID_USE_CORE_KBD, 0, 0, 1,
                                                    static_cast<std::uint8_t>(*group), 0, 0, 0)));
  if (error != nullptr) return;
  if (sessionBus_) {
    const auto sameLayout = [&](const XkbLayoutName& name) { return name.layout == names[*group].layout; };
    const auto end = names.begin() + static_cast<std::ptrdiff_t>(*group);
    tellDesktopOfLayout(sessionBus_(), names[*group].layout,
                        static_cast<std::size_t>(std::count_if(names.begin(), end, sameLayout)));
  }
}

std::uint32_t LinuxInputSources::keyboardType() {
  return 0;
}

std::optional<std::u16string> LinuxInputSources::translate(const KeyLayoutData& data,
                                                           const KeyTranslation& translation,
                                                           std::uint32_t& /*deadKeyState*/) {
  return translateByKeymap(data, translation);
}

Registration LinuxInputSources::observeEnabledLayoutsChanged(std::function<void()> handler) {
  if (!x11_) return {};
  if (!observer_) observer_ = std::make_unique<Observer>(*this);
  return observer_->add(std::move(handler));
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
  keymap_.reset(
      xkb_x11_keymap_new_from_device(context_.get(), x11_->get(), device, XKB_KEYMAP_COMPILE_NO_FLAGS),
      xkb_keymap_unref);
  keymapsKeyboard_ = device;
  keymapsRules_ = std::move(rules);
  return keymap_;
}

std::shared_ptr<const XkbInputSource> LinuxInputSources::sourceInUse() {
  const XcbReply<xcb_xkb_get_state_reply_t> state(
      xcb_xkb_get_state_reply(x11_->get(), xcb_xkb_get_state(x11_->get(), XCB_XKB_ID_USE_CORE_KBD), nullptr));
  const std::vector<XkbLayoutName> names = enabledLayouts();
  if (!state || state->group >= names.size()) return nullptr;
  return std::make_shared<XkbInputSource>(names[state->group], state->group);
}

/// The names of the enabled layouts and what they type, as bytes to compare.
std::string LinuxInputSources::signature() {
  std::string signature;
  const std::vector<XkbLayoutName> names = enabledLayouts();
  for (const XkbLayoutName& name : names) signature += name.id() + '\n';
  const std::shared_ptr<xkb_keymap> keymap = serverKeymap();
  return keymap ? signature + typedIn(*keymap, names.size()) : signature;
}

}  // namespace lexwend::platform
