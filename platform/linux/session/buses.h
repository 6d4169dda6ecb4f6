// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>

#include <gio/gio.h>

/// The message buses of the user and of the machine. Main thread only. A connection is made in the background
/// and is made again when it was lost, from GLib's default main context. A bus that is not there is looked
/// for again after a second, then after two, and so on up to half a minute. No bus is ever started.
namespace lexwend::platform {

/// How long a peer on a bus may take to answer before it counts as absent, in milliseconds.
inline constexpr int kBusCallTimeout = 1000;

/// Hears of a bus: the connection, or null when there is none any more.
using BusHandler = std::function<void(GDBusConnection*)>;
/// The observation ends with it.
using BusObservation = std::shared_ptr<const BusHandler>;

/// The session bus; null while the program is not connected to it. The first call waits for the connection
/// for kBusCallTimeout at most, no other call waits. The connection stays valid until an observer is told of
/// its loss.
GDBusConnection* sessionBus();
/// The system bus, on the same terms.
GDBusConnection* systemBus();

/// Tells the handler of the connection that there is now (or null), and then of each change. Does not wait.
[[nodiscard]] BusObservation observeSessionBus(BusHandler handler);
[[nodiscard]] BusObservation observeSystemBus(BusHandler handler);

}  // namespace lexwend::platform
