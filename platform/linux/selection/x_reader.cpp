// SPDX-License-Identifier: MIT
#include "platform/linux/selection/x_reader.h"

#include <cstring>
#include <limits>
#include <set>

#include <poll.h>

namespace lexwend::platform {
namespace {

// The most units of four bytes that one request may ask for.
constexpr std::size_t kMostUnits = std::numeric_limits<std::uint32_t>::max() / 4;

// Late answers come within seconds; older windows are given back.
constexpr std::size_t kMaxRetiredWindows = 8;

std::size_t unitBytes(const xcb_get_property_reply_t& reply) {
  return static_cast<std::size_t>(xcb_get_property_value_length(&reply));
}

}  // namespace

std::unique_ptr<ClipboardReader> XClipboardReader::open(std::string_view selection) {
  int screenNumber = 0;
  XcbConnection connection = connectToDisplay(screenNumber);
  xcb_screen_t* screen = connection ? screenOf(connection.get(), screenNumber) : nullptr;
  if (screen == nullptr) return nullptr;
  return std::unique_ptr<ClipboardReader>(new XClipboardReader(std::move(connection), *screen, selection));
}

XClipboardReader::XClipboardReader(XcbConnection connection, xcb_screen_t& screen, std::string_view selection)
    : connection_(std::move(connection)), root_(screen.root), atoms_(connection_.get()) {
  selection_ = atom(selection);
  property_ = atom("_LEXWEND_CLIPBOARD_READ");
  useFreshWindow();
  selectionEvent_ = watchSelection(connection_.get(), root_, selection_);
}

XClipboardReader::~XClipboardReader() = default;

/// An answer that comes after its read was given up would be taken for the answer of a later one, if both
/// went to the same window.
void XClipboardReader::useFreshWindow() {
  xcb_connection_t* c = connection_.get();
  if (window_ != XCB_WINDOW_NONE) {
    retired_.push_back(window_);
    if (retired_.size() > kMaxRetiredWindows) {
      xcb_destroy_window(c, retired_.front());
      retired_.pop_front();
    }
  }
  window_ = xcb_generate_id(c);
  const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
  xcb_create_window(c, XCB_COPY_FROM_PARENT, window_, root_, 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                    XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
}

void XClipboardReader::begin() {
  while (XcbReply<xcb_generic_event_t>(xcb_poll_for_event(connection_.get()))) {
  }
}

ClipboardReader::Answer XClipboardReader::readTargetNames(Limits& limits, std::vector<std::string>& names) {
  ClipboardTarget list;
  const Answer answer = convert("TARGETS", limits, list);
  if (answer != Answer::given) return answer;
  if (list.format != 32) return Answer::refused;
  std::vector<xcb_atom_t> targets(list.bytes.size() / sizeof(xcb_atom_t));
  if (!targets.empty()) std::memcpy(targets.data(), list.bytes.data(), targets.size() * sizeof(xcb_atom_t));
  std::set<xcb_atom_t> seen;
  std::erase_if(targets, [&](xcb_atom_t target) { return !seen.insert(target).second; });
  if (targets.size() > kMaxTargets) return Answer::overBudget;
  learnNames(targets);
  for (const xcb_atom_t target : targets) {
    std::string name = nameOf(target);
    if (!name.empty()) names.push_back(std::move(name));
  }
  return Answer::given;
}

ClipboardReader::Answer XClipboardReader::convert(const std::string& name, Limits& limits,
                                                  ClipboardTarget& answer) {
  const xcb_atom_t target = atom(name);
  xcb_connection_t* c = connection_.get();
  xcb_delete_property(c, window_, property_);
  xcb_convert_selection(c, window_, selection_, target, property_, XCB_CURRENT_TIME);
  xcb_flush(c);
  const Clock::time_point deadline = limits.nextDeadline();
  while (const auto event = nextEvent(deadline)) {
    if (tellsOfOwnerChange(*event)) return Answer::ownerChanged;
    if (eventType(*event) != XCB_SELECTION_NOTIFY) continue;
    const auto& notify = reinterpret_cast<const xcb_selection_notify_event_t&>(*event);
    if (notify.requestor != window_ || notify.target != target) continue;
    if (notify.property == XCB_ATOM_NONE) return Answer::refused;
    const auto reply = takeProperty(limits);
    if (!reply || reply->type == XCB_ATOM_NONE) return Answer::refused;
    if (reply->type == atom("INCR")) return receiveIncrementally(limits, answer);
    const std::size_t size = unitBytes(*reply);
    if (size > limits.bytesLeft || reply->bytes_after != 0) return Answer::overBudget;
    limits.bytesLeft -= size;
    const auto* first = static_cast<const std::byte*>(xcb_get_property_value(reply.get()));
    answer.bytes = Bytes(first, first + size);
    answer.propertyType = nameOf(reply->type);
    answer.format = reply->format;
    return Answer::given;
  }
  return Answer::overBudget;
}

/// Deleting the INCR property has asked for the first piece, and deleting a piece asks for the next; an empty
/// piece is the end (ICCCM 2.7.2).
ClipboardReader::Answer XClipboardReader::receiveIncrementally(Limits& limits, ClipboardTarget& answer) {
  std::vector<std::byte> bytes;
  Clock::time_point deadline = limits.nextDeadline();
  while (const auto event = nextEvent(deadline)) {
    if (tellsOfOwnerChange(*event)) return Answer::ownerChanged;
    if (eventType(*event) != XCB_PROPERTY_NOTIFY) continue;
    const auto& notify = reinterpret_cast<const xcb_property_notify_event_t&>(*event);
    if (notify.window != window_ || notify.atom != property_ || notify.state != XCB_PROPERTY_NEW_VALUE) {
      continue;
    }
    const auto piece = takeProperty(limits);
    if (!piece || piece->type == XCB_ATOM_NONE) continue;
    const std::size_t size = unitBytes(*piece);
    if (answer.propertyType.empty()) {
      answer.propertyType = nameOf(piece->type);
      answer.format = piece->format;
    }
    if (size == 0) {
      answer.bytes = Bytes(std::move(bytes));
      return Answer::given;
    }
    if (size > limits.bytesLeft || piece->bytes_after != 0) return Answer::overBudget;
    limits.bytesLeft -= size;
    deadline = limits.nextDeadline();
    const auto* first = static_cast<const std::byte*>(xcb_get_property_value(piece.get()));
    bytes.insert(bytes.end(), first, first + size);
  }
  return Answer::overBudget;
}

/// No more of it than the limits allow, in units of four bytes; the server deletes it when it has given all.
XcbReply<xcb_get_property_reply_t> XClipboardReader::takeProperty(const Limits& limits) {
  const auto units = static_cast<std::uint32_t>(std::min(limits.bytesLeft / 4 + 1, kMostUnits));
  const auto cookie =
      xcb_get_property(connection_.get(), 1, window_, property_, XCB_GET_PROPERTY_TYPE_ANY, 0, units);
  return XcbReply<xcb_get_property_reply_t>(xcb_get_property_reply(connection_.get(), cookie, nullptr));
}

xcb_window_t XClipboardReader::ownerOf(xcb_atom_t selection) {
  const auto cookie = xcb_get_selection_owner(connection_.get(), selection);
  const XcbReply<xcb_get_selection_owner_reply_t> reply(
      xcb_get_selection_owner_reply(connection_.get(), cookie, nullptr));
  return reply ? reply->owner : static_cast<xcb_window_t>(XCB_WINDOW_NONE);
}

/// Null at the deadline and when the connection is gone.
XcbReply<xcb_generic_event_t> XClipboardReader::nextEvent(Clock::time_point deadline) {
  xcb_connection_t* c = connection_.get();
  for (;;) {
    if (xcb_generic_event_t* event = xcb_poll_for_event(c)) return XcbReply<xcb_generic_event_t>(event);
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
    if (left.count() <= 0 || xcb_connection_has_error(c) != 0) return nullptr;
    pollfd waited{xcb_get_file_descriptor(c), POLLIN, 0};
    poll(&waited, 1, static_cast<int>(left.count()));
  }
}

/// Asks for all unknown names at once.
void XClipboardReader::learnNames(const std::vector<xcb_atom_t>& atoms) {
  std::vector<std::pair<xcb_atom_t, xcb_get_atom_name_cookie_t>> asked;
  for (const xcb_atom_t atom : atoms) {
    if (names_.count(atom) == 0) asked.emplace_back(atom, xcb_get_atom_name(connection_.get(), atom));
  }
  for (const auto& [atom, cookie] : asked) {
    const XcbReply<xcb_get_atom_name_reply_t> reply(
        xcb_get_atom_name_reply(connection_.get(), cookie, nullptr));
    if (!reply) continue;
    names_[atom] = {xcb_get_atom_name_name(reply.get()),
                    static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get()))};
  }
}

std::string XClipboardReader::nameOf(xcb_atom_t atom) {
  const auto known = names_.find(atom);
  if (known != names_.end()) return known->second;
  std::string name = atomName(connection_.get(), atom);
  names_.emplace(atom, name);
  return name;
}

}  // namespace lexwend::platform
