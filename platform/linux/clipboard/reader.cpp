// SPDX-License-Identifier: MIT
#include "platform/linux/clipboard/reader.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <set>

#include <poll.h>

#include "platform/linux/display/latin1.h"

namespace lexwend::platform {
namespace {

// The most units of four bytes that one request may ask for; the server gives what there is.
constexpr std::uint32_t kWholeProperty = std::numeric_limits<std::uint32_t>::max() / 4;

// Late answers come within seconds; older windows are given back.
constexpr std::size_t kMaxRetiredWindows = 8;

std::size_t unitBytes(const xcb_get_property_reply_t& reply) {
  return static_cast<std::size_t>(xcb_get_property_value_length(&reply));
}

}  // namespace

std::unique_ptr<ClipboardReader> ClipboardReader::open(std::string_view selection) {
  int screenNumber = 0;
  XcbConnection connection = connectToDisplay(screenNumber);
  xcb_screen_t* screen = connection ? screenOf(connection.get(), screenNumber) : nullptr;
  if (screen == nullptr) return nullptr;
  return std::unique_ptr<ClipboardReader>(new ClipboardReader(std::move(connection), *screen, selection));
}

ClipboardReader::ClipboardReader(XcbConnection connection, xcb_screen_t& screen, std::string_view selection)
    : connection_(std::move(connection)), root_(screen.root), atoms_(connection_.get()) {
  selection_ = atom(selection);
  property_ = atom("_LEXWEND_CLIPBOARD_READ");
  useFreshWindow();
  selectionEvent_ = watchSelection(connection_.get(), root_, selection_);
}

ClipboardReader::~ClipboardReader() = default;

/// An answer that comes after its read was given up would be taken for the answer of a later one, if both
/// went to the same window.
void ClipboardReader::useFreshWindow() {
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

ClipboardReader::Result ClipboardReader::readAll(const Budget& budget) {
  const Clock::time_point end = Clock::now() + budget.time;
  while (XcbReply<xcb_generic_event_t>(xcb_poll_for_event(connection_.get()))) {
    // forgotten: what happened before this read is of no interest
  }
  for (;;) {
    if (selectionOwner() == XCB_WINDOW_NONE) {
      return {Outcome::noOwner, {}};
    }
    Limits limits{end, budget.silence, budget.bytes};
    Result result;
    switch (readTargets(limits, result.contents)) {
      case Answer::given:
      case Answer::refused:
        result.outcome = Outcome::complete;
        return result;
      case Answer::overBudget:
        useFreshWindow();
        result.outcome = Outcome::overBudget;
        return result;
      case Answer::ownerChanged:
        useFreshWindow();
        break;
    }
    if (Clock::now() >= end) {
      return {Outcome::overBudget, {}};
    }
  }
}

ClipboardReader::Answer ClipboardReader::readTargets(Limits& limits, ClipboardContents& contents) {
  ClipboardTarget list;
  const Answer listAnswer = convert(atom("TARGETS"), limits, list);
  std::vector<xcb_atom_t> targets;
  if (listAnswer == Answer::given && list.format == 32) {
    targets.resize(list.bytes->size() / sizeof(xcb_atom_t));
    if (!targets.empty()) {
      std::memcpy(targets.data(), list.bytes->data(), targets.size() * sizeof(xcb_atom_t));
    }
  } else if (listAnswer == Answer::given || listAnswer == Answer::refused) {
    targets = {atom("UTF8_STRING"), atom("STRING")};  // an owner too old for TARGETS
  } else {
    return listAnswer;
  }
  std::set<xcb_atom_t> seen;
  for (const xcb_atom_t target : targets) {
    const std::string name = nameOf(target);
    if (name.empty() || isProtocolTarget(name) || !seen.insert(target).second) continue;
    ClipboardTarget entry;
    entry.name = name;
    const Answer answer = convert(target, limits, entry);
    if (answer == Answer::given) {
      contents.push_back(std::move(entry));
    } else if (answer != Answer::refused) {
      return answer;
    }
  }
  return Answer::given;
}

std::optional<std::string> ClipboardReader::readText(const Budget& budget) {
  const Clock::time_point end = Clock::now() + budget.time;
  while (XcbReply<xcb_generic_event_t>(xcb_poll_for_event(connection_.get()))) {
    // as in readAll()
  }
  for (const char* target : {"UTF8_STRING", "text/plain;charset=utf-8", "STRING"}) {
    Answer answer = Answer::ownerChanged;
    ClipboardTarget text;
    while (answer == Answer::ownerChanged && Clock::now() < end) {
      if (selectionOwner() == XCB_WINDOW_NONE) return std::nullopt;
      Limits limits{end, budget.silence, budget.bytes};
      text = {};
      answer = convert(atom(target), limits, text);
      if (answer == Answer::ownerChanged) useFreshWindow();
    }
    if (answer == Answer::given && text.format == 8) {
      const std::string bytes(reinterpret_cast<const char*>(text.bytes->data()), text.bytes->size());
      return text.propertyType == "STRING" ? utf8FromLatin1(bytes) : bytes;
    }
    if (answer == Answer::overBudget || answer == Answer::ownerChanged) {
      useFreshWindow();
      return std::nullopt;
    }
  }
  return std::nullopt;
}

ClipboardReader::Answer ClipboardReader::convert(xcb_atom_t target, Limits& limits, ClipboardTarget& answer) {
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
    const auto reply = takeProperty();
    if (!reply || reply->type == XCB_ATOM_NONE) return Answer::refused;
    if (reply->type == atom("INCR")) return receiveIncrementally(limits, answer);
    const std::size_t size = unitBytes(*reply);
    if (size > limits.bytesLeft) return Answer::overBudget;
    limits.bytesLeft -= size;
    const auto* first = static_cast<const std::byte*>(xcb_get_property_value(reply.get()));
    answer.bytes = std::make_shared<const Bytes>(first, first + size);
    answer.propertyType = nameOf(reply->type);
    answer.format = reply->format;
    return Answer::given;
  }
  return Answer::overBudget;
}

/// Deleting the INCR property has asked for the first piece, and deleting a piece asks for the next; an empty
/// piece is the end (ICCCM 2.7.2).
ClipboardReader::Answer ClipboardReader::receiveIncrementally(Limits& limits, ClipboardTarget& answer) {
  auto bytes = std::make_shared<Bytes>();
  Clock::time_point deadline = limits.nextDeadline();
  while (const auto event = nextEvent(deadline)) {
    if (tellsOfOwnerChange(*event)) return Answer::ownerChanged;
    if (eventType(*event) != XCB_PROPERTY_NOTIFY) continue;
    const auto& notify = reinterpret_cast<const xcb_property_notify_event_t&>(*event);
    if (notify.window != window_ || notify.atom != property_ || notify.state != XCB_PROPERTY_NEW_VALUE) {
      continue;
    }
    const auto piece = takeProperty();
    if (!piece || piece->type == XCB_ATOM_NONE) continue;
    const std::size_t size = unitBytes(*piece);
    if (answer.propertyType.empty()) {
      answer.propertyType = nameOf(piece->type);
      answer.format = piece->format;
    }
    if (size == 0) {
      answer.bytes = std::move(bytes);
      return Answer::given;
    }
    if (size > limits.bytesLeft) return Answer::overBudget;
    limits.bytesLeft -= size;
    deadline = limits.nextDeadline();
    const auto* first = static_cast<const std::byte*>(xcb_get_property_value(piece.get()));
    bytes->insert(bytes->end(), first, first + size);
  }
  return Answer::overBudget;
}

XcbReply<xcb_get_property_reply_t> ClipboardReader::takeProperty() {
  const auto cookie = xcb_get_property(connection_.get(), 1, window_, property_, XCB_GET_PROPERTY_TYPE_ANY, 0,
                                       kWholeProperty);
  return XcbReply<xcb_get_property_reply_t>(xcb_get_property_reply(connection_.get(), cookie, nullptr));
}

xcb_window_t ClipboardReader::selectionOwner() {
  const auto cookie = xcb_get_selection_owner(connection_.get(), selection_);
  const XcbReply<xcb_get_selection_owner_reply_t> reply(
      xcb_get_selection_owner_reply(connection_.get(), cookie, nullptr));
  return reply ? reply->owner : static_cast<xcb_window_t>(XCB_WINDOW_NONE);
}

/// Null at the deadline and when the connection is gone.
XcbReply<xcb_generic_event_t> ClipboardReader::nextEvent(Clock::time_point deadline) {
  xcb_connection_t* c = connection_.get();
  for (;;) {
    if (xcb_generic_event_t* event = xcb_poll_for_event(c)) return XcbReply<xcb_generic_event_t>(event);
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
    if (left.count() <= 0 || xcb_connection_has_error(c) != 0) return nullptr;
    pollfd waited{xcb_get_file_descriptor(c), POLLIN, 0};
    poll(&waited, 1, static_cast<int>(left.count()));
  }
}

std::string ClipboardReader::nameOf(xcb_atom_t atom) {
  const auto known = names_.find(atom);
  if (known != names_.end()) return known->second;
  std::string name = atomName(connection_.get(), atom);
  names_.emplace(atom, name);
  return name;
}

}  // namespace lexwend::platform
