// SPDX-License-Identifier: MIT
#pragma once

#include <gio/gio.h>

/// The message buses of the user and of the machine. Main thread only; the connections are GDBus's shared
/// ones and belong to it.
namespace lexwend::platform {

/// How long a peer on a bus may take to answer before it counts as absent, in milliseconds.
inline constexpr int kBusCallTimeout = 1000;

/// The session bus; null when there is none, or none that lets the program in within kBusCallTimeout. Never
/// starts one, and the loss of the bus does not end the process. Waits at the first call only.
GDBusConnection* sessionBus();
/// The system bus, on the same terms.
GDBusConnection* systemBus();

}  // namespace lexwend::platform
