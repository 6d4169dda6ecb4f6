// SPDX-License-Identifier: MIT
// usage: lexwend-clipboard [TIME]
//
// Takes the clipboard over from the agent that ends, with all its types, and serves it until somebody else
// copies or the session is over. GNOME keeps one type of what a program has copied. TIME is one of the X
// server's: the clipboard is taken over by X, unless somebody has copied since then. Without it the clipboard
// is taken over by mutter's remote control.
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <optional>
#include <thread>
#include <utility>

#include <gio/gio.h>
#include <sys/prctl.h>
#include <unistd.h>

#include "platform/linux/gnome/remote_desktop.h"
#include "platform/linux/gnome/selections.h"
#include "platform/linux/selection/selections.h"
#include "platform/linux/selection/targets.h"
#include "platform/linux/session/buses.h"

using lexwend::platform::ClipboardContents;
using lexwend::platform::ClipboardReader;
using lexwend::platform::MutterRemoteDesktop;
using lexwend::platform::SelectionOwner;
using lexwend::platform::Selections;

namespace {

/// The agent serves at once. It waits for two seconds.
constexpr ClipboardReader::Budget kBudget{.time = std::chrono::milliseconds(1500),
                                          .silence = std::chrono::milliseconds(1000),
                                          .bytes = std::size_t{256} * 1024 * 1024};

/// What the selections hold.
std::optional<ClipboardContents> contentsOf(const Selections& selections) {
  const auto reader = selections.openReader("CLIPBOARD");
  if (!reader) return std::nullopt;
  auto result = reader->readAll(kBudget);
  return result.outcome == ClipboardReader::Outcome::complete ? std::optional(std::move(result.contents))
                                                              : std::nullopt;
}

void ignoreChange(const SelectionOwner::Change& /*change*/) {}

/// Returns when somebody else owns it.
void claimAndServe(SelectionOwner& owner, const ClipboardContents& contents, xcb_timestamp_t time) {
  owner.claim(contents, time);
  while (owner.connected() && owner.owns()) {
    owner.wait(-1, std::nullopt);
    owner.handleEvents();
  }
}

int keepByX(xcb_timestamp_t time) {
  const Selections selections = lexwend::platform::selectionsOfX();
  const auto contents = contentsOf(selections);
  const auto owner = selections.openOwner(ignoreChange);
  if (!contents || !owner) return EXIT_FAILURE;
  claimAndServe(*owner, *contents, time);
  return EXIT_SUCCESS;
}

/// The session of remote control lasts as long as this program.
int keepBySession() {
  const auto remote = std::make_shared<MutterRemoteDesktop>();
  if (!remote->open()) return EXIT_FAILURE;
  const Selections selections = lexwend::platform::selectionsOfMutter(remote, {}, {});
  const std::shared_ptr<SelectionOwner> owner = selections.openOwner(ignoreChange);
  const auto time = owner->serverTime();
  const auto contents = contentsOf(selections);
  if (!contents) return EXIT_FAILURE;
  g_bus_watch_name_on_connection(
      lexwend::platform::sessionBus(), "org.gnome.Mutter.RemoteDesktop", G_BUS_NAME_WATCHER_FLAGS_NONE,
      nullptr, [](GDBusConnection*, const char*, void*) { _exit(EXIT_SUCCESS); }, nullptr, nullptr);
  std::thread([owner, contents, time] {
    claimAndServe(*owner, *contents, time);
    _exit(EXIT_SUCCESS);
  }).detach();
  g_main_loop_run(g_main_loop_new(nullptr, FALSE));
  return EXIT_SUCCESS;
}

}  // namespace

int main(int count, char** arguments) {
  ::prctl(PR_SET_DUMPABLE, 0);
  std::signal(SIGPIPE, SIG_IGN);  // who fetches may go meanwhile
  if (count < 2) return keepBySession();
  return keepByX(static_cast<xcb_timestamp_t>(std::strtoul(arguments[1], nullptr, 10)));
}
