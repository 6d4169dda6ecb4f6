// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include <gio/gio.h>

#include "platform/linux/selection/targets.h"
#include "platform/linux/session/glib_ref.h"

namespace lexwend::platform {

/// Keys and the clipboard by a session of mutter's remote control (org.gnome.Mutter.RemoteDesktop). While it
/// is open GNOME shows the orange sign of a shared screen, by which the user can end it; the next open()
/// begins another.
///
/// Any thread, except where it is said. A call waits for mutter, for a second at most.
class MutterRemoteDesktop {
 public:
  using Clock = std::chrono::steady_clock;

  MutterRemoteDesktop();
  ~MutterRemoteDesktop();
  MutterRemoteDesktop(const MutterRemoteDesktop&) = delete;
  MutterRemoteDesktop& operator=(const MutterRemoteDesktop&) = delete;

  /// Whether mutter offers it to programs of this session. Main thread only.
  static bool isOffered();

  /// Opens the session, unless it is open. False when mutter refuses. Main thread only.
  bool open();
  void close();
  /// Closes the session when it was not used for so long, and nobody uses it from then on.
  void closeIfUnusedFor(std::chrono::milliseconds time);
  /// Waits until mutter has told what happened before.
  void settle();
  bool isOpen() const;
  /// Somebody uses it now.
  void noteUse();
  /// When a key or the clipboard was last used.
  Clock::time_point lastUse() const;

  bool playKey(std::uint16_t evdevKey, bool down);

  /// What stands on the clipboard.
  struct Offer {
    std::vector<std::string> types;
    /// What this session has put there, as its owner has noted it; null where somebody else has.
    std::shared_ptr<const ClipboardContents> own;
  };
  /// Null while the clipboard is empty or the session is closed.
  std::shared_ptr<const Offer> offer() const;
  /// A descriptor from which the contents of that type can be read; -1 when nobody gives them. Mutter ends a
  /// read a moment after its last byte, and allows no other before that: it is waited for, until that time at
  /// most.
  int read(const std::string& type, Clock::time_point until);

  /// From now on the clipboard offers these contents; fetches are told as events.
  bool own(std::shared_ptr<const ClipboardContents> contents);

  enum class EventKind {
    opened,
    changed,  ///< of the clipboard's owner
    fetch,    ///< somebody wants what is owned
    closed,
  };
  struct Event {
    EventKind kind;
    Clock::time_point time;
    bool isEmpty = false;      ///< of a change: the clipboard is
    bool isOwn = false;        ///< of a change: to this session
    bool isInitial = false;    ///< of a change: it is what stood there when the session was opened
    std::string type{};        ///< of a fetch
    std::uint32_t serial = 0;  ///< of a fetch
  };
  /// Readable while there are events.
  int descriptor() const { return wakeDescriptor_; }
  std::vector<Event> takeEvents();
  /// A descriptor to write what a fetch wants; -1 when it is over.
  int write(std::uint32_t serial);
  void finishWrite(std::uint32_t serial, bool isWritten);

 private:
  /// What a session consists of; null members while there is none.
  struct Session {
    std::shared_ptr<GDBusConnection> bus;
    std::string path;
  };

  Session session() const;
  bool ask(const Session& session, const char* method, GVariant* arguments);
  int askForDescriptor(const char* method, GVariant* arguments, GError** error = nullptr);
  void note(Event event);
  void forget();
  static GDBusMessage* heard(GDBusConnection* bus, GDBusMessage* message, gboolean incoming, void* self);
  void handle(GDBusMessage* message);

  int wakeDescriptor_;
  unsigned filter_ = 0;        // of the main thread
  Session filteredSession_{};  // of the main thread
  mutable std::mutex mutex_;
  // Under the mutex.
  Session session_;
  bool isOpening_ = false;
  Clock::time_point lastUse_;
  std::vector<Event> events_;
  std::shared_ptr<const Offer> offer_;
  std::shared_ptr<const ClipboardContents> owned_;
};

}  // namespace lexwend::platform
