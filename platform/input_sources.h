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
#include "platform/registration.h"

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
  /// True when the data exists and has no storage.
  virtual bool empty() const = 0;
};
using KeyLayoutDataRef = std::shared_ptr<const KeyLayoutData>;

enum class InputSourceProperty { id, languages, unicodeKeyLayoutData };

/// A property whose value is not of the type that its key promises.
struct MistypedProperty {
  bool operator==(const MistypedProperty&) const = default;
};
/// std::monostate: the source has no such property. Strings are UTF-8, language codes in the system's order.
using InputSourceValue =
    std::variant<std::monostate, MistypedProperty, std::string, std::vector<std::string>, KeyLayoutDataRef>;

enum class InputSourceType { keyboardLayout };

/// A source is listed when it matches every entry that is set.
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

/// The keyboard layouts of the user. Main thread only. No call waits for another application. On X11 a call
/// blocks for one round trip to the server, or for a few when it reads the data of a layout.
class InputSourceService {
 public:
  virtual ~InputSourceService() = default;
  /// Sources that match, in the system's order; nothing when the system gives no list.
  virtual std::optional<std::vector<InputSourceRef>> createInputSourceList(const InputSourceFilter& filter,
                                                                           bool includeAllInstalled) = 0;
  /// One property as it is now.
  virtual InputSourceValue property(const InputSourceRef& source, InputSourceProperty key) = 0;
  /// The keyboard layout now in use; null when the system reports none.
  virtual InputSourceRef copyCurrentKeyboardLayoutInputSource() = 0;
  /// Makes a layout current. A refusal by the system is not reported. Where the desktop has to be asked for
  /// it, the layout is current a moment after the call.
  virtual void select(const InputSourceRef& source) = 0;
  /// The physical keyboard's type, an opaque number for translate().
  virtual std::uint32_t keyboardType() = 0;
  /// The UTF-16 code units that the key types: none for a dead key, nothing when the system reports an error.
  /// `deadKeyState` is 0 for the first key; the system reads and writes it.
  virtual std::optional<std::u16string> translate(const KeyLayoutData& data,
                                                  const KeyTranslation& translation,
                                                  std::uint32_t& deadKeyState) = 0;
  /// Calls the handler on the main thread whenever the set of enabled layouts changed. A change may be told
  /// twice.
  [[nodiscard]] virtual Registration observeEnabledLayoutsChanged(std::function<void()> handler) = 0;
};

/// The service of the installed host.
InputSourceService& inputSourceService();

}  // namespace lexwend::platform
