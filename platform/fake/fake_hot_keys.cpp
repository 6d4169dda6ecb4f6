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

class FakePause : public HotKeyPause {
 public:
  explicit FakePause(std::shared_ptr<int> pauses) : pauses_(std::move(pauses)) { ++*pauses_; }
  ~FakePause() override { --*pauses_; }
  FakePause(const FakePause&) = delete;
  FakePause& operator=(const FakePause&) = delete;

 private:
  std::shared_ptr<int> pauses_;
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

HotKeyRegistration FakeHotKeys::registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                                               HotKeyID identity) {
  system_.called("hotKeys.registerHotKey " + std::to_string(keyCode) + " " + std::to_string(modifiers) +
                 " id " + std::to_string(identity.id));
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

bool FakeHotKeys::press(std::uint32_t keyCode, std::uint32_t modifiers) {
  const auto found = registered_.find({keyCode, modifiers});
  if (found == registered_.end()) return false;
  if (*pauses_ == 0) dispatch(found->second);
  return true;
}

std::unique_ptr<HotKeyPause> FakeHotKeys::ignorePresses() {
  return std::make_unique<FakePause>(pauses_);
}

std::optional<OSStatus> FakeHotKeys::dispatch(HotKeyID identity) {
  if (!handler_) return std::nullopt;
  return handler_(FakeHotKeyEvent(system_, identity));
}

bool FakeHotKeys::holds(std::uint32_t keyCode, std::uint32_t modifiers) const {
  return registered_.contains({keyCode, modifiers});
}

}  // namespace lexwend::platform
