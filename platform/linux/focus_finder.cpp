// SPDX-License-Identifier: MIT
#include "platform/linux/focus_finder.h"

#include <chrono>
#include <vector>

namespace lexwend::platform {
namespace {

// A walk over a large window takes half a second; past this the clipboard is the quicker way.
constexpr std::chrono::milliseconds kWalkLimit{100};
constexpr int kMatchAll = 1;        // ATSPI_Collection_MATCH_ALL
constexpr unsigned kCanonical = 1;  // ATSPI_Collection_SORT_ORDER_CANONICAL
constexpr int kMatchLimit = 5;

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
  // The last focus event may be of another window, of a popup, or plainly wrong, so it is asked once more.
  for (const auto& candidate : {bus_.lastFocus(), lastFound_}) {
    if (candidate && bus_.processOf(candidate->bus) == process && isFocusedText(*candidate)) return candidate;
  }
  lastFound_.reset();
  for (const AtspiObject& application : bus_.applicationsOf(process)) {
    lastFound_ = askCollection(application);
    if (!lastFound_) lastFound_ = walk(application);
    if (lastFound_) break;
  }
  return lastFound_;
}

bool FocusFinder::isFocusedText(const AtspiObject& object) {
  const auto states = bus_.states(object);
  return states && (*states & kAtspiStateFocused) != 0 && bus_.hasInterface(object, AtspiBus::kText);
}

std::optional<AtspiObject> FocusFinder::askCollection(const AtspiObject& application) {
  const GVariantRef reply =
      bus_.call(application, AtspiBus::kCollection, "GetMatches", focusedRule(), "(a(so))");
  if (!reply) return std::nullopt;
  const GVariantRef matches(g_variant_get_child_value(reply.get(), 0));
  GVariantIter iterator;
  g_variant_iter_init(&iterator, matches.get());
  const char* bus = nullptr;
  const char* path = nullptr;
  while (g_variant_iter_next(&iterator, "(&s&o)", &bus, &path) != FALSE) {
    AtspiObject object{bus, path};
    if (isFocusedText(object)) return object;
  }
  return std::nullopt;
}

std::optional<AtspiObject> FocusFinder::walk(const AtspiObject& application) {
  const auto end = std::chrono::steady_clock::now() + kWalkLimit;
  // GTK 4 does not say SHOWING of what shows, but VISIBLE of what is not hidden.
  const GVariantRef toolkit = bus_.property(application, AtspiBus::kApplication, "ToolkitName");
  const bool isGtk4 = toolkit && g_variant_is_of_type(toolkit.get(), G_VARIANT_TYPE_STRING) != FALSE &&
                      std::string(g_variant_get_string(toolkit.get(), nullptr)) == "GTK";
  const std::uint64_t shown = isGtk4 ? kAtspiStateVisible : kAtspiStateShowing;

  // Level by level, each asked at once: an answer costs a turn of the application's loop, whatever else it is
  // asked.
  std::vector<AtspiObject> level{application};
  while (!level.empty() && std::chrono::steady_clock::now() < end) {
    std::vector<AtspiObject> next;
    for (auto& children : bus_.childrenOf(level)) {
      if (children) next.insert(next.end(), children->begin(), children->end());
    }
    const auto states = bus_.statesOf(next);
    level.clear();
    for (std::size_t i = 0; i < next.size(); ++i) {
      if (!states[i]) continue;
      if ((*states[i] & kAtspiStateFocused) != 0 && bus_.hasInterface(next[i], AtspiBus::kText))
        return next[i];
      if ((*states[i] & shown) != 0) level.push_back(next[i]);
    }
  }
  return std::nullopt;
}

}  // namespace lexwend::platform
