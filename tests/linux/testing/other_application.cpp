// SPDX-License-Identifier: MIT
#include "tests/linux/testing/other_application.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/linux/display/x11_connection.h"
#include "tests/linux/testing/virtual_display.h"

namespace lexwend::platform {
namespace {

using Clock = std::chrono::steady_clock;

xcb_connection_t* connectWithWindow(xcb_window_t& window) {
  int screenNumber = 0;
  xcb_connection_t* connection = xcb_connect(nullptr, &screenNumber);
  EXPECT_EQ(xcb_connection_has_error(connection), 0);
  window = xcb_generate_id(connection);
  const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
  xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, screenOf(connection, screenNumber)->root, 0, 0,
                    1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
  return connection;
}

/// Waits for the next event; null at the deadline.
XcbReply<xcb_generic_event_t> nextEvent(xcb_connection_t* connection, Clock::time_point deadline) {
  for (;;) {
    xcb_flush(connection);
    if (xcb_generic_event_t* event = xcb_poll_for_event(connection)) {
      return XcbReply<xcb_generic_event_t>(event);
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    if (left <= 0 || xcb_connection_has_error(connection) != 0) return nullptr;
    pollfd waited{xcb_get_file_descriptor(connection), POLLIN, 0};
    poll(&waited, 1, static_cast<int>(left));
  }
}

}  // namespace

void sendNotify(xcb_connection_t* connection, const xcb_selection_request_event_t& request,
                xcb_atom_t property) {
  xcb_selection_notify_event_t event{};
  event.response_type = XCB_SELECTION_NOTIFY;
  event.time = request.time;
  event.requestor = request.requestor;
  event.selection = request.selection;
  event.target = request.target;
  event.property = property;
  xcb_send_event(connection, 0, request.requestor, 0, reinterpret_cast<const char*>(&event));
}

CopyingApplication::CopyingApplication(Behaviour behaviour, const std::string& selection,
                                       xcb_timestamp_t time)
    : behaviour_(std::move(behaviour)) {
  EXPECT_EQ(pipe(stopPipe_), 0);
  connection_ = connectWithWindow(window_);
  selection_ = internAtom(connection_, selection);
  std::vector<xcb_intern_atom_cookie_t> cookies;
  for (int i = 0; i < behaviour_.furtherTargets; ++i) {
    const std::string name = "application/x-further-" + std::to_string(i);
    cookies.push_back(xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data()));
  }
  for (const xcb_intern_atom_cookie_t cookie : cookies) {
    const XcbReply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection_, cookie, nullptr));
    furtherTargets_.push_back(reply->atom);
  }
  claim(time);
  thread_ = std::thread(&CopyingApplication::run, this);
}

CopyingApplication::~CopyingApplication() {
  close(stopPipe_[1]);
  thread_.join();
  close(stopPipe_[0]);
  if (!dead_) xcb_disconnect(connection_);
}

void CopyingApplication::claim(xcb_timestamp_t time) {
  xcb_set_selection_owner(connection_, window_, selection_, time);
  roundTrip(connection_);
}

void CopyingApplication::copyAgain() {
  claim(XCB_CURRENT_TIME);
}

bool CopyingApplication::ownsSelection() {
  const XcbReply<xcb_get_selection_owner_reply_t> owner(
      xcb_get_selection_owner_reply(connection_, xcb_get_selection_owner(connection_, selection_), nullptr));
  return owner && owner->owner == window_;
}

std::vector<std::string> CopyingApplication::requests() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return requests_;
}

void CopyingApplication::run() {
  for (;;) {
    xcb_flush(connection_);
    while (const XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(connection_)}) {
      if (eventType(*event) == XCB_SELECTION_REQUEST) {
        serve(reinterpret_cast<const xcb_selection_request_event_t&>(*event));
      } else if (eventType(*event) == XCB_PROPERTY_NOTIFY) {
        dead_ = serveNextPiece(reinterpret_cast<const xcb_property_notify_event_t&>(*event));
      }
      if (dead_) {
        xcb_disconnect(connection_);
        return;
      }
      xcb_flush(connection_);
    }
    pollfd waited[] = {{stopPipe_[0], POLLIN, 0}, {xcb_get_file_descriptor(connection_), POLLIN, 0}};
    // Another thread may have taken the event off the wire with its reply: hence the limit.
    poll(waited, 2, 20);
    if (waited[0].revents != 0) return;
  }
}

void CopyingApplication::serve(const xcb_selection_request_event_t& request) {
  const std::string target = atomName(connection_, request.target);
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    requests_.push_back(target);
  }
  if (behaviour_.deadlyTargets.count(target) != 0) {
    dead_ = true;
    return;
  }
  if (behaviour_.silentTargets.count(target) != 0) return;
  std::this_thread::sleep_for(behaviour_.delay);
  const auto slow = behaviour_.slowTargets.find(target);
  if (slow != behaviour_.slowTargets.end()) std::this_thread::sleep_for(slow->second);
  if (target == "TARGETS" && behaviour_.answersTargets) {
    std::vector<xcb_atom_t> atoms = {internAtom(connection_, "TIMESTAMP"), internAtom(connection_, "TARGETS"),
                                     internAtom(connection_, "MULTIPLE"),
                                     internAtom(connection_, "SAVE_TARGETS")};
    for (const auto& [name, value] : behaviour_.targets) atoms.push_back(internAtom(connection_, name));
    atoms.insert(atoms.end(), furtherTargets_.begin(), furtherTargets_.end());
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, request.requestor, request.property,
                        XCB_ATOM_ATOM, 32, static_cast<std::uint32_t>(atoms.size()), atoms.data());
    sendNotify(connection_, request, request.property);
    return;
  }
  for (const auto& [name, value] : behaviour_.targets) {
    if (name != target || behaviour_.refusedTargets.count(target) != 0) continue;
    const auto refusals = behaviour_.firstRefusals.find(target);
    if (refusals != behaviour_.firstRefusals.end() && refusals->second-- > 0) continue;
    const xcb_atom_t type = internAtom(connection_, value.type);
    if (value.bytes.size() > behaviour_.pieceSize) {
      const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
      xcb_change_window_attributes(connection_, request.requestor, XCB_CW_EVENT_MASK, &events);
      const std::uint32_t lowerBound = 1;
      xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, request.requestor, request.property,
                          internAtom(connection_, "INCR"), 32, 1, &lowerBound);
      piecewise_.push_back({request.requestor, request.property, type, value.format, value.bytes, 0});
    } else {
      xcb_change_property(
          connection_, XCB_PROP_MODE_REPLACE, request.requestor, request.property, type,
          static_cast<std::uint8_t>(value.format),
          static_cast<std::uint32_t>(value.bytes.size() * 8 / static_cast<unsigned>(value.format)),
          value.bytes.data());
    }
    sendNotify(connection_, request, request.property);
    return;
  }
  sendNotify(connection_, request, XCB_ATOM_NONE);
}

/// True when the application dies of it.
bool CopyingApplication::serveNextPiece(const xcb_property_notify_event_t& event) {
  const auto transfer = std::find_if(piecewise_.begin(), piecewise_.end(), [&](const Piecewise& each) {
    return each.requestor == event.window && each.property == event.atom;
  });
  if (event.state != XCB_PROPERTY_DELETE || transfer == piecewise_.end()) return false;
  if (transfer->sentPieces == behaviour_.lastPiece) return false;
  if (transfer->sentPieces++ == behaviour_.deadlyPiece) return true;
  const std::size_t size = std::min(behaviour_.pieceSize, transfer->rest.size());
  xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, event.window, event.atom, transfer->type,
                      static_cast<std::uint8_t>(transfer->format),
                      static_cast<std::uint32_t>(size * 8 / static_cast<unsigned>(transfer->format)),
                      transfer->rest.data());
  transfer->rest.erase(0, size);
  if (size == 0) piecewise_.erase(transfer);
  return false;
}

ManagingApplication::ManagingApplication() : connection_(connectWithWindow(window_)) {
  EXPECT_EQ(pipe(stopPipe_), 0);
  xcb_set_selection_owner(connection_, window_, internAtom(connection_, "CLIPBOARD_MANAGER"),
                          XCB_CURRENT_TIME);
  roundTrip(connection_);
  thread_ = std::thread(&ManagingApplication::run, this);
}

ManagingApplication::~ManagingApplication() {
  close(stopPipe_[1]);
  thread_.join();
  close(stopPipe_[0]);
  xcb_disconnect(connection_);
}

std::map<std::string, SelectionValue> ManagingApplication::saved() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return saved_;
}

void ManagingApplication::run() {
  for (;;) {
    while (const XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(connection_)}) {
      if (eventType(*event) != XCB_SELECTION_REQUEST) continue;
      const auto& request = reinterpret_cast<const xcb_selection_request_event_t&>(*event);
      const XcbReply<xcb_get_property_reply_t> list(xcb_get_property_reply(
          connection_,
          xcb_get_property(connection_, 0, request.requestor, request.property, XCB_ATOM_ATOM, 0, 1000),
          nullptr));
      PastingApplication paster;
      const auto* targets = static_cast<const xcb_atom_t*>(xcb_get_property_value(list.get()));
      for (std::uint32_t i = 0; i < list->value_len; ++i) {
        const std::string target = atomName(connection_, targets[i]);
        const auto value = paster.paste(target);
        const std::lock_guard<std::mutex> lock(mutex_);
        saved_[target] = value.value_or(SelectionValue{});
      }
      sendNotify(connection_, request, request.property);
    }
    xcb_flush(connection_);
    pollfd waited[] = {{stopPipe_[0], POLLIN, 0}, {xcb_get_file_descriptor(connection_), POLLIN, 0}};
    poll(waited, 2, -1);
    if (waited[0].revents != 0) return;
  }
}

PastingApplication::PastingApplication() : connection_(connectWithWindow(window_)) {}

PastingApplication::~PastingApplication() {
  xcb_disconnect(connection_);
}

std::optional<SelectionValue> PastingApplication::take(xcb_atom_t property) {
  const XcbReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
      connection_,
      xcb_get_property(connection_, 1, window_, property, XCB_GET_PROPERTY_TYPE_ANY, 0, 0x1FFFFFFF),
      nullptr));
  if (!reply || reply->type == XCB_ATOM_NONE) return std::nullopt;
  return SelectionValue{atomName(connection_, reply->type), reply->format,
                        std::string(static_cast<const char*>(xcb_get_property_value(reply.get())),
                                    static_cast<std::size_t>(xcb_get_property_value_length(reply.get())))};
}

std::optional<SelectionValue> PastingApplication::paste(const std::string& target,
                                                        std::chrono::milliseconds time) {
  const Clock::time_point deadline = Clock::now() + time;
  const xcb_atom_t property = internAtom(connection_, "PASTED");
  xcb_convert_selection(connection_, window_, internAtom(connection_, "CLIPBOARD"),
                        internAtom(connection_, target), property, XCB_CURRENT_TIME);
  while (const auto event = nextEvent(connection_, deadline)) {
    if (eventType(*event) != XCB_SELECTION_NOTIFY) continue;
    if (reinterpret_cast<const xcb_selection_notify_event_t&>(*event).property == XCB_ATOM_NONE) {
      return std::nullopt;
    }
    auto value = take(property);
    if (!value || value->type != "INCR") return value;
    return receivePieces(deadline);
  }
  return std::nullopt;
}

std::optional<SelectionValue> PastingApplication::takePieces(std::chrono::milliseconds time) {
  auto start = take(internAtom(connection_, "PASTED"));
  if (!start || start->type != "INCR") return start;
  return receivePieces(Clock::now() + time);
}

std::optional<SelectionValue> PastingApplication::receivePieces(Clock::time_point deadline) {
  SelectionValue whole;
  while (const auto event = nextEvent(connection_, deadline)) {
    if (eventType(*event) != XCB_PROPERTY_NOTIFY ||
        reinterpret_cast<const xcb_property_notify_event_t&>(*event).state != XCB_PROPERTY_NEW_VALUE) {
      continue;
    }
    const auto piece = take(internAtom(connection_, "PASTED"));
    if (!piece) continue;
    whole.type = piece->type;
    whole.format = piece->format;
    if (piece->bytes.empty()) return whole;
    whole.bytes += piece->bytes;
  }
  return std::nullopt;
}

std::map<std::string, SelectionValue> PastingApplication::pasteMultiple(
    const std::vector<std::string>& targets) {
  const xcb_atom_t property = internAtom(connection_, "PASTED_PAIRS");
  std::vector<xcb_atom_t> pairs;
  for (const std::string& target : targets) {
    pairs.push_back(internAtom(connection_, target));
    pairs.push_back(internAtom(connection_, "PASTED_" + target));
  }
  xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window_, property,
                      internAtom(connection_, "ATOM_PAIR"), 32, static_cast<std::uint32_t>(pairs.size()),
                      pairs.data());
  xcb_convert_selection(connection_, window_, internAtom(connection_, "CLIPBOARD"),
                        internAtom(connection_, "MULTIPLE"), property, XCB_CURRENT_TIME);
  std::map<std::string, SelectionValue> values;
  const Clock::time_point deadline = Clock::now() + std::chrono::seconds(10);
  while (const auto event = nextEvent(connection_, deadline)) {
    if (eventType(*event) != XCB_SELECTION_NOTIFY) continue;
    const auto answered = take(property);
    if (!answered || answered->bytes.size() != pairs.size() * 4) return values;
    std::memcpy(pairs.data(), answered->bytes.data(), answered->bytes.size());
    for (std::size_t i = 0; i < targets.size(); ++i) {
      if (pairs[2 * i + 1] != XCB_ATOM_NONE) {
        values[targets[i]] = take(pairs[2 * i + 1]).value_or(SelectionValue{});
      }
    }
    return values;
  }
  return values;
}

std::vector<std::string> PastingApplication::targets() {
  std::vector<std::string> names;
  const auto list = paste("TARGETS");
  if (!list) return names;
  std::vector<xcb_atom_t> atoms(list->bytes.size() / 4);
  std::memcpy(atoms.data(), list->bytes.data(), atoms.size() * 4);
  for (const xcb_atom_t atom : atoms) names.push_back(atomName(connection_, atom));
  return names;
}

bool PastingApplication::selectionHasOwner(const std::string& selection) {
  const XcbReply<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(
      connection_, xcb_get_selection_owner(connection_, internAtom(connection_, selection)), nullptr));
  return owner && owner->owner != XCB_WINDOW_NONE;
}

void PastingApplication::pasteAndStop(const std::string& target) {
  xcb_convert_selection(connection_, window_, internAtom(connection_, "CLIPBOARD"),
                        internAtom(connection_, target), internAtom(connection_, "PASTED"), XCB_CURRENT_TIME);
  const Clock::time_point deadline = Clock::now() + std::chrono::seconds(10);
  while (const auto event = nextEvent(connection_, deadline)) {
    if (eventType(*event) == XCB_SELECTION_NOTIFY) return;
  }
  ADD_FAILURE() << "no answer";
}

xcb_timestamp_t PastingApplication::serverTime() {
  xcb_change_property(connection_, XCB_PROP_MODE_APPEND, window_, internAtom(connection_, "TIME"),
                      XCB_ATOM_INTEGER, 32, 0, nullptr);
  while (const auto event = nextEvent(connection_, Clock::now() + std::chrono::seconds(10))) {
    if (eventType(*event) == XCB_PROPERTY_NOTIFY) {
      return reinterpret_cast<const xcb_property_notify_event_t&>(*event).time;
    }
  }
  return XCB_CURRENT_TIME;
}

namespace {

/// The life of a strange client: a question and its text come as one packet, and one packet goes back.
void answerQuestions(int socket) {
  PastingApplication paster;
  std::unique_ptr<CopyingApplication> copier;
  std::unique_ptr<CopyingApplication> manager;
  char packet[4096];
  for (ssize_t size = 0; (size = recv(socket, packet, sizeof packet, 0)) > 0;) {
    std::string answer = "ok";
    switch (packet[0]) {
      case 'c':
        copier = std::make_unique<CopyingApplication>(CopyingApplication::Behaviour{
            {{"UTF8_STRING",
              {"UTF8_STRING", 8, std::string(packet + 1, static_cast<std::size_t>(size) - 1)}}}});
        break;
      case 'p':
        answer =
            ":" + paster.paste("UTF8_STRING").value_or(SelectionValue{}).bytes.substr(0, sizeof packet / 2);
        break;
      case 'r':
        answer = ":" + std::to_string(copier ? copier->requests().size() : 0);
        break;
      case 'm':
        manager = std::make_unique<CopyingApplication>(CopyingApplication::Behaviour{}, "CLIPBOARD_MANAGER");
        break;
      default:
        break;
    }
    if (send(socket, answer.data(), answer.size(), 0) < 0) return;
  }
}

}  // namespace

StrangeClient::StrangeClient() {
  int sockets[2];
  EXPECT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, sockets), 0);
  socket_ = sockets[0];
  process_ = fork();
  if (process_ == 0) {
    close(sockets[0]);
    answerQuestions(sockets[1]);
    _exit(0);
  }
  close(sockets[1]);
}

StrangeClient::~StrangeClient() {
  close(socket_);
  waitpid(process_, nullptr, 0);
}

std::string StrangeClient::ask(char question, const std::string& text) {
  const std::string packet = question + text;
  EXPECT_EQ(send(socket_, packet.data(), packet.size(), 0), static_cast<ssize_t>(packet.size()));
  char answer[4096];
  const ssize_t size = recv(socket_, answer, sizeof answer, 0);
  EXPECT_GT(size, 0);
  return size > 0 ? std::string(answer + 1, static_cast<std::size_t>(size) - 1) : "";
}

std::string atomBytes(const std::string& name) {
  xcb_window_t window = XCB_WINDOW_NONE;
  xcb_connection_t* connection = connectWithWindow(window);
  const xcb_atom_t atom = internAtom(connection, name);
  xcb_disconnect(connection);
  return {reinterpret_cast<const char*>(&atom), sizeof atom};
}

}  // namespace lexwend::platform
