// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <xcb/xcb.h>

namespace lexwend::platform {

struct FreeDeleter {
  void operator()(void* pointer) const { std::free(pointer); }
};
/// Owns what XCB allocated: a reply, an error or an event.
template <typename T>
using XcbReply = std::unique_ptr<T, FreeDeleter>;

/// The response type of an event without the bit that says that a client sent it.
inline std::uint8_t eventType(const xcb_generic_event_t& event) {
  return event.response_type & 0x7f;
}

struct XcbDisconnect {
  void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};
using XcbConnection = std::unique_ptr<xcb_connection_t, XcbDisconnect>;

/// Opens a connection to the display that DISPLAY names; null when there is none. `screenNumber` receives
/// the number of the default screen.
XcbConnection connectToDisplay(int& screenNumber);
/// The screen with that number; null when the server has none.
xcb_screen_t* screenOf(xcb_connection_t* connection, int screenNumber);
/// XCB_ATOM_NONE when the connection is gone.
xcb_atom_t internAtom(xcb_connection_t* connection, std::string_view name);
/// Empty when the server knows no such atom.
std::string atomName(xcb_connection_t* connection, xcb_atom_t atom);

/// Selects the notifications of XFIXES for every claim of a selection and the end of its owner, and gives
/// their event type; nothing without XFIXES. They are in force with the next reply.
std::optional<std::uint8_t> watchSelection(xcb_connection_t* connection, xcb_window_t root,
                                           xcb_atom_t selection);

/// The atoms of a connection, each name interned once.
class AtomCache {
 public:
  explicit AtomCache(xcb_connection_t* connection) : connection_(connection) {}
  xcb_atom_t atom(std::string_view name);

 private:
  xcb_connection_t* connection_;
  std::map<std::string, xcb_atom_t, std::less<>> atoms_;
};

/// The agent's connection to the X server. Its events are handled in the default main context of GLib, where
/// the connection is watched for as long as it lives. Main thread only.
class X11Connection {
 public:
  using EventHandler = std::function<void(const xcb_generic_event_t&)>;

  /// An observer of events; its destruction ends the observation.
  class Observation {
   public:
    Observation() = default;
    explicit Observation(std::shared_ptr<EventHandler> handler) : handler_(std::move(handler)) {}

   private:
    std::shared_ptr<EventHandler> handler_;
  };

  /// Connects to the display that DISPLAY names; null when there is none.
  static std::shared_ptr<X11Connection> open();
  ~X11Connection();
  X11Connection(const X11Connection&) = delete;
  X11Connection& operator=(const X11Connection&) = delete;

  xcb_connection_t* get() const { return connection_.get(); }
  xcb_window_t root() const { return root_; }
  /// The atom of a name, interned once.
  xcb_atom_t atom(std::string_view name) { return atoms_.atom(name); }
  void flush() { xcb_flush(connection_.get()); }

  bool hasXTest() const { return hasXTest_; }
  bool hasXFixes() const { return hasXFixes_; }
  bool hasXkb() const { return hasXkb_; }
  /// XInput 2.2 or later.
  bool hasXInput2() const { return hasXInput2_; }
  std::uint8_t xInputOpcode() const { return xInputOpcode_; }

  /// The handler sees every event of this connection, in order.
  [[nodiscard]] Observation observe(EventHandler handler);
  /// Adds to the events of the root window that this connection selects.
  void selectRootEvents(std::uint32_t eventMask);
  /// Selects the events that announce another keymap; isKeymapChange() tells them.
  void selectKeymapEvents();
  bool isKeymapChange(const xcb_generic_event_t& event) const;
  /// Handles what has arrived; the main context calls it, and so may a test.
  void dispatchPending();

  /// The window that has the keyboard: _NET_ACTIVE_WINDOW, without a window manager the input focus;
  /// XCB_WINDOW_NONE when there is none.
  xcb_window_t activeWindow();
  /// _NET_WM_PID (EWMH) of that window; nothing when it does not tell.
  std::optional<std::uint32_t> activeWindowProcess();
  /// Gives that window the keyboard and brings it to the front, as a wish of the user's: whatever he last did
  /// elsewhere does not count against it.
  void activate(xcb_window_t window);
  /// The class part of WM_CLASS (Latin-1 by the ICCCM) in UTF-8, of the window or the nearest ancestor that
  /// has one.
  std::optional<std::string> windowClass(xcb_window_t window);
  std::optional<std::string> activeWindowClass() { return windowClass(activeWindow()); }
  /// The whole value of a property (any type, format 8 or 32), at most `maxBytes`; nothing when it is not
  /// there.
  std::optional<std::string> property(xcb_window_t window, xcb_atom_t name, std::uint32_t maxBytes = 65536);

 private:
  struct Source;
  explicit X11Connection(XcbConnection connection, xcb_window_t root);
  void queryExtensions();
  void watch();

  XcbConnection connection_;
  xcb_window_t root_;
  AtomCache atoms_;
  std::vector<std::weak_ptr<EventHandler>> observers_;
  std::uint32_t rootEventMask_ = 0;
  Source* source_ = nullptr;
  bool hasXTest_ = false;
  bool hasXFixes_ = false;
  bool hasXkb_ = false;
  bool hasXInput2_ = false;
  std::uint8_t xkbFirstEvent_ = 0;
  std::uint8_t xInputOpcode_ = 0;
};

}  // namespace lexwend::platform
