// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <deque>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/fake/fake_apps.h"
#include "platform/fake/fake_layouts.h"
#include "platform/host.h"
#include "tests/mac/doubles/control.h"
#include "tests/scenarios/model_world.h"

namespace lexwend::scenarios {

/// The macOS host on the doubles as the world of a scenario. The user's applications are models; they meet
/// the host only through what the doubles answer. At the end every object of the system must have been given
/// back.
class MacWorld : public ModelWorld {
 public:
  MacWorld();
  ~MacWorld() override;
  MacWorld(const MacWorld&) = delete;
  MacWorld& operator=(const MacWorld&) = delete;

  void start(const Words& arguments, const std::function<void()>& whileRunning) override;
  Words complaints() override;

 private:
  using AppRef = std::shared_ptr<platform::FakeApp>;
  struct AlertAnswer {
    std::optional<std::string> button;  ///< nothing: closed
  };

  AppRef frontApp() override { return front_; }
  AppRef appNamed(const std::string& name) override;
  void focusChanged() override;
  std::vector<MenuEntry> menu() override;
  void actOnSystem(Act act, const Words& arguments) override;
  Words lookAtSystem(Look look, const Words& arguments) override;

  void prepareSystem();
  void answerAccessibility();

  std::string enabledName(std::optional<std::size_t> index) const;
  void setLayouts(const Words& names);
  void noteSelections();
  std::string typed(std::uint16_t keyCode, bool shifted) const;

  void bringToFront(AppRef app);
  void copyInFront();
  void pasteInFront();

  void press(const std::string& keys);
  void choose(const std::string& title);
  void click(const std::string& button);
  long answerAlert(const doubles::alerts::Alert& alert);
  void failNext(const std::string& operation, const std::string& code, int after);

  std::string logPath() const;
  std::optional<std::string> logBytes() const;
  Words logMessages() const;

  doubles::Session session_;
  std::filesystem::path home_;
  std::unique_ptr<platform::Host> host_;
  std::vector<platform::FakeLayout> enabled_;
  Words selections_;
  std::size_t selectionsNoted_ = 0;
  std::vector<AppRef> apps_;
  AppRef front_;
  std::optional<platform::FakeAnswer> focusAnswer_;
  bool focusAnswerUsed_ = false;
  bool trusted_ = true;
  bool secureInputHeld_ = false;
  std::deque<AlertAnswer> alertAnswers_;
  std::vector<doubles::workspace::Running> running_;
  Words complaints_;
};

}  // namespace lexwend::scenarios
