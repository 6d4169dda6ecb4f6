// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include <json-glib/json-glib.h>

#include "platform/registration.h"

namespace lexwend::platform {

struct JsonNodeUnref {
  void operator()(JsonNode* node) const { json_node_unref(node); }
};
/// Owns one reference to a node of JSON.
using JsonRef = std::unique_ptr<JsonNode, JsonNodeUnref>;

/// What sway tells unasked (sway-ipc(7)).
enum class SwayEventKind { reload, binding, input, tick };
struct SwayEvent {
  SwayEventKind kind;
  JsonObject* details;  ///< valid during the handler's call only
};

/// The compositor sway, by the socket that SWAYSOCK names: a protocol of JSON messages (sway-ipc(7)). GLib's
/// default main context handles its events. Main thread only. A question waits for sway, for a second at
/// most, and for a tenth of that until it answers again.
class SwayIpc {
 public:
  /// Null when there is no sway or it does not answer.
  static std::shared_ptr<SwayIpc> open();
  ~SwayIpc();
  SwayIpc(const SwayIpc&) = delete;
  SwayIpc& operator=(const SwayIpc&) = delete;

  /// Runs a command; whether sway could.
  bool run(const std::string& command);
  /// The input devices, a list; null when sway does not answer.
  JsonRef inputs();
  /// The windows, a tree; null when sway does not answer.
  JsonRef tree();
  /// Makes sway send a tick with that text, after every event of what has happened before. Does not wait.
  void sendTick(std::string_view text);

  /// The handler sees every event, in order.
  [[nodiscard]] Registration observe(std::function<void(const SwayEvent&)> handler);
  /// Handles the events that have arrived. The main context calls it.
  void handleEvents();

 private:
  class Stream;
  SwayIpc(std::unique_ptr<Stream> questions, std::unique_ptr<Stream> events);
  JsonRef ask(std::uint32_t type, std::string_view payload);

  std::unique_ptr<Stream> questions_;  // null after an answer that did not come
  std::unique_ptr<Stream> events_;
  Handlers<std::function<void(const SwayEvent&)>> handlers_;
  unsigned source_ = 0;  // of the main context
};

/// The text of a member; empty where there is none.
std::string textOf(JsonObject* object, const char* member);

}  // namespace lexwend::platform
