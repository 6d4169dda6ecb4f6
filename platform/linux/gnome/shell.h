// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gio/gio.h>

#include "platform/linux/display/front_window.h"
#include "platform/linux/session/buses.h"
#include "platform/linux/session/glib_ref.h"
#include "platform/registration.h"

namespace lexwend::platform {

enum class ShellEventKind {
  appeared,  ///< the extension is there, also again after the screen was locked
  keyPressed,
  layoutsChanged,  ///< others are enabled
};
struct ShellEvent {
  ShellEventKind kind;
  std::uint32_t key = 0;  ///< of a press
};

/// This program's extension of GNOME Shell (packaging/gnome-extension), on the session bus. It answers the
/// agent and nobody else: whoever owns the agent's name. While the screen is locked GNOME has no extensions.
/// GLib's default main context handles its events. Main thread only. A question waits for GNOME Shell, for a
/// second at most.
class GnomeShell {
 public:
  /// The agent takes its name on the bus at once; any other program only learns whether the extension is
  /// there.
  explicit GnomeShell(bool isAgent);
  ~GnomeShell();
  GnomeShell(const GnomeShell&) = delete;
  GnomeShell& operator=(const GnomeShell&) = delete;

  /// Whether the extension is there now.
  bool isThere() const { return isThere_; }
  /// Whether this program is the agent.
  bool isAgent() const { return isAgent_; }
  /// Whether the extension also answers this program.
  bool serves() const { return isThere_ && isAgent_; }
  /// Whether the agent is on the bus, this program or another one.
  bool agentRuns();

  struct Layouts {
    /// The kind of each, as "xkb", and its identifier, as "us+dvorak".
    std::vector<std::pair<std::string, std::string>> sources;
    std::size_t active = 0;
  };
  /// Nothing without the extension, as with the other questions.
  std::optional<Layouts> layouts();
  void selectLayout(std::uint32_t place);
  /// Nothing also where no window has the keyboard.
  std::optional<FrontWindow> frontWindow();
  /// Whether GNOME's screen is locked, which it tells without the extension too.
  bool screenIsLocked();
  /// Whether GNOME writes to its settings which layout its shortcut has selected: it does while IBus runs.
  bool notesLayouts();
  /// The number of the bound key; nothing when somebody else has it.
  std::optional<std::uint32_t> bindKey(const std::string& accelerator);
  void unbindKey(std::uint32_t key);
  /// Calls the function when the extension has told everything that happened before.
  void afterEvents(std::function<void()> then);

  [[nodiscard]] Registration observe(std::function<void(const ShellEvent&)> handler);

 private:
  bool isOwned(const char* name);
  GVariantRef ask(const char* method, GVariant* arguments, const char* answerType);
  void useBus(GDBusConnection* bus);
  void tell(const ShellEvent& event);
  static void heard(GDBusConnection* bus, const char* sender, const char* path, const char* interface,
                    const char* signal, GVariant* arguments, void* self);

  bool isAgent_;
  GObjectRef<GDBusConnection> bus_;
  unsigned subscription_ = 0;
  unsigned watch_ = 0;
  bool isThere_ = false;
  Handlers<std::function<void(const ShellEvent&)>> handlers_;
  BusObservation observation_;
};

}  // namespace lexwend::platform
