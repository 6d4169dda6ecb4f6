// SPDX-License-Identifier: MIT
#include "platform/linux/sway/front_window.h"

namespace lexwend::platform {
namespace {

constexpr std::uint16_t kUnknownKey = 240;  // KEY_UNKNOWN of the kernel
constexpr int kXOffset = 8;

FrontWindow windowIn(JsonObject* node) {
  FrontWindow window{json_object_get_int_member_with_default(node, "id", 0), std::nullopt, std::nullopt};
  const gint64 process = json_object_get_int_member_with_default(node, "pid", 0);
  if (process > 0) window.process = static_cast<std::uint32_t>(process);
  if (std::string identifier = textOf(node, "app_id"); !identifier.empty()) {
    window.windowClass = std::move(identifier);
  } else if (json_object_has_member(node, "window_properties") != FALSE) {
    window.windowClass = textOf(json_object_get_object_member(node, "window_properties"), "class");
  }
  return window;
}

std::optional<FrontWindow> focusedIn(JsonObject* node) {
  const bool isWindow = json_object_has_member(node, "pid") != FALSE;
  if (isWindow && json_object_get_boolean_member_with_default(node, "focused", FALSE) != FALSE) {
    return windowIn(node);
  }
  for (const char* list : {"nodes", "floating_nodes"}) {
    if (json_object_has_member(node, list) == FALSE) continue;
    JsonArray* children = json_object_get_array_member(node, list);
    for (guint i = 0; i < json_array_get_length(children); ++i) {
      if (auto window = focusedIn(json_array_get_object_element(children, i))) return window;
    }
  }
  return std::nullopt;
}

}  // namespace

std::optional<FocusKey> focusKeyOf(const std::shared_ptr<SwayIpc>& sway, std::int64_t window) {
  const std::string key = std::to_string(kUnknownKey + kXOffset);
  // While a program has the compositor's shortcuts to itself as well.
  const std::string options = " --inhibited ";
  const bool isBound =
      sway->run("bindcode --no-warn" + options + key + " [con_id=" + std::to_string(window) + "] focus");
  if (!isBound) return std::nullopt;
  return FocusKey{kUnknownKey,
                  Registration([sway, options, key] { sway->run("unbindcode" + options + key); })};
}

std::optional<FrontWindow> frontWindowOf(SwayIpc& sway) {
  const JsonRef tree = sway.tree();
  return tree ? focusedIn(json_node_get_object(tree.get())) : std::nullopt;
}

}  // namespace lexwend::platform
