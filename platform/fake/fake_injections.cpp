// SPDX-License-Identifier: MIT
#include "platform/fake/fake_injections.h"

namespace lexwend::platform {

const char* name(FakeOperation operation) {
  switch (operation) {
    case FakeOperation::createInputSourceList:
      return "createInputSourceList";
    case FakeOperation::copyCurrentLayout:
      return "copyCurrentLayout";
    case FakeOperation::selectInputSource:
      return "selectInputSource";
    case FakeOperation::createEventSource:
      return "createEventSource";
    case FakeOperation::createKeyDownEvent:
      return "createKeyDownEvent";
    case FakeOperation::createKeyUpEvent:
      return "createKeyUpEvent";
    case FakeOperation::installHotKeyHandler:
      return "installHotKeyHandler";
    case FakeOperation::registerHotKey:
      return "registerHotKey";
    case FakeOperation::registerHotKeyReference:
      return "registerHotKeyReference";
    case FakeOperation::registerHotKeyStatus:
      return "registerHotKeyStatus";
    case FakeOperation::unregisterHotKey:
      return "unregisterHotKey";
    case FakeOperation::readHotKeyParameter:
      return "readHotKeyParameter";
    case FakeOperation::symbolImage:
      return "symbolImage";
    case FakeOperation::urlFromString:
      return "urlFromString";
    case FakeOperation::openFile:
      return "openFile";
    case FakeOperation::writeFile:
      return "writeFile";
    case FakeOperation::closeFile:
      return "closeFile";
    case FakeOperation::writeWholeFile:
      return "writeWholeFile";
    case FakeOperation::registerLoginItem:
      return "registerLoginItem";
    case FakeOperation::unregisterLoginItem:
      return "unregisterLoginItem";
    case FakeOperation::takeSharedApplication:
      return "takeSharedApplication";
  }
  return "?";
}

void FakeInjections::failNext(FakeOperation operation, const FakeFailure& failure) {
  for (int i = 0; i < failure.after; ++i) waiting_[operation].emplace_back();
  for (int i = 0; i < failure.times; ++i) waiting_[operation].push_back(failure.code);
}

std::optional<std::int32_t> FakeInjections::take(FakeOperation operation) {
  const auto found = waiting_.find(operation);
  if (found == waiting_.end() || found->second.empty()) return std::nullopt;
  const auto code = found->second.front();
  found->second.pop_front();
  return code;
}

std::vector<std::string> FakeInjections::unused() const {
  std::vector<std::string> complaints;
  for (const auto& [operation, codes] : waiting_) {
    if (codes.empty()) continue;
    complaints.push_back("failNext(" + std::string(name(operation)) + ") was prepared " +
                         std::to_string(codes.size()) + " times more often than the operation was called");
  }
  return complaints;
}

}  // namespace lexwend::platform
