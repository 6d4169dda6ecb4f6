// SPDX-License-Identifier: MIT
#include "platform/linux/keymap/xkb_input_sources.h"

#include <utility>

#include <xkbcommon/xkbcommon.h>

namespace lexwend::platform {

std::optional<std::vector<InputSourceRef>> XkbInputSources::createInputSourceList(
    const InputSourceFilter& filter, bool /*includeAllInstalled*/) {
  const auto now = layouts();
  if (!now) return std::nullopt;
  std::vector<InputSourceRef> sources;
  if (filter.isEnabled == false) {
    return sources;
  }
  for (std::size_t place = 0; place < now->enabled.size(); ++place) {
    sources.push_back(
        std::make_shared<XkbInputSource>(now->enabled[place], static_cast<std::uint32_t>(place)));
  }
  return sources;
}

InputSourceValue XkbInputSources::property(const InputSourceRef& source, InputSourceProperty key) {
  const auto* xkbSource = dynamic_cast<const XkbInputSource*>(source.get());
  if (xkbSource == nullptr) {
    return std::monostate{};
  }
  switch (key) {
    case InputSourceProperty::id:
      return xkbSource->name.id();
    case InputSourceProperty::languages:
      return languagesOf(xkbSource->name);
    case InputSourceProperty::unicodeKeyLayoutData:
      if (KeyLayoutDataRef data = dataOf(*xkbSource)) return data;
      break;
  }
  return std::monostate{};
}

InputSourceRef XkbInputSources::copyCurrentKeyboardLayoutInputSource() {
  const auto now = layouts();
  if (!now || !now->active || *now->active >= now->enabled.size()) return nullptr;
  return std::make_shared<XkbInputSource>(now->enabled[*now->active],
                                          static_cast<std::uint32_t>(*now->active));
}

void XkbInputSources::select(const InputSourceRef& source) {
  const auto* xkbSource = dynamic_cast<const XkbInputSource*>(source.get());
  const auto now = xkbSource != nullptr ? layouts() : std::nullopt;
  if (!now) return;
  if (const auto place = placeOf(*xkbSource, now->enabled)) selectLayout(now->enabled, *place);
}

std::optional<std::u16string> XkbInputSources::translate(const KeyLayoutData& data,
                                                         const KeyTranslation& translation,
                                                         std::uint32_t& /*deadKeyState*/) {
  return translateByKeymap(data, translation);
}

Registration XkbInputSources::observeEnabledLayoutsChanged(std::function<void()> handler) {
  if (handlers_.count() == 0) known_ = signature();
  return handlers_.add(std::move(handler));
}

KeyLayoutDataRef XkbInputSources::dataOf(const XkbInputSource& source) {
  std::shared_ptr<xkb_keymap>& keymap = machineKeymaps_[source.name.id()];
  if (!keymap && context() != nullptr) {
    const xkb_rule_names names{"evdev", "pc105", source.name.layout.c_str(), source.name.variant.c_str(), ""};
    keymap.reset(xkb_keymap_new_from_names(context(), &names, XKB_KEYMAP_COMPILE_NO_FLAGS), xkb_keymap_unref);
  }
  return keymap ? keyLayoutData(keymap, 0) : nullptr;
}

std::string XkbInputSources::typedInFirst(std::size_t /*count*/) {
  return {};
}

xkb_context* XkbInputSources::context() {
  if (!context_) context_.reset(xkb_context_new(XKB_CONTEXT_NO_FLAGS), xkb_context_unref);
  return context_.get();
}

std::string XkbInputSources::signature() {
  std::string signature;
  const auto now = layouts();
  if (!now) return signature;
  for (const XkbLayoutName& name : now->enabled) signature += name.id() + '\n';
  return signature + typedInFirst(now->enabled.size());
}

void XkbInputSources::reportChange() {
  if (handlers_.count() == 0) return;
  std::string now = signature();
  if (now == known_) return;
  known_ = std::move(now);
  for (const auto& handler : handlers_.all()) (*handler)();
}

}  // namespace lexwend::platform
