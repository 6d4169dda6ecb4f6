// SPDX-License-Identifier: MIT
#include "platform/linux/clipboard/owner.h"

#include <algorithm>
#include <csignal>
#include <cstring>

#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace lexwend::platform {
namespace {

// Longer contents are sent in pieces of this size; what other programs do as well, and small enough for every
// server's request limit.
constexpr std::size_t kPieceSize = std::size_t{256} * 1024;
// Room for the fields of the request beside the data.
constexpr std::size_t kRequestOverhead = 64;

// A requestor that takes no piece for so long is gone or stuck.
constexpr std::chrono::seconds kStalledTransfer{10};

// A MULTIPLE request names pairs of targets and properties; nobody asks for more than a few dozen.
constexpr std::uint32_t kMaxMultipleUnits = 4096;

constexpr std::uint32_t kRequestorEvents = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;

constexpr int kWaitForever = -1;

}  // namespace

std::unique_ptr<ClipboardOwner> ClipboardOwner::open(std::chrono::milliseconds handOverTime,
                                                     std::chrono::milliseconds fetchTime) {
  int screenNumber = 0;
  XcbConnection connection = connectToDisplay(screenNumber);
  xcb_screen_t* screen = connection ? screenOf(connection.get(), screenNumber) : nullptr;
  if (screen == nullptr) return nullptr;
  const auto selectionEvent =
      watchSelection(connection.get(), screen->root, internAtom(connection.get(), "CLIPBOARD"));
  if (!selectionEvent) return nullptr;
  return std::unique_ptr<ClipboardOwner>(
      new ClipboardOwner(std::move(connection), *screen, *selectionEvent, handOverTime, fetchTime));
}

ClipboardOwner::ClipboardOwner(XcbConnection connection, xcb_screen_t& screen, std::uint8_t selectionEvent,
                               std::chrono::milliseconds handOverTime, std::chrono::milliseconds fetchTime)
    : connection_(std::move(connection)),
      root_(screen.root),
      window_(xcb_generate_id(connection_.get())),
      handOverTime_(handOverTime),
      fetchTime_(fetchTime),
      selectionEvent_(selectionEvent),
      atoms_(connection_.get()),
      wakeDescriptor_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  xcb_connection_t* c = connection_.get();
  pieceSize_ = std::min(kPieceSize, std::size_t{xcb_get_maximum_request_length(c)} * 4 - kRequestOverhead);
  clipboard_ = atom("CLIPBOARD");
  timeProperty_ = atom("_LEXWEND_TIME");
  const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
  xcb_create_window(c, XCB_COPY_FROM_PARENT, window_, root_, 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                    XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
  ownerOf(clipboard_);  // a reply says that the notifications are in force
  // Signals are for the main thread.
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  thread_ = std::thread(&ClipboardOwner::run, this);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

ClipboardOwner::~ClipboardOwner() {
  post({CommandKind::stop, std::move(atEnd_), Purpose::lasting}, false);
  thread_.join();
  close(wakeDescriptor_);
}

void ClipboardOwner::clear() {
  somethingMayWait_ = true;
  post({CommandKind::clear, {}, Purpose::passing}, true);  // until its time is taken
}

void ClipboardOwner::settle() {
  if (somethingMayWait_) {
    somethingMayWait_ = false;
    post({CommandKind::settle, {}, Purpose::passing}, true);
  }
}

void ClipboardOwner::claim(ClipboardContents contents, Purpose purpose) {
  somethingMayWait_ = purpose == Purpose::lasting;
  post({CommandKind::claim, std::move(contents), purpose}, true);
}

void ClipboardOwner::post(Command command, bool wait) {
  std::unique_lock<std::mutex> lock(mutex_);
  commands_.push_back(std::move(command));
  const std::uint64_t number = ++postedCommands_;
  const std::uint64_t one = 1;
  if (write(wakeDescriptor_, &one, sizeof one) < 0) {
    // the counter is full: the thread has been woken already
  }
  if (wait) {
    finished_.wait(lock, [&] { return finishedCommands_ >= number; });
  }
}

void ClipboardOwner::run() {
  for (;;) {
    handlePendingEvents();
    Command command;
    while (takeCommand(command)) {
      if (command.kind == CommandKind::stop) {
        carryOutDeferred();
        // The news that another application has copied may be under way still; its contents must stay.
        owning_ = owning_ && ownerOf(clipboard_) == window_;
        if (owning_ && purpose_ == Purpose::passing && !command.contents.empty()) {
          doClaim(std::move(command.contents), command.purpose, serverTime());
        }
        handOver();
        finishCommand();
        return;
      }
      carryOut(command);
      finishCommand();
    }
    if (deferred_ && Clock::now() >= deferred_->due) carryOutDeferred();
    dropStalledTransfers();
    handlePendingEvents();
    waitForWork();
  }
}

bool ClipboardOwner::takeCommand(Command& command) {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (commands_.empty()) return false;
  command = std::move(commands_.front());
  commands_.pop_front();
  return true;
}

void ClipboardOwner::carryOut(Command& command) {
  switch (command.kind) {
    case CommandKind::clear:
      defer({}, kClearDelay);
      break;
    case CommandKind::settle:
      carryOutDeferred();
      break;
    case CommandKind::claim:
      if (command.purpose == Purpose::lasting) {
        defer(std::move(command.contents), std::chrono::milliseconds(0));
      } else {
        deferred_.reset();
        doClaim(std::move(command.contents), command.purpose, serverTime());
      }
      break;
    case CommandKind::stop:
      break;
  }
}

void ClipboardOwner::finishCommand() {
  const std::lock_guard<std::mutex> lock(mutex_);
  ++finishedCommands_;
  finished_.notify_all();
}

/// Sleeps until an event or a command comes or something is due.
void ClipboardOwner::waitForWork() {
  std::optional<Clock::time_point> due;
  if (deferred_) due = deferred_->due;
  for (const Transfer& transfer : transfers_) {
    due = due ? std::min(*due, transfer.deadline) : transfer.deadline;
  }
  int timeout = kWaitForever;
  if (due) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*due - Clock::now());
    timeout = static_cast<int>(std::max<std::int64_t>(left.count(), 0));
  }
  // A lost connection stays readable for ever: only commands are waited for then.
  pollfd waited[] = {{wakeDescriptor_, POLLIN, 0}, {xcb_get_file_descriptor(connection_.get()), POLLIN, 0}};
  poll(waited, connected() ? 2 : 1, timeout);
  if ((waited[0].revents & POLLIN) != 0) {
    std::uint64_t count = 0;
    if (read(wakeDescriptor_, &count, sizeof count) < 0) {
      // nothing to read: another wake-up has taken it
    }
  }
}

void ClipboardOwner::handlePendingEvents() {
  while (const XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(connection_.get())}) {
    handleEvent(*event);
  }
  xcb_flush(connection_.get());
}

void ClipboardOwner::handleEvent(const xcb_generic_event_t& event) {
  const std::uint8_t type = eventType(event);
  if (type == selectionEvent_) {
    changeCount_.fetch_add(1);
    return;
  }
  switch (type) {
    case XCB_SELECTION_REQUEST:
      handleRequest(reinterpret_cast<const xcb_selection_request_event_t&>(event));
      break;
    case XCB_SELECTION_CLEAR:
      // The event of an ownership that was lost and won back says nothing about the present one.
      if (owning_ && ownerOf(clipboard_) != window_) {
        owning_ = false;
        owned_.clear();
      }
      break;
    case XCB_SELECTION_NOTIFY:
      handOverAnswered_ = true;  // the only selection that this window ever asks for
      break;
    case XCB_PROPERTY_NOTIFY: {
      const auto& notify = reinterpret_cast<const xcb_property_notify_event_t&>(event);
      if (notify.window == window_ && notify.atom == timeProperty_) {
        lastTime_ = notify.time;
      } else if (notify.state == XCB_PROPERTY_DELETE) {
        continueTransfer(notify.window, notify.atom);
      }
      break;
    }
    case XCB_DESTROY_NOTIFY:
      endTransfersOf(reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window);
      break;
    default:
      break;
  }
}

void ClipboardOwner::handleRequest(const xcb_selection_request_event_t& request) {
  // Requestors of old leave the property to the owner (ICCCM 2.2).
  const xcb_atom_t property = request.property != XCB_ATOM_NONE ? request.property : request.target;
  bool answered = false;
  if (owning_ && request.selection == clipboard_) {
    answered = request.target == atom("MULTIPLE") ? answerMultiple(request.requestor, property)
                                                  : answer(request.requestor, request.target, property);
  }
  xcb_selection_notify_event_t notify{};
  notify.response_type = XCB_SELECTION_NOTIFY;
  notify.time = request.time;
  notify.requestor = request.requestor;
  notify.selection = request.selection;
  notify.target = request.target;
  notify.property = answered ? property : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
  xcb_send_event(connection_.get(), 0, request.requestor, XCB_EVENT_MASK_NO_EVENT,
                 reinterpret_cast<const char*>(&notify));
}

bool ClipboardOwner::answer(xcb_window_t requestor, xcb_atom_t target, xcb_atom_t property) {
  xcb_connection_t* c = connection_.get();
  if (target == atom("TARGETS")) {
    std::vector<xcb_atom_t> targets = {target, atom("TIMESTAMP"), atom("MULTIPLE")};
    for (const OwnedTarget& owned : owned_) targets.push_back(owned.target);
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, requestor, property, XCB_ATOM_ATOM, 32,
                        static_cast<std::uint32_t>(targets.size()), targets.data());
    return true;
  }
  if (target == atom("TIMESTAMP")) {
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, requestor, property, XCB_ATOM_INTEGER, 32, 1, &claimTime_);
    return true;
  }
  const auto owned = std::find_if(owned_.begin(), owned_.end(),
                                  [target](const OwnedTarget& each) { return each.target == target; });
  if (owned == owned_.end()) return false;
  if (owned->bytes->size() > pieceSize_) {
    startTransfer(requestor, property, *owned);
  } else {
    const std::size_t units = owned->bytes->size() / (owned->format / 8U);
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, requestor, property, owned->type, owned->format,
                        static_cast<std::uint32_t>(units), owned->bytes->data());
  }
  return true;
}

/// The property holds pairs of target and property; where a target cannot be had, None takes the property's
/// place in the list (ICCCM 2.6.2).
bool ClipboardOwner::answerMultiple(xcb_window_t requestor, xcb_atom_t property) {
  xcb_connection_t* c = connection_.get();
  const auto cookie =
      xcb_get_property(c, 0, requestor, property, XCB_GET_PROPERTY_TYPE_ANY, 0, kMaxMultipleUnits);
  const XcbReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(c, cookie, nullptr));
  if (!reply || reply->format != 32) return false;
  const auto* first = static_cast<const xcb_atom_t*>(xcb_get_property_value(reply.get()));
  std::vector<xcb_atom_t> pairs(first, first + std::size_t{reply->value_len} / 2 * 2);
  for (std::size_t i = 0; i < pairs.size(); i += 2) {
    if (pairs[i + 1] == XCB_ATOM_NONE || !answer(requestor, pairs[i], pairs[i + 1])) {
      pairs[i + 1] = XCB_ATOM_NONE;
    }
  }
  xcb_change_property(c, XCB_PROP_MODE_REPLACE, requestor, property, atom("ATOM_PAIR"), 32,
                      static_cast<std::uint32_t>(pairs.size()), pairs.data());
  return true;
}

void ClipboardOwner::startTransfer(xcb_window_t requestor, xcb_atom_t property, const OwnedTarget& owned) {
  xcb_connection_t* c = connection_.get();
  std::erase_if(transfers_, [&](const Transfer& transfer) {
    return transfer.requestor == requestor && transfer.property == property;
  });
  xcb_change_window_attributes(c, requestor, XCB_CW_EVENT_MASK, &kRequestorEvents);
  const auto size = static_cast<std::uint32_t>(owned.bytes->size());
  xcb_change_property(c, XCB_PROP_MODE_REPLACE, requestor, property, atom("INCR"), 32, 1, &size);
  transfers_.push_back(
      {requestor, property, owned.type, owned.format, owned.bytes, 0, Clock::now() + kStalledTransfer});
}

void ClipboardOwner::continueTransfer(xcb_window_t requestor, xcb_atom_t property) {
  const auto transfer = std::find_if(transfers_.begin(), transfers_.end(), [&](const Transfer& each) {
    return each.requestor == requestor && each.property == property;
  });
  if (transfer == transfers_.end()) return;
  const std::size_t size = std::min(pieceSize_ / 4 * 4, transfer->bytes->size() - transfer->offset);
  xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, requestor, property, transfer->type,
                      transfer->format, static_cast<std::uint32_t>(size / (transfer->format / 8U)),
                      transfer->bytes->data() + transfer->offset);
  transfer->offset += size;
  transfer->deadline = Clock::now() + kStalledTransfer;
  if (size == 0) {  // the empty piece that ends a transfer has been sent
    transfers_.erase(transfer);
    stopWatching(requestor);
  }
}

void ClipboardOwner::endTransfersOf(xcb_window_t requestor) {
  std::erase_if(transfers_, [requestor](const Transfer& each) { return each.requestor == requestor; });
}

void ClipboardOwner::dropStalledTransfers() {
  const Clock::time_point now = Clock::now();
  std::vector<xcb_window_t> requestors;
  for (const Transfer& transfer : transfers_) {
    if (transfer.deadline <= now) requestors.push_back(transfer.requestor);
  }
  std::erase_if(transfers_, [now](const Transfer& each) { return each.deadline <= now; });
  for (const xcb_window_t requestor : requestors) stopWatching(requestor);
}

void ClipboardOwner::stopWatching(xcb_window_t requestor) {
  const bool used = std::any_of(transfers_.begin(), transfers_.end(),
                                [requestor](const Transfer& each) { return each.requestor == requestor; });
  if (!used) {
    const std::uint32_t none = XCB_EVENT_MASK_NO_EVENT;
    xcb_change_window_attributes(connection_.get(), requestor, XCB_CW_EVENT_MASK, &none);
  }
}

/// At once where nothing has to be waited for.
void ClipboardOwner::defer(ClipboardContents contents, std::chrono::milliseconds atLeast) {
  Clock::time_point due = Clock::now() + atLeast;
  if (owning_ && purpose_ == Purpose::passing) due = std::max(due, fetchedBy_);
  deferred_ = Deferred{std::move(contents), serverTime(), due};
  if (due <= Clock::now()) carryOutDeferred();
}

/// By the time of the request, so that the server ignores it when somebody has copied since.
void ClipboardOwner::carryOutDeferred() {
  if (!deferred_) return;
  Deferred deferred = std::move(*deferred_);
  deferred_.reset();
  if (deferred.contents.empty()) {
    doClear(deferred.time);
  } else {
    doClaim(std::move(deferred.contents), Purpose::lasting, deferred.time);
  }
}

void ClipboardOwner::doClear(xcb_timestamp_t time) {
  xcb_set_selection_owner(connection_.get(), XCB_WINDOW_NONE, clipboard_, time);
  owning_ = false;
  owned_.clear();
  ownerOf(clipboard_);  // the notification stands before this reply
  handlePendingEvents();
}

void ClipboardOwner::doClaim(ClipboardContents contents, Purpose purpose, xcb_timestamp_t time) {
  std::vector<OwnedTarget> owned;
  for (ClipboardTarget& target : contents) {
    owned.push_back({atom(target.name), atom(target.propertyType), target.format, std::move(target.bytes)});
  }
  claimTime_ = time;
  owned_ = std::move(owned);
  purpose_ = purpose;
  owning_ = true;  // a request may come before the reply below
  xcb_set_selection_owner(connection_.get(), window_, clipboard_, claimTime_);
  fetchedBy_ = Clock::now() + fetchTime_;
  owning_ = ownerOf(clipboard_) == window_;
  if (!owning_) owned_.clear();
  handlePendingEvents();
}

/// Asks the clipboard manager to take what is owned, and serves it until it has (freedesktop.org's clipboard
/// manager specification).
void ClipboardOwner::handOver() {
  if (!owning_ || purpose_ == Purpose::passing) return;
  const xcb_atom_t manager = atom("CLIPBOARD_MANAGER");
  if (ownerOf(manager) == XCB_WINDOW_NONE) return;
  xcb_connection_t* c = connection_.get();
  std::vector<xcb_atom_t> targets;
  for (const OwnedTarget& owned : owned_) targets.push_back(owned.target);
  const xcb_atom_t property = atom("_LEXWEND_SAVE_TARGETS");
  xcb_change_property(c, XCB_PROP_MODE_REPLACE, window_, property, XCB_ATOM_ATOM, 32,
                      static_cast<std::uint32_t>(targets.size()), targets.data());
  xcb_convert_selection(c, window_, manager, atom("SAVE_TARGETS"), property, serverTime());
  const Clock::time_point deadline = Clock::now() + handOverTime_;
  handlePendingEvents();
  while (connected() && !handOverAnswered_) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
    if (left.count() <= 0) return;
    pollfd waited{xcb_get_file_descriptor(c), POLLIN, 0};
    poll(&waited, 1, static_cast<int>(left.count()));
    handlePendingEvents();
  }
}

/// The server's clock, learnt by changing a property: claims must bear a real time (ICCCM 2.1).
xcb_timestamp_t ClipboardOwner::serverTime() {
  lastTime_ = XCB_CURRENT_TIME;
  xcb_change_property(connection_.get(), XCB_PROP_MODE_APPEND, window_, timeProperty_, XCB_ATOM_INTEGER, 32,
                      0, nullptr);
  xcb_flush(connection_.get());
  while (lastTime_ == XCB_CURRENT_TIME) {
    const XcbReply<xcb_generic_event_t> event(xcb_wait_for_event(connection_.get()));
    if (!event) {
      break;  // the connection is gone
    }
    handleEvent(*event);
  }
  return lastTime_;
}

xcb_window_t ClipboardOwner::ownerOf(xcb_atom_t selection) {
  const auto cookie = xcb_get_selection_owner(connection_.get(), selection);
  const XcbReply<xcb_get_selection_owner_reply_t> reply(
      xcb_get_selection_owner_reply(connection_.get(), cookie, nullptr));
  return reply ? reply->owner : static_cast<xcb_window_t>(XCB_WINDOW_NONE);
}

}  // namespace lexwend::platform
