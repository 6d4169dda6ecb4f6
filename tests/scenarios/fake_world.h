// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "platform/fake/fake_host.h"
#include "tests/scenarios/model_world.h"

namespace lexwend::scenarios {

/// The in-memory system as the world of a scenario: the US and the Hebrew layout, US in use, the permission
/// granted, an empty pasteboard and no application at the start.
class FakeWorld : public ModelWorld {
 public:
  FakeWorld() = default;
  /// Whoever wanted the complaints has asked for them.
  ~FakeWorld() override { host_.settle(); }
  FakeWorld(const FakeWorld&) = delete;
  FakeWorld& operator=(const FakeWorld&) = delete;

  void start(const Words& arguments, const std::function<void()>& whileRunning) override;
  Words complaints() override;

 private:
  platform::FakeAppRef frontApp() override { return host_.apps().front(); }
  platform::FakeAppRef appNamed(const std::string& name) override { return host_.apps().named(name); }
  std::vector<MenuEntry> menu() override;
  void actOnSystem(Act act, const Words& arguments) override;
  Words lookAtSystem(Look look, const Words& arguments) override;

  std::vector<platform::FakeLayout> layoutList(const Words& names);

  platform::FakeHost host_;
};

}  // namespace lexwend::scenarios
