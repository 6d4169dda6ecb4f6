// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/registration.h"

namespace lexwend::platform {

struct FrontApplication {
  /// On X11 the window's class, without control characters and cut at 200 characters.
  std::optional<std::string> bundleIdentifier;
};
/// A parsed URL. Opaque.
class Url {
 public:
  virtual ~Url() = default;
};
using UrlRef = std::shared_ptr<const Url>;

/// The user's session. Main thread only. No call waits for another application.
class Workspace {
 public:
  virtual ~Workspace() = default;
  /// The application that has the keyboard; nothing when none has it.
  virtual std::optional<FrontApplication> frontmostApplication() = 0;
  /// Null when the text is no URL. The empty text never is one. A host may accept a relative URL, and may
  /// percent-encode characters that must not occur in one.
  virtual UrlRef urlFromString(std::string_view text) = 0;
  /// Asks the system to open the URL. Does not wait, and does not report a failure.
  virtual void open(const UrlRef& url) = 0;
  /// Calls the handler on the main thread after each wake from sleep.
  [[nodiscard]] virtual Registration observeDidWake(std::function<void()> handler) = 0;
};

/// The service of the installed host.
Workspace& workspace();

}  // namespace lexwend::platform
