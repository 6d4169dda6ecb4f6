// SPDX-License-Identifier: MIT
#include "platform/linux/selection/x_owner.h"

#include <algorithm>

#include <poll.h>
#include <xcb/xfixes.h>

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

// An application asks a dozen times for one paste; the older fetches tell nothing new.
constexpr std::size_t kMaxFetches = 256;

constexpr std::uint32_t kRequestorEvents = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;

constexpr int kWaitForever = -1;

}  // namespace

std::unique_ptr<SelectionOwner> XSelectionOwner::open(Changed changed) {
  int screenNumber = 0;
  XcbConnection connection = connectToDisplay(screenNumber);
  xcb_screen_t* screen = connection ? screenOf(connection.get(), screenNumber) : nullptr;
  if (screen == nullptr) return nullptr;
  const auto selectionEvent =
      watchSelection(connection.get(), screen->root, internAtom(connection.get(), "CLIPBOARD"));
  if (!selectionEvent) return nullptr;
  return std::unique_ptr<SelectionOwner>(
      new XSelectionOwner(std::move(connection), *screen, *selectionEvent, std::move(changed)));
}

XSelectionOwner::XSelectionOwner(XcbConnection connection, xcb_screen_t& screen, std::uint8_t selectionEvent,
                                 Changed changed)
    : connection_(std::move(connection)),
      root_(screen.root),
      window_(xcb_generate_id(connection_.get())),
      selectionEvent_(selectionEvent),
      changed_(std::move(changed)),
      atoms_(connection_.get()) {
  xcb_connection_t* c = connection_.get();
  pieceSize_ = std::min(kPieceSize, std::size_t{xcb_get_maximum_request_length(c)} * 4 - kRequestOverhead);
  clipboard_ = atom("CLIPBOARD");
  timeProperty_ = atom("_LEXWEND_TIME");
  const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
  xcb_create_window(c, XCB_COPY_FROM_PARENT, window_, root_, 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                    XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
  serverTime();  // an answer says that the notifications are in force
}

XSelectionOwner::~XSelectionOwner() = default;

void XSelectionOwner::claim(const ClipboardContents& contents, xcb_timestamp_t time) {
  letGo();
  claimTime_ = time;
  if (contents.empty()) {
    xcb_set_selection_owner(connection_.get(), XCB_WINDOW_NONE, clipboard_, time);
    ownerOf(clipboard_);  // the notification stands before this reply
  } else {
    owned_ = ownedTargets(contents);
    owning_ = true;  // a request may come before the reply below
    xcb_set_selection_owner(connection_.get(), window_, clipboard_, time);
    stillOwns();
  }
  handleEvents();
}

bool XSelectionOwner::stillOwns() {
  if (owning_ && ownerOf(clipboard_) != window_) letGo();
  return owning_;
}

void XSelectionOwner::letGo() {
  owning_ = false;
  owned_.clear();
  forOthers_.reset();
  fetches_.clear();
}

void XSelectionOwner::serveOthers(const ClipboardContents& contents, const XApplication& exempt) {
  forOthers_ = ownedTargets(contents);
  exempt_ = exempt;
}

XSelectionOwner::OwnedTargets XSelectionOwner::ownedTargets(const ClipboardContents& contents) {
  OwnedTargets owned;
  for (const ClipboardTarget& target : contents) {
    owned.push_back({atom(target.name), atom(target.propertyType), target.format, isTextTarget(target.name),
                     target.bytes});
  }
  return owned;
}

const XSelectionOwner::OwnedTargets& XSelectionOwner::contentsFor(xcb_window_t requestor) {
  return forOthers_ && !mayBeTheSame(application(requestor), exempt_) ? *forOthers_ : owned_;
}

bool XSelectionOwner::handleEvents() {
  bool any = false;
  while (const XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(connection_.get())}) {
    handleEvent(*event);
    any = true;
  }
  dropStalledTransfers();
  xcb_flush(connection_.get());
  return any;
}

void XSelectionOwner::wait(int descriptor, std::optional<Clock::time_point> until) {
  for (const Transfer& transfer : transfers_) {
    until = std::min(until.value_or(transfer.deadline), transfer.deadline);
  }
  int timeout = kWaitForever;
  if (until) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*until - Clock::now());
    timeout = static_cast<int>(std::max<std::int64_t>(left.count(), 0));
  }
  // A lost connection stays readable for ever; a negative descriptor is passed over.
  pollfd waited[] = {{descriptor, POLLIN, 0},
                     {connected() ? xcb_get_file_descriptor(connection_.get()) : -1, POLLIN, 0}};
  poll(waited, std::size(waited), timeout);
}

void XSelectionOwner::handleEvent(const xcb_generic_event_t& event) {
  const std::uint8_t type = eventType(event);
  if (type == selectionEvent_) {
    const auto& notify = reinterpret_cast<const xcb_xfixes_selection_notify_event_t&>(event);
    lastClaim_ = notify.selection_timestamp;
    changed_({notify.owner, notify.selection_timestamp});
    return;
  }
  switch (type) {
    case XCB_SELECTION_REQUEST:
      handleRequest(reinterpret_cast<const xcb_selection_request_event_t&>(event));
      break;
    case XCB_SELECTION_CLEAR:
      stillOwns();  // the event of an ownership that was lost and won back says nothing about the present one
      break;
    case XCB_SELECTION_NOTIFY:
      handOverAnswered_ = true;  // the only selection that this window ever asks for
      break;
    case XCB_PROPERTY_NOTIFY:
      handlePropertyNotify(reinterpret_cast<const xcb_property_notify_event_t&>(event));
      break;
    case XCB_DESTROY_NOTIFY: {
      const xcb_window_t window = reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window;
      if (window == watched_) watchedIsGone_ = true;
      endTransfersOf(window);
      break;
    }
    default:
      break;
  }
}

void XSelectionOwner::handlePropertyNotify(const xcb_property_notify_event_t& notify) {
  if (notify.window == window_ && notify.atom == timeProperty_) {
    lastTime_ = notify.time;
    lastTimeHere_ = Clock::now();
  } else if (notify.state == XCB_PROPERTY_DELETE) {
    continueTransfer(notify.window, notify.atom);
  }
}

void XSelectionOwner::handleRequest(const xcb_selection_request_event_t& request) {
  // Requestors of old leave the property to the owner (ICCCM 2.2).
  const xcb_atom_t property = request.property != XCB_ATOM_NONE ? request.property : request.target;
  bool answered = false;
  if (owning_ && request.selection == clipboard_) {
    const OwnedTargets& from = contentsFor(request.requestor);
    answered = request.target == atom("MULTIPLE") ? answerMultiple(from, request.requestor, property)
                                                  : answer(from, request.requestor, request.target, property);
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

bool XSelectionOwner::answer(const OwnedTargets& from, xcb_window_t requestor, xcb_atom_t target,
                             xcb_atom_t property) {
  xcb_connection_t* c = connection_.get();
  if (target == atom("TARGETS")) {
    std::vector<xcb_atom_t> targets = {target, atom("TIMESTAMP"), atom("MULTIPLE")};
    for (const OwnedTarget& owned : from) targets.push_back(owned.target);
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, requestor, property, XCB_ATOM_ATOM, 32,
                        static_cast<std::uint32_t>(targets.size()), targets.data());
    return true;
  }
  if (target == atom("TIMESTAMP")) {
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, requestor, property, XCB_ATOM_INTEGER, 32, 1, &claimTime_);
    return true;
  }
  const auto owned = std::find_if(from.begin(), from.end(),
                                  [target](const OwnedTarget& each) { return each.target == target; });
  if (owned == from.end()) return false;
  if (owned->bytes.size() > pieceSize_) {
    startTransfer(requestor, property, *owned);
  } else {
    const std::size_t units = owned->bytes.size() / (owned->format / 8U);
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, requestor, property, owned->type, owned->format,
                        static_cast<std::uint32_t>(units), owned->bytes.data());
    noteFetch(requestor, *owned);
  }
  return true;
}

/// The property holds pairs of target and property; where a target cannot be had, None takes the property's
/// place in the list (ICCCM 2.6.2).
bool XSelectionOwner::answerMultiple(const OwnedTargets& from, xcb_window_t requestor, xcb_atom_t property) {
  xcb_connection_t* c = connection_.get();
  const auto cookie =
      xcb_get_property(c, 0, requestor, property, XCB_GET_PROPERTY_TYPE_ANY, 0, kMaxMultipleUnits);
  const XcbReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(c, cookie, nullptr));
  if (!reply || reply->format != 32) return false;
  const auto* first = static_cast<const xcb_atom_t*>(xcb_get_property_value(reply.get()));
  std::vector<xcb_atom_t> pairs(first, first + std::size_t{reply->value_len} / 2 * 2);
  for (std::size_t i = 0; i < pairs.size(); i += 2) {
    if (pairs[i + 1] == XCB_ATOM_NONE || !answer(from, requestor, pairs[i], pairs[i + 1])) {
      pairs[i + 1] = XCB_ATOM_NONE;
    }
  }
  xcb_change_property(c, XCB_PROP_MODE_REPLACE, requestor, property, atom("ATOM_PAIR"), 32,
                      static_cast<std::uint32_t>(pairs.size()), pairs.data());
  return true;
}

void XSelectionOwner::startTransfer(xcb_window_t requestor, xcb_atom_t property, const OwnedTarget& owned) {
  xcb_connection_t* c = connection_.get();
  std::erase_if(transfers_, [&](const Transfer& transfer) {
    return transfer.requestor == requestor && transfer.property == property;
  });
  xcb_change_window_attributes(c, requestor, XCB_CW_EVENT_MASK, &kRequestorEvents);
  const auto size = static_cast<std::uint32_t>(owned.bytes.size());
  xcb_change_property(c, XCB_PROP_MODE_REPLACE, requestor, property, atom("INCR"), 32, 1, &size);
  transfers_.push_back({requestor, property, owned, 0, Clock::now() + kStalledTransfer});
}

void XSelectionOwner::continueTransfer(xcb_window_t requestor, xcb_atom_t property) {
  const auto transfer = std::find_if(transfers_.begin(), transfers_.end(), [&](const Transfer& each) {
    return each.requestor == requestor && each.property == property;
  });
  if (transfer == transfers_.end()) return;
  const OwnedTarget& owned = transfer->owned;
  const std::size_t size = std::min(pieceSize_ / 4 * 4, owned.bytes.size() - transfer->offset);
  xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, requestor, property, owned.type, owned.format,
                      static_cast<std::uint32_t>(size / (owned.format / 8U)),
                      owned.bytes.data() + transfer->offset);
  transfer->offset += size;
  transfer->deadline = Clock::now() + kStalledTransfer;
  if (size == 0) {  // the empty piece that ends a transfer has been sent
    noteFetch(requestor, owned);
    transfers_.erase(transfer);
    stopWatching(requestor);
  }
}

void XSelectionOwner::noteFetch(xcb_window_t requestor, const OwnedTarget& owned) {
  fetches_.push_back({requestor, owned.isText, Clock::now()});
  if (fetches_.size() > kMaxFetches) fetches_.pop_front();
}

std::optional<SelectionOwner::Clock::time_point> XSelectionOwner::firstFetchBy(const XApplication& by,
                                                                               Clock::time_point since) {
  const auto isBy = [&](xcb_window_t requestor) { return mayBeTheSame(application(requestor), by); };
  const bool isUnderWay = std::any_of(transfers_.begin(), transfers_.end(),
                                      [&](const Transfer& each) { return isBy(each.requestor); });
  if (isUnderWay) return std::nullopt;
  const auto first = std::find_if(fetches_.begin(), fetches_.end(), [&](const Fetch& each) {
    return each.isText && each.time >= since && isBy(each.requestor);
  });
  return first == fetches_.end() ? std::nullopt : std::optional(first->time);
}

bool XSelectionOwner::wasFetched(Clock::time_point since) const {
  return transfers_.empty() &&
         std::any_of(fetches_.begin(), fetches_.end(), [&](const Fetch& each) { return each.time >= since; });
}

void XSelectionOwner::watch(xcb_window_t window) {
  watched_ = window;
  // A window has one set of events for each connection, and it may be a requestor at the same time.
  const auto cookie =
      xcb_change_window_attributes_checked(connection_.get(), window, XCB_CW_EVENT_MASK, &kRequestorEvents);
  const XcbReply<xcb_generic_error_t> error(xcb_request_check(connection_.get(), cookie));
  watchedIsGone_ = error != nullptr;
}

void XSelectionOwner::endTransfersOf(xcb_window_t requestor) {
  std::erase_if(transfers_, [requestor](const Transfer& each) { return each.requestor == requestor; });
}

void XSelectionOwner::dropStalledTransfers() {
  const Clock::time_point now = Clock::now();
  std::vector<xcb_window_t> requestors;
  for (const Transfer& transfer : transfers_) {
    if (transfer.deadline <= now) requestors.push_back(transfer.requestor);
  }
  std::erase_if(transfers_, [now](const Transfer& each) { return each.deadline <= now; });
  for (const xcb_window_t requestor : requestors) stopWatching(requestor);
}

void XSelectionOwner::stopWatching(xcb_window_t requestor) {
  const bool used = std::any_of(transfers_.begin(), transfers_.end(),
                                [requestor](const Transfer& each) { return each.requestor == requestor; });
  if (!used && requestor != watched_) {
    const std::uint32_t none = XCB_EVENT_MASK_NO_EVENT;
    xcb_change_window_attributes(connection_.get(), requestor, XCB_CW_EVENT_MASK, &none);
  }
}

bool XSelectionOwner::handOver(Clock::time_point until) {
  const xcb_atom_t manager = atom("CLIPBOARD_MANAGER");
  if (ownerOf(manager) == XCB_WINDOW_NONE) return false;
  xcb_connection_t* c = connection_.get();
  std::vector<xcb_atom_t> targets;
  for (const OwnedTarget& owned : owned_) targets.push_back(owned.target);
  const xcb_atom_t property = atom("_LEXWEND_SAVE_TARGETS");
  xcb_change_property(c, XCB_PROP_MODE_REPLACE, window_, property, XCB_ATOM_ATOM, 32,
                      static_cast<std::uint32_t>(targets.size()), targets.data());
  xcb_convert_selection(c, window_, manager, atom("SAVE_TARGETS"), property, serverTime());
  handleEvents();
  while (connected() && !handOverAnswered_ && Clock::now() < until) {
    wait(-1, until);
    handleEvents();
  }
  return true;
}

/// Learnt by changing a property.
xcb_timestamp_t XSelectionOwner::serverTime() {
  const Clock::time_point asked = lastTimeHere_;
  xcb_change_property(connection_.get(), XCB_PROP_MODE_APPEND, window_, timeProperty_, XCB_ATOM_INTEGER, 32,
                      0, nullptr);
  xcb_flush(connection_.get());
  while (lastTimeHere_ == asked) {  // claims that are heard of meanwhile are placed by the time before
    const XcbReply<xcb_generic_event_t> event(xcb_wait_for_event(connection_.get()));
    if (!event) return XCB_CURRENT_TIME;  // the connection is gone
    handleEvent(*event);
  }
  return lastTime_;
}

/// The millisecond before, since the server lets the later of two claims of one millisecond stand; except
/// when what is there was claimed in this one.
xcb_timestamp_t XSelectionOwner::timeOfLook() {
  const xcb_timestamp_t now = serverTime();
  return lastClaim_ == now ? now : now - 1;
}

SelectionOwner::Clock::time_point XSelectionOwner::inOwnTime(xcb_timestamp_t time) const {
  // The server's clock starts again after 49 days: what counts is the distance.
  return lastTimeHere_ + std::chrono::milliseconds(static_cast<std::int32_t>(time - lastTime_));
}

xcb_window_t XSelectionOwner::ownerOf(xcb_atom_t selection) {
  const auto cookie = xcb_get_selection_owner(connection_.get(), selection);
  const XcbReply<xcb_get_selection_owner_reply_t> reply(
      xcb_get_selection_owner_reply(connection_.get(), cookie, nullptr));
  return reply ? reply->owner : static_cast<xcb_window_t>(XCB_WINDOW_NONE);
}

}  // namespace lexwend::platform
