// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace lexwend::platform {

/// The operations that can be made to fail, in the order of the services. The comment says what the program
/// then gets.
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

/// A failure of the next calls of an operation.
struct FakeFailure {
  std::int32_t code = -1;
  int times = 1;  ///< how many calls fail
  int after = 0;  ///< how many calls succeed before them
};

/// Failures that wait for their operation. A failure that is never reached is a complaint.
class FakeInjections {
 public:
  void failNext(FakeOperation operation, const FakeFailure& failure);
  /// Takes the outcome of the next call: the code of its failure, or nothing when it succeeds.
  std::optional<std::int32_t> take(FakeOperation operation);
  std::vector<std::string> unused() const;

 private:
  /// The outcomes of the next calls, in order; nothing for one that succeeds.
  std::map<FakeOperation, std::deque<std::optional<std::int32_t>>> waiting_;
};

}  // namespace lexwend::platform
