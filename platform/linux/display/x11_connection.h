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
#include <xcb/xcb_ewmh.h>

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

/// Opens a connection to the display that DISPLAY names. Null when there is none. `screenNumber` receives the
/// number of the default screen. Blocks until the server has answered.
XcbConnection connectToDisplay(int& screenNumber);
/// The screen with that number; null when the server has none.
xcb_screen_t* screenOf(xcb_connection_t* connection, int screenNumber);
/// The atom of a name; XCB_ATOM_NONE when the connection is broken. Blocks for one round trip.
xcb_atom_t internAtom(xcb_connection_t* connection, std::string_view name);
/// The name of an atom; empty when the server knows no such atom. Blocks for one round trip.
std::string atomName(xcb_connection_t* connection, xcb_atom_t atom);

/// Selects the XFIXES notifications about the owner of a selection: a new owner, and the end of the old one.
/// Returns their event type; nothing without XFIXES. Blocks for one round trip. The server has selected them
/// when it answers the next request.
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

/// The agent's connection to the X server. GLib's default main context watches it and handles its events
/// while it lives. Main thread only. A method that asks the server blocks for a few round trips. When the
/// connection is broken, it answers as if there were no such thing.
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

  /// Connects to the display that DISPLAY names. Null when there is none. Blocks until the server has
  /// answered.
  static std::shared_ptr<X11Connection> open();
  ~X11Connection();
  X11Connection(const X11Connection&) = delete;
  X11Connection& operator=(const X11Connection&) = delete;

  xcb_connection_t* get() const { return connection_.get(); }
  xcb_window_t root() const { return root_; }
  /// The atom of a name. The first call for a name blocks for one round trip.
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
  /// Selects the events that announce a new keymap. isKeymapChange() recognises them.
  void selectKeymapEvents();
  bool isKeymapChange(const xcb_generic_event_t& event) const;
  /// Handles the events that have arrived. The main context calls it; a test may.
  void dispatchPending();

  /// The window that has the keyboard: _NET_ACTIVE_WINDOW (EWMH), or the input focus when there is no window
  /// manager. XCB_WINDOW_NONE when there is none.
  xcb_window_t activeWindow();
  /// The window that receives typed keys; XCB_WINDOW_NONE when there is none.
  xcb_window_t inputFocus();
  /// _NET_WM_PID (EWMH) of that window; nothing when the window has none.
  std::optional<std::uint32_t> activeWindowProcess();
  /// Asks the window manager to focus and raise a window (_NET_ACTIVE_WINDOW, EWMH). The source indication is
  /// 2, as of a pager: the request then counts as the user's, whatever the user last did elsewhere. Does not
  /// wait for the window manager.
  void activate(xcb_window_t window);
  /// The class part of WM_CLASS (Latin-1 by the ICCCM), in UTF-8. It is that of the window or of its nearest
  /// ancestor that has one.
  std::optional<std::string> windowClass(xcb_window_t window);
  std::optional<std::string> activeWindowClass() { return windowClass(activeWindow()); }
  /// The value of a property of any type with format 8 or 32, at most `maxBytes` of it. Nothing when the
  /// property does not exist.
  std::optional<std::string> property(xcb_window_t window, xcb_atom_t name, std::uint32_t maxBytes = 65536);

 private:
  struct Source;
  X11Connection(XcbConnection connection, int screenNumber, xcb_window_t root);
  void queryExtensions();
  void watch();

  XcbConnection connection_;
  int screenNumber_;
  xcb_window_t root_;
  AtomCache atoms_;
  xcb_ewmh_connection_t ewmh_{};
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
