// SPDX-License-Identifier: MIT
#include "platform/fake/fake_hot_keys.h"

#include <string>

namespace lexwend::platform {
namespace {

constexpr OSStatus kInvalidHotKey = -9879;

class FakeHotKey : public HotKey {
 public:
  explicit FakeHotKey(FakeHotKeys::Combination held) : combination(held) {}
  const FakeHotKeys::Combination combination;
};

class FakeHotKeyEvent : public HotKeyEvent {
 public:
  FakeHotKeyEvent(FakeSystem& system, HotKeyID identity) : system_(system), identity_(identity) {}
  OSStatus hotKeyID(HotKeyID& out) const override {
    if (const auto code = system_.failure(FakeOperation::readHotKeyParameter)) return *code;
    out = identity_;
    return kNoErr;
  }

 private:
  FakeSystem& system_;
  HotKeyID identity_;
};

}  // namespace

OSStatus FakeHotKeys::installHandler(std::function<OSStatus(const HotKeyEvent&)> handler) {
  system_.called("hotKeys.installHandler");
  if (handlerInstallations_++ > 0) system_.complain("hotKeys.installHandler was called more than once");
  if (const auto code = system_.failure(FakeOperation::installHotKeyHandler)) return *code;
  handler_ = std::move(handler);
  return kNoErr;
}

HotKeyRegistration FakeHotKeys::registerHotKey(KeyCode keyCode, Modifiers modifiers, HotKeyID identity) {
  system_.called("hotKeys.registerHotKey " + std::to_string(number(keyCode)) + " " +
                 std::to_string(number(modifiers)) + " id " + std::to_string(identity.id));
  offered_.push_back(identity);
  if (const auto code = system_.failure(FakeOperation::registerHotKey)) return {*code, nullptr};
  if (system_.failure(FakeOperation::registerHotKeyReference)) return {kNoErr, nullptr};
  const Combination combination{keyCode, modifiers};
  if (const auto code = system_.failure(FakeOperation::registerHotKeyStatus)) {
    return {*code, std::make_shared<FakeHotKey>(combination)};
  }
  if (taken_.contains(combination) || registered_.contains(combination)) return {kHotKeyExists, nullptr};
  registered_[combination] = identity;
  return {kNoErr, std::make_shared<FakeHotKey>(combination)};
}

OSStatus FakeHotKeys::unregisterHotKey(const HotKeyRef& ref) {
  system_.called("hotKeys.unregisterHotKey");
  if (const auto code = system_.failure(FakeOperation::unregisterHotKey)) return *code;
  const auto* made = dynamic_cast<const FakeHotKey*>(ref.get());
  if (made == nullptr || registered_.erase(made->combination) == 0) return kInvalidHotKey;
  return kNoErr;
}

bool FakeHotKeys::press(KeyCode keyCode, Modifiers modifiers) {
  const auto found = registered_.find({keyCode, modifiers});
  if (found == registered_.end()) return false;
  dispatch(found->second);
  return true;
}

std::optional<OSStatus> FakeHotKeys::dispatch(HotKeyID identity) {
  if (!handler_) return std::nullopt;
  return handler_(FakeHotKeyEvent(system_, identity));
}

bool FakeHotKeys::holds(KeyCode keyCode, Modifiers modifiers) const {
  return registered_.contains({keyCode, modifiers});
}

}  // namespace lexwend::platform
