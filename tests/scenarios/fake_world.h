// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <optional>
#include <sstream>
#include <string>

#include "platform/fake/fake_host.h"
#include "tests/scenarios/world.h"

namespace lexwend::scenarios {

/// The in-memory system as the world of a scenario: the US and the Hebrew layout, US in use, the permission
/// granted, an empty pasteboard and no application at the start.
class FakeWorld : public ScenarioWorld {
 public:
  FakeWorld();
  /// Whoever wanted the complaints has asked for them.
  ~FakeWorld() override { host_.settle(); }
  FakeWorld(const FakeWorld&) = delete;
  FakeWorld& operator=(const FakeWorld&) = delete;

  void act(Act act, const Words& arguments) override;
  void start(const Words& arguments, const std::function<void()>& whileRunning) override;
  Words look(Look look, const Words& arguments) override;
  Words complaints() override;

 private:
  platform::FakeLayout& layout(const std::string& name);
  std::vector<platform::FakeLayout> layoutList(const Words& names);
  platform::FakeApp& app();
  platform::FakeField& field();
  std::string layoutName(const std::string& id) const;
  Words menuLines() const;

  platform::FakeHost host_;
  std::map<std::string, platform::FakeLayout> layouts_;
  platform::FakeAppRef lastApp_;
  std::vector<platform::FakePasteboardItemContents> pasteboardItems_;
  std::optional<int> exitStatus_;
  std::ostringstream output_;
};

}  // namespace lexwend::scenarios
