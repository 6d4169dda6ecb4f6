// SPDX-License-Identifier: MIT
#include "tests/scenarios/model_world.h"

#include <utility>

#include "tests/scenarios/script.h"
#include "tests/scenarios/vocabulary.h"

namespace lexwend::scenarios {

using namespace platform;

ModelWorld::ModelWorld()
    : layouts_{{"US", usLayout()},
               {"ABC", abcLayout()},
               {"British", britishLayout()},
               {"Hebrew", hebrewLayout()},
               {"Russian", russianLayout()}} {}

FakeLayout& ModelWorld::layout(const std::string& name) {
  const auto found = layouts_.find(name);
  if (found == layouts_.end()) throw ScriptMistake("there is no layout \"" + name + "\"");
  return found->second;
}

FakeApp& ModelWorld::app() {
  const auto front = frontApp();
  if (!front) throw ScriptMistake("no application is in front");
  return *front;
}

FakeField& ModelWorld::field() {
  const auto focus = app().focus();
  if (!focus) throw ScriptMistake("no field has the focus");
  return *focus;
}

std::string ModelWorld::layoutName(const std::string& id) const {
  for (const auto& [name, data] : layouts_) {
    const auto* known = std::get_if<std::string>(&data.id);
    if (known != nullptr && *known == id) return name;
  }
  return id.empty() ? "none" : id;
}

void ModelWorld::act(Act act, const Words& arguments) {
  switch (act) {
    case Act::newLayout: {
      if (arguments[1] != "like") throw ScriptMistake("a new layout is like another one");
      auto made = layout(arguments[2]);
      made.id = "com.apple.keylayout." + arguments[0];
      layouts_.insert_or_assign(arguments[0], std::move(made));
      return;
    }
    case Act::languagesOf: {
      const Words languages(arguments.begin() + 1, arguments.end());
      if (languages == Words{"absent"}) {
        layout(arguments[0]).languages = std::monostate();
      } else if (languages == Words{"mistyped"}) {
        layout(arguments[0]).languages = MistypedProperty();
      } else {
        layout(arguments[0]).languages = languages;
      }
      return;
    }
    case Act::idOf:
      if (arguments[1] == "absent") {
        layout(arguments[0]).id = std::monostate();
      } else {
        layout(arguments[0]).id = arguments[1];
      }
      return;
    case Act::dataOf: {
      using Data = FakeLayout::Data;
      layout(arguments[0]).data = oneOf<Data, 4>(arguments[1], {{{"present", Data::present},
                                                                 {"absent", Data::absent},
                                                                 {"empty", Data::empty},
                                                                 {"mistyped", Data::mistyped}}});
      return;
    }
    case Act::keyOf:
      layout(arguments[0]).keys[static_cast<int>(parseNumber(arguments[1]))] = {arguments[2], arguments[3]};
      return;
    case Act::deadKeyOf:
      layout(arguments[0]).deadKeys.insert({static_cast<int>(parseNumber(arguments[1])), false});
      return;
    case Act::deadShiftedKeyOf:
      layout(arguments[0]).deadKeys.insert({static_cast<int>(parseNumber(arguments[1])), true});
      return;
    case Act::brokenKeyOf:
      layout(arguments[0]).brokenKeys.insert({static_cast<int>(parseNumber(arguments[1])), false});
      return;
    case Act::text:
      field().setText(arguments[0]);
      return;
    case Act::select:
      if (!field().select(arguments[0])) throw ScriptMistake("the text to select is not in the field");
      return;
    case Act::selectAll:
      field().selectAll();
      return;
    case Act::selectNothing:
      field().selectNothing();
      return;
    case Act::role:
      field().role = arguments[0];
      return;
    case Act::passwordField:
      field().password = true;
      focusChanged();
      return;
    case Act::readOnlyField:
      field().editable = false;
      return;
    case Act::noFocus:
      app().windows.push_back({"without a field", nullptr});
      app().focusedWindow = app().windows.size() - 1;
      focusChanged();
      return;
    case Act::answer:
      field().answer(operationOf(arguments[0]), arguments[1], answerOf(arguments, 2));
      return;
    case Act::laterAnswer:
      field().answer(operationOf(arguments[1]), arguments[2], answerOf(arguments, 3),
                     static_cast<int>(parseNumber(arguments[0])));
      return;
    case Act::copies:
      app().copies = copyOf(arguments);
      return;
    case Act::nextCopy:
      app().nextCopies.push_back(copyOf(arguments));
      return;
    case Act::pastesAfter:
      app().pastes.delay = durationOf(arguments[0]);
      return;
    case Act::ignoresPaste:
      app().pastes.ignored = true;
      return;
    case Act::start:
      throw ScriptMistake("start is the runner's own");
    default:
      actOnSystem(act, arguments);
  }
}

Words ModelWorld::look(Look look, const Words& arguments) {
  switch (look) {
    case Look::text:
      return {field().text()};
    case Look::textOf: {
      const auto found = appNamed(arguments[0]);
      if (!found || !found->focus()) throw ScriptMistake("there is no text in \"" + arguments[0] + "\"");
      return {found->focus()->text()};
    }
    case Look::selected:
      return {field().selectedText()};
    case Look::menu: {
      Words lines;
      for (const auto& each : menu()) {
        std::string line = each.isSeparator ? "---" : (each.isChecked ? "[x] \"" : "\"") + each.title + "\"";
        if (!each.keyEquivalent.empty()) line += " key " + each.keyEquivalent;
        if (each.isHidden) line += " hidden";
        if (!each.isSeparator && !each.isEnabled && !each.isHidden) line += " disabled";
        lines.push_back(std::move(line));
      }
      return lines;
    }
    case Look::menuItem:
      for (const auto& each : menu()) {
        if (each.isSeparator || each.title != arguments[0]) continue;
        return {each.isChecked ? "checked" : "unchecked", each.isHidden ? "hidden" : "shown",
                each.isEnabled ? "enabled" : "disabled"};
      }
      return {"absent"};
    case Look::statusLine:
      for (const auto& each : menu()) {
        if (!each.isSeparator && !each.isEnabled && !each.isHidden) return {each.title};
      }
      return {};
    case Look::exitStatus:
      return exitStatus_ ? Words{std::to_string(*exitStatus_)} : Words{};
    case Look::output:
      return linesOf(output_.str());
    default:
      return lookAtSystem(look, arguments);
  }
}

}  // namespace lexwend::scenarios
