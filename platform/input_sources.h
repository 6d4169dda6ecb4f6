// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "platform/keys.h"

namespace lexwend::platform {

/// One input source of the system. Opaque; alive as long as any copy of its reference.
class InputSource {
 public:
  virtual ~InputSource() = default;
};
using InputSourceRef = std::shared_ptr<const InputSource>;

/// What every key of one layout types, in the host's own form (on macOS the bytes of a 'uchr' resource).
class KeyLayoutData {
 public:
  virtual ~KeyLayoutData() = default;
  /// True when the data is there but has no storage.
  virtual bool empty() const = 0;
};
using KeyLayoutDataRef = std::shared_ptr<const KeyLayoutData>;

enum class InputSourceProperty { id, languages, unicodeKeyLayoutData };

/// A property that is there but is not of the type that its key promises.
struct MistypedProperty {
  bool operator==(const MistypedProperty&) const = default;
};
/// std::monostate: the source has no such property. Strings are UTF-8, language codes in the system's order.
using InputSourceValue =
    std::variant<std::monostate, MistypedProperty, std::string, std::vector<std::string>, KeyLayoutDataRef>;

enum class InputSourceType { keyboardLayout };

/// A source is listed when it matches every entry that is set; an entry that is not set is not asked about.
struct InputSourceFilter {
  std::optional<InputSourceType> type;
  std::optional<bool> isEnabled;
};

enum class KeyAction : std::uint16_t { down = 0 };

struct KeyTranslation {
  KeyCode keyCode{};  ///< a code of 16 bits; for any other the system reports an error
  KeyAction action = KeyAction::down;
  Modifiers modifiers = kNoModifiers;
  std::uint32_t keyboardType = 0;  ///< from keyboardType()
  std::uint32_t options = 0;       ///< 0: dead keys are not suppressed
  std::size_t maxLength = 0;       ///< room for the result, UTF-16 code units
};

/// The keyboard layouts of the user. Main thread only; no call blocks on another application.
class InputSourceService {
 public:
  virtual ~InputSourceService() = default;
  /// Sources that match, in the system's order; nothing when the system gives no list.
  virtual std::optional<std::vector<InputSourceRef>> createInputSourceList(const InputSourceFilter& filter,
                                                                           bool includeAllInstalled) = 0;
  virtual InputSourceValue property(const InputSourceRef& source, InputSourceProperty key) = 0;
  /// The keyboard layout now in use; null when the system reports none.
  virtual InputSourceRef copyCurrentKeyboardLayoutInputSource() = 0;
  /// Makes a layout current. The result of the system is not examined.
  virtual void select(const InputSourceRef& source) = 0;
  /// The physical keyboard's type, an opaque number for translate().
  virtual std::uint32_t keyboardType() = 0;
  /// UTF-16 code units that the key types (none for a dead key); nothing when the system reports an error.
  /// `deadKeyState` is read and written by the system.
  virtual std::optional<std::u16string> translate(const KeyLayoutData& data,
                                                  const KeyTranslation& translation,
                                                  std::uint32_t& deadKeyState) = 0;
  /// Calls the handler on the main thread whenever the set of enabled layouts changed, for the rest of the
  /// run; the handler holds what it needs weakly.
  virtual void observeEnabledLayoutsChanged(std::function<void()> handler) = 0;
};

/// The service of the installed host.
InputSourceService& inputSourceService();

}  // namespace lexwend::platform
