// SPDX-License-Identifier: MIT
#include "platform/linux/accessibility/focus_finder.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>
#include <vector>

#include "platform/linux/session/end_request.h"

namespace lexwend::platform {
namespace {

using Clock = std::chrono::steady_clock;

// A search of a window of GTK 4 that is drawn without a graphics card was seen to take 30 to 120 ms, on a
// busy machine 280 ms. One of a much larger window is given up for the clipboard.
constexpr std::chrono::milliseconds kSearchLimit{500};
// A bound alone: an application that names an object as a child of its own child is not followed for ever.
constexpr int kMaxDepth = 40;
// A window's fields are among fewer objects than these.
constexpr std::size_t kMaxLevelWidth = 500;
// The press of the hot key takes the keyboard from the window for as long as the agent lets it. GTK 3
// believes that its focus is gone until it has come to the event that gives it back, draws its window anew,
// and answers questions meanwhile. Seen to last up to 50 ms on a busy machine.
constexpr std::chrono::milliseconds kGrabIsForgotten{150};
constexpr std::chrono::milliseconds kPause{5};

/// What an object in a window tells, without its children being counted one by one.
struct Seen {
  AtspiObject object;
  std::uint64_t states = 0;
  std::optional<std::uint32_t> role;
  std::int32_t childCount = 0;

  bool has(AtspiStateType state) const { return (states & stateBit(state)) != 0; }
  /// Such an object may have any number of children: a sheet of LibreOffice Calc has a billion cells.
  bool managesItsDescendants() const {
    constexpr std::array kRoles = {ATSPI_ROLE_TABLE, ATSPI_ROLE_TREE_TABLE, ATSPI_ROLE_TREE, ATSPI_ROLE_LIST,
                                   ATSPI_ROLE_LIST_BOX};
    return has(ATSPI_STATE_MANAGES_DESCENDANTS) || !role ||
           std::any_of(kRoles.begin(), kRoles.end(),
                       [&](AtspiRole manager) { return *role == static_cast<std::uint32_t>(manager); });
  }
};

/// The children of all these, asked at once: an answer costs a turn of the application's loop, whatever else
/// it is asked.
std::vector<Seen> childrenOf(AtspiBus& bus, const std::vector<AtspiObject>& parents) {
  std::vector<AtspiCall> level;
  level.reserve(parents.size());
  for (const AtspiObject& parent : parents) level.push_back(askChildren(parent));
  std::vector<Seen> children;
  std::vector<AtspiCall> questions;
  for (const GVariantRef& answer : bus.callAll(level)) {
    for (AtspiObject& object : objectsIn(answer)) {
      if (children.size() == kMaxLevelWidth) break;
      questions.push_back(askStates(object));
      questions.push_back(askRole(object));
      questions.push_back(askChildCount(object));
      children.push_back({std::move(object), 0, std::nullopt, 0});
    }
  }
  const auto answers = bus.callAll(questions);
  for (std::size_t i = 0; i < children.size(); ++i) {
    children[i].states = statesIn(answers[3 * i]).value_or(0);
    children[i].role = unsignedIn(answers[3 * i + 1]);
    children[i].childCount = integerIn(answers[3 * i + 2]).value_or(0);
  }
  return children;
}

/// All of them where none is known to be active: GTK 3 forgets that too when the hot key is pressed.
void keepActiveWindows(const AtspiBus& bus, std::vector<Seen>& windows) {
  const auto isActive = [&bus](const Seen& window) {
    return window.has(ATSPI_STATE_ACTIVE) || window.object == bus.windowHeard(window.object.bus);
  };
  if (std::none_of(windows.begin(), windows.end(), isActive)) return;
  std::erase_if(windows, [&](const Seen& window) { return !isActive(window); });
}

}  // namespace

std::optional<Field> FocusFinder::focusedText(std::uint32_t process) {
  while (true) {
    if (auto known = askKnown(process)) return known;
    bool mayBeFoundSoon = false;
    for (const AtspiObject& application : bus_.applicationsOf(process)) {
      // GTK 4's root knows its toolkit, but not its application.
      const auto toolkit = textIn(bus_.call(askToolkit(application)));
      if (auto found = search(application, toolkit == "GTK")) {
        lastFound_ = found->object;
        return found;
      }
      mayBeFoundSoon |= toolkit == "gtk";  // GTK 3; Firefox and LibreOffice, which use it, do not forget
    }
    if (!mayBeFoundSoon) return std::nullopt;
    if (bus_.roundAge() > kGrabIsForgotten) return askKnown(process);
    end_request::sleep(kPause);
  }
}

std::optional<std::uint32_t> FocusFinder::activeProcess() {
  const auto last = bus_.lastWindowHeard();
  const auto states = last ? statesIn(bus_.call(askStates(*last))) : std::nullopt;
  if (states && (*states & stateBit(ATSPI_STATE_ACTIVE)) != 0) return bus_.processOf(last->bus);
  // It was active before the agent came, or has not said so.
  const std::vector<AtspiObject> applications = bus_.applications();
  for (const Seen& window : childrenOf(bus_, applications)) {
    if (window.has(ATSPI_STATE_ACTIVE)) return bus_.processOf(window.object.bus);
  }
  return std::nullopt;
}

std::optional<Field> FocusFinder::stillFocused(const AtspiObject& object) {
  Field field = fieldIn(object, bus_.callAll(askField(object)));
  return field.isFocusedText() ? std::optional(std::move(field)) : std::nullopt;
}

/// The last focus event may be of another window, of a popup, or plainly wrong, so it is asked once more.
std::optional<Field> FocusFinder::askKnown(std::uint32_t process) {
  std::vector<AtspiObject> candidates = bus_.focusHeard();
  if (lastFound_ && std::find(candidates.begin(), candidates.end(), *lastFound_) == candidates.end()) {
    candidates.push_back(*lastFound_);
  }
  for (const AtspiObject& candidate : candidates) {
    if (bus_.processOf(candidate.bus) != process) continue;
    if (auto field = stillFocused(candidate)) return field;
  }
  return std::nullopt;
}

/// Level by level, from the windows on.
std::optional<Field> FocusFinder::search(const AtspiObject& application, bool isGtk4) {
  const auto end = Clock::now() + kSearchLimit;
  // GTK 4 does not say SHOWING of what shows, but VISIBLE of what is not hidden.
  const AtspiStateType shown = isGtk4 ? ATSPI_STATE_VISIBLE : ATSPI_STATE_SHOWING;

  std::vector<Seen> level = childrenOf(bus_, {application});
  keepActiveWindows(bus_, level);
  for (int depth = 0; depth < kMaxDepth && !level.empty() && Clock::now() < end; ++depth) {
    std::vector<AtspiObject> parents;
    std::size_t width = 0;
    for (const Seen& object : level) {
      if (object.has(ATSPI_STATE_FOCUSED)) {
        if (auto field = stillFocused(object.object)) return field;
      }
      if (!object.has(shown) || object.managesItsDescendants() || object.childCount <= 0) continue;
      const auto count = static_cast<std::size_t>(object.childCount);
      if (count > kMaxLevelWidth - width) continue;
      width += count;
      parents.push_back(object.object);
    }
    level = childrenOf(bus_, parents);
  }
  return std::nullopt;
}

}  // namespace lexwend::platform
