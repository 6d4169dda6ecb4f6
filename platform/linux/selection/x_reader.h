// SPDX-License-Identifier: MIT
#pragma once

#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/display/x11_connection.h"
#include "platform/linux/selection/reader.h"

namespace lexwend::platform {

/// A selection of X by the ICCCM (section 2).
class XClipboardReader : public ClipboardReader {
 public:
  /// Null when there is no display.
  static std::unique_ptr<ClipboardReader> open(std::string_view selection = "CLIPBOARD");
  ~XClipboardReader() override;
  XClipboardReader(const XClipboardReader&) = delete;
  XClipboardReader& operator=(const XClipboardReader&) = delete;

  XApplication application(xcb_window_t window) override { return applicationOf(connection_.get(), window); }
  xcb_window_t ownerOf(std::string_view selection) override { return ownerOf(atom(selection)); }

 private:
  XClipboardReader(XcbConnection connection, xcb_screen_t& screen, std::string_view selection);
  void begin() override;
  xcb_window_t owner() override { return ownerOf(selection_); }
  void giveUp() override { useFreshWindow(); }
  /// Refused where the owner knows no TARGETS.
  Answer readTargetNames(Limits& limits, std::vector<std::string>& names) override;
  Answer convert(const std::string& target, Limits& limits, ClipboardTarget& answer) override;
  void useFreshWindow();
  xcb_window_t ownerOf(xcb_atom_t selection);
  Answer receiveIncrementally(Limits& limits, ClipboardTarget& answer);
  XcbReply<xcb_get_property_reply_t> takeProperty(const Limits& limits);
  XcbReply<xcb_generic_event_t> nextEvent(Clock::time_point deadline);
  bool tellsOfOwnerChange(const xcb_generic_event_t& event) const {
    return eventType(event) == selectionEvent_;
  }
  xcb_atom_t atom(std::string_view name) { return atoms_.atom(name); }
  void learnNames(const std::vector<xcb_atom_t>& atoms);
  std::string nameOf(xcb_atom_t atom);

  XcbConnection connection_;
  xcb_window_t root_;
  xcb_window_t window_ = XCB_WINDOW_NONE;
  /// Windows of reads that ran out of time, where a late answer may still come.
  std::deque<xcb_window_t> retired_;
  AtomCache atoms_;
  std::map<xcb_atom_t, std::string> names_;
  xcb_atom_t selection_;
  xcb_atom_t property_;
  std::optional<std::uint8_t> selectionEvent_;
};

}  // namespace lexwend::platform
