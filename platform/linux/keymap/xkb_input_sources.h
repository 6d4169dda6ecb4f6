// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/input_sources.h"
#include "platform/linux/keymap/xkb_layouts.h"

namespace lexwend::platform {

/// Input sources that are layouts of XKB. Their identifiers are XkbLayoutName::id(). Every layout of the user
/// is enabled. The keyboard type is always 0, because a keymap already depends on it. Of the modifiers,
/// translate() knows Shift and Caps Lock. A service that derives from this one says which layouts there are,
/// selects one, and calls reportChange() when they may be others. Main thread only.
class XkbInputSources : public InputSourceService {
 public:
  std::optional<std::vector<InputSourceRef>> createInputSourceList(const InputSourceFilter& filter,
                                                                   bool includeAllInstalled) override;
  InputSourceValue property(const InputSourceRef& source, InputSourceProperty key) override;
  InputSourceRef copyCurrentKeyboardLayoutInputSource() override;
  /// The layouts may have been reordered since the source was listed, so its name counts, not its old place.
  void select(const InputSourceRef& source) override;
  std::uint32_t keyboardType() override { return 0; }
  std::optional<std::u16string> translate(const KeyLayoutData& data, const KeyTranslation& translation,
                                          std::uint32_t& deadKeyState) override;
  Registration observeEnabledLayoutsChanged(std::function<void()> handler) override;

 protected:
  struct Layouts {
    std::vector<XkbLayoutName> enabled;
    std::optional<std::size_t> active;  ///< the place of the one in use, where that is known
  };
  /// The layouts as they are now; nothing when the system gives no list.
  virtual std::optional<Layouts> layouts() = 0;
  virtual void selectLayout(const std::vector<XkbLayoutName>& enabled, std::size_t place) = 0;
  /// What a layout types; null when that is not known. By default it is that of the machine's keymap of that
  /// name, without options, and compiled once.
  virtual KeyLayoutDataRef dataOf(const XkbInputSource& source);
  /// What the first layouts type, as bytes to compare, where that may change under the same names. By default
  /// nothing.
  virtual std::string typedInFirst(std::size_t count);

  /// Calls the handlers when the enabled layouts, or what they type, are others than before. Without a
  /// handler it does nothing.
  void reportChange();
  /// For when the machine's keymaps may be others: each is compiled anew.
  void forgetKeymaps() { machineKeymaps_.clear(); }
  /// Made for the first question; null when the machine has no folder of keymaps.
  xkb_context* context();

 private:
  /// The layouts as bytes to compare.
  std::string signature();

  std::shared_ptr<xkb_context> context_;
  std::map<std::string, std::shared_ptr<xkb_keymap>> machineKeymaps_;  // by the layout's identifier
  std::string known_;
  Handlers<std::function<void()>> handlers_;
};

}  // namespace lexwend::platform
