// SPDX-License-Identifier: MIT
#include "platform/fake/fake_recorder_window.h"

#include <utility>

namespace lexwend::platform {
namespace {

/// Reports that the window closes, and takes it off the screen. The program may destroy the window object
/// meanwhile; the caller keeps the state alive.
void closeState(FakeSystem& system, const std::shared_ptr<FakeRecorderState>& state) {
  if (state->closed) return;
  state->closed = true;
  system.called("recorderWindow.close");
  if (const auto willClose = state->events.willClose) willClose();
  if (const auto meanwhile = state->whileClosing) meanwhile();
  state->shown = false;
}

class FakeRecorderWindow : public RecorderWindow {
 public:
  FakeRecorderWindow(FakeSystem& system, std::shared_ptr<FakeRecorderState> state)
      : system_(system), state_(std::move(state)) {}

  void setCombination(std::string_view text) override { state_->combination = text; }
  void setMessage(std::string_view text, ColorRole color) override {
    state_->message = text;
    state_->messageColor = color;
  }
  void setSaveEnabled(bool enabled) override { state_->saveEnabled = enabled; }
  void showAndMakeKey() override {
    system_.called("recorderWindow.showAndMakeKey");
    if (state_->closed) {
      system_.complain("a closed recorder window was shown again");
      return;
    }
    state_->shown = true;
  }
  void close() override {
    const auto state = state_;
    closeState(system_, state);
  }

 private:
  FakeSystem& system_;
  std::shared_ptr<FakeRecorderState> state_;
};

}  // namespace

std::unique_ptr<RecorderWindow> FakeRecorderWindows::create(const RecorderWindowLook& look,
                                                            RecorderWindowEvents events) {
  system_.called("recorderWindows.create");
  auto state = std::make_shared<FakeRecorderState>();
  state->look = look;
  state->combination = look.combination.text;
  state->message = look.message.text;
  state->messageColor = look.message.color;
  state->saveEnabled = look.save.enabled;
  state->events = std::move(events);
  states_.push_back(state);
  return std::make_unique<FakeRecorderWindow>(system_, std::move(state));
}

const FakeRecorderState* FakeRecorderWindows::window() const {
  for (const auto& weak : states_) {
    const auto state = weak.lock();
    // The state lives as long as its window, and the window outlives this call.
    if (state && state->shown) return state.get();
  }
  return nullptr;
}

std::size_t FakeRecorderWindows::alive() const {
  std::size_t count = 0;
  for (const auto& state : states_) count += state.expired() ? 0 : 1;
  return count;
}

std::shared_ptr<FakeRecorderState> FakeRecorderWindows::shown(const char* whatFor) {
  for (const auto& weak : states_) {
    auto state = weak.lock();
    if (state && state->shown) return state;
  }
  system_.complain(std::string(whatFor) + ": no recorder window is open");
  return nullptr;
}

bool FakeRecorderWindows::clickSave() {
  const auto state = shown("a click on the save button");
  if (!state) return false;
  if (!state->saveEnabled) {
    system_.complain("the recorder's save button is disabled and cannot be clicked");
    return false;
  }
  if (const auto save = state->events.save) save();
  return true;
}

bool FakeRecorderWindows::clickCancel() {
  const auto state = shown("a click on the cancel button");
  if (!state) return false;
  if (const auto cancel = state->events.cancel) cancel();
  return true;
}

bool FakeRecorderWindows::clickCloseBox() {
  const auto state = shown("a click on the close box");
  if (!state) return false;
  if (!state->look.closable) {
    system_.complain("the recorder window has no close box");
    return false;
  }
  closeState(system_, state);
  return true;
}

void FakeRecorderWindows::whileClosing(std::function<void()> meanwhile) {
  if (const auto state = shown("something while it closes")) state->whileClosing = std::move(meanwhile);
}

}  // namespace lexwend::platform
