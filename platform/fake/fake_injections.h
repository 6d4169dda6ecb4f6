// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace lexwend::platform {

/// What can be made to fail once, in the order of the services. The comment says what the program then sees.
enum class FakeOperation {
  createInputSourceList,    ///< no list
  copyCurrentLayout,        ///< no current layout
  selectInputSource,        ///< nothing; the layout in use stays
  createEventSource,        ///< null
  createKeyDownEvent,       ///< null
  createKeyUpEvent,         ///< null
  installHotKeyHandler,     ///< the code, and presses reach nobody
  registerHotKey,           ///< the code and no reference
  registerHotKeyReference,  ///< success, but a null reference
  registerHotKeyStatus,     ///< the code, and in the system a reference all the same
  unregisterHotKey,         ///< the registration stays
  readHotKeyParameter,      ///< the code, and the identity is left as it was
  symbolImage,              ///< null
  urlFromString,            ///< null
  openFile,                 ///< null
  writeFile,                ///< the bytes are lost
  closeFile,                ///< false; the bytes are there
  writeWholeFile,           ///< false; no file
  registerLoginItem,        ///< false; the status stays
  unregisterLoginItem,      ///< false; the status stays
  takeSharedApplication,    ///< a sentence for the user
};
const char* name(FakeOperation operation);

/// Failures that wait for their operation. One that never met it is a complaint.
class FakeInjections {
 public:
  /// `after`: so many calls go well first.
  void failNext(FakeOperation operation, std::int32_t code, int times, int after);
  /// Uses one up; nothing when none waits.
  std::optional<std::int32_t> take(FakeOperation operation);
  std::vector<std::string> unused() const;

 private:
  /// The outcomes of the next calls in order; nothing: the call goes well.
  std::map<FakeOperation, std::deque<std::optional<std::int32_t>>> waiting_;
};

}  // namespace lexwend::platform
