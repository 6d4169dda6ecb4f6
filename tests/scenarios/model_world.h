// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "platform/fake/fake_apps.h"
#include "platform/fake/fake_layouts.h"
#include "tests/scenarios/world.h"

namespace lexwend::scenarios {

/// What every world has in common: the user's applications and layouts are models, and the words about them
/// mean the same whatever system the program runs on. A world adds the words about its system.
class ModelWorld : public ScenarioWorld {
 public:
  void act(Act act, const Words& arguments) final;
  Words look(Look look, const Words& arguments) final;

 protected:
  /// The layouts that a script knows by name: US, ABC, British, Hebrew, Russian.
  ModelWorld();

  virtual platform::FakeAppRef frontApp() = 0;
  virtual platform::FakeAppRef appNamed(const std::string& name) = 0;
  /// Another field has the focus, or the one that has it became a password field.
  virtual void focusChanged() {}
  /// What the user sees of the menu.
  struct MenuEntry {
    std::string title, keyEquivalent;
    bool isSeparator = false, isChecked = false, isHidden = false, isEnabled = true;
  };
  virtual std::vector<MenuEntry> menu() = 0;
  virtual void actOnSystem(Act act, const Words& arguments) = 0;
  virtual Words lookAtSystem(Look look, const Words& arguments) = 0;

  // All of these throw ScriptMistake where there is none.
  platform::FakeLayout& layout(const std::string& name);
  platform::FakeApp& app();
  platform::FakeField& field();
  /// What a script calls the layout with this id; "none" for no id.
  std::string layoutName(const std::string& id) const;

  std::optional<int> exitStatus_;
  std::ostringstream output_;

 private:
  std::map<std::string, platform::FakeLayout> layouts_;
};

}  // namespace lexwend::scenarios
