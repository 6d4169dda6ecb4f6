// SPDX-License-Identifier: MIT
#include "platform/linux/accessibility/focus_finder.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace lexwend::platform {
namespace {

// A walk over a window of GTK 4 that is drawn without a graphics card was seen to take 30 to 120 ms, on a
// busy machine 280 ms. One over a much larger window is given up for the clipboard.
constexpr std::chrono::milliseconds kWalkLimit{500};
// The press of the hot key takes the keyboard from the window for as long as the agent lets it. GTK 3
// believes that its focus is gone until it has come to the event that gives it back, draws its window anew,
// and answers questions meanwhile. Seen to last up to 50 ms on a busy machine.
constexpr std::chrono::milliseconds kGrabIsForgotten{150};
constexpr std::chrono::milliseconds kPause{5};
constexpr int kMatchAll = 1;        // ATSPI_Collection_MATCH_ALL
constexpr unsigned kCanonical = 1;  // ATSPI_Collection_SORT_ORDER_CANONICAL
constexpr int kMatchLimit = 5;
// A window's fields are among fewer objects than these; a table of thousands is not asked cell by cell.
constexpr std::size_t kMaxLevelWidth = 500;

GVariant* focusedRule() {
  GVariantBuilder states;
  g_variant_builder_init(&states, G_VARIANT_TYPE("ai"));
  g_variant_builder_add(&states, "i", static_cast<int>(kAtspiStateFocused));
  g_variant_builder_add(&states, "i", 0);
  GVariant* rule = g_variant_new("(aiia{ss}iaiiasib)", &states, kMatchAll, nullptr, kMatchAll, nullptr,
                                 kMatchAll, nullptr, kMatchAll, FALSE);
  return g_variant_new("(@(aiia{ss}iaiiasib)uib)", rule, kCanonical, kMatchLimit, TRUE);
}

}  // namespace

std::optional<AtspiObject> FocusFinder::focusedText(std::uint32_t process) {
  while (true) {
    if (auto known = askKnown(process)) return known;
    bool mayBeFoundSoon = false;
    for (const AtspiObject& application : bus_.applicationsOf(process)) {
      // GTK 4's root knows its toolkit, but not its application.
      const auto toolkit = textIn(bus_.call(askProperty(application, AtspiBus::kApplication, "ToolkitName")));
      auto found = askCollection(application);
      if (!found) found = walk(application, toolkit == "GTK");
      if (found) return lastFound_ = found;
      mayBeFoundSoon |= toolkit == "gtk";  // GTK 3; Firefox and LibreOffice, which use it, do not forget
    }
    if (!mayBeFoundSoon) return std::nullopt;
    if (bus_.roundAge() > kGrabIsForgotten) return askKnown(process);
    std::this_thread::sleep_for(kPause);
  }
}

/// The last focus event may be of another window, of a popup, or plainly wrong, so it is asked once more.
std::optional<AtspiObject> FocusFinder::askKnown(std::uint32_t process) {
  for (const auto& candidate : {bus_.lastFocus(), lastFound_}) {
    if (candidate && bus_.processOf(candidate->bus) == process && isFocusedText(*candidate)) return candidate;
  }
  return std::nullopt;
}

bool FocusFinder::isFocusedText(const AtspiObject& object) {
  const auto answers = bus_.callAll({askStates(object), askInterfaces(object)});
  const auto states = statesIn(answers[0]);
  return states && (*states & kAtspiStateFocused) != 0 && interfacesHave(answers[1], AtspiBus::kText);
}

std::optional<AtspiObject> FocusFinder::askCollection(const AtspiObject& application) {
  const GVariantRef reply =
      bus_.call({application, AtspiBus::kCollection, "GetMatches", focusedRule(), "(a(so))"});
  for (const AtspiObject& object : objectsIn(reply)) {
    if (isFocusedText(object)) return object;
  }
  return std::nullopt;
}

std::optional<AtspiObject> FocusFinder::walk(const AtspiObject& application, bool isGtk4) {
  const auto end = std::chrono::steady_clock::now() + kWalkLimit;
  // GTK 4 does not say SHOWING of what shows, but VISIBLE of what is not hidden.
  const std::uint64_t shown = isGtk4 ? kAtspiStateVisible : kAtspiStateShowing;

  // Level by level, each asked at once: an answer costs a turn of the application's loop, whatever else it is
  // asked.
  std::vector<AtspiCall> level{askChildren(application)};
  while (!level.empty() && std::chrono::steady_clock::now() < end) {
    std::vector<AtspiObject> found;
    std::vector<AtspiCall> questions;
    for (const GVariantRef& children : bus_.callAll(level)) {
      for (AtspiObject& child : objectsIn(children)) {
        if (found.size() == kMaxLevelWidth) break;
        questions.push_back(askStates(child));
        questions.push_back(askProperty(child, AtspiBus::kAccessible, "ChildCount"));
        found.push_back(std::move(child));
      }
    }
    const auto answers = bus_.callAll(questions);
    level.clear();
    std::size_t width = 0;
    for (std::size_t i = 0; i < found.size(); ++i) {
      const auto states = statesIn(answers[2 * i]);
      if (!states) continue;
      if ((*states & kAtspiStateFocused) != 0 && bus_.hasInterface(found[i], AtspiBus::kText)) {
        return found[i];
      }
      if ((*states & shown) == 0 || (*states & kAtspiStateManagesDescendants) != 0) continue;
      const auto count = static_cast<std::size_t>(std::max(0, integerIn(answers[2 * i + 1]).value_or(0)));
      if (count == 0 || count > kMaxLevelWidth - width) continue;
      width += count;
      level.push_back(askChildren(found[i]));
    }
  }
  return std::nullopt;
}

}  // namespace lexwend::platform
