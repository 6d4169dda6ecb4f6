// SPDX-License-Identifier: MIT
#include "platform/linux/display/x11_connection.h"

#include <deque>

#include <glib.h>
#include <xcb/xfixes.h>
#include <xcb/xinput.h>
#include <xcb/xtest.h>

#include "platform/linux/display/latin1.h"
#include "platform/linux/display/xcb_xkb.h"

namespace lexwend::platform {
namespace {

// Windows are nested a few levels deep. The bound ends a walk through a tree that changes meanwhile.
constexpr int kMaxWindowDepth = 32;

bool hasExtension(xcb_connection_t* connection, xcb_extension_t* extension) {
  const xcb_query_extension_reply_t* data = xcb_get_extension_data(connection, extension);
  return data != nullptr && data->present != 0;
}

}  // namespace

XcbConnection connectToDisplay(int& screenNumber) {
  XcbConnection connection(xcb_connect(nullptr, &screenNumber));
  if (xcb_connection_has_error(connection.get()) != 0) return nullptr;
  return connection;
}

xcb_screen_t* screenOf(xcb_connection_t* connection, int screenNumber) {
  xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
  for (; screens.rem > 0; xcb_screen_next(&screens)) {
    if (screenNumber-- == 0) return screens.data;
  }
  return nullptr;
}

xcb_atom_t internAtom(xcb_connection_t* connection, std::string_view name) {
  const auto cookie = xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
  const XcbReply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection, cookie, nullptr));
  return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

std::string atomName(xcb_connection_t* connection, xcb_atom_t atom) {
  const XcbReply<xcb_get_atom_name_reply_t> reply(
      xcb_get_atom_name_reply(connection, xcb_get_atom_name(connection, atom), nullptr));
  if (!reply) {
    return {};
  }
  return {xcb_get_atom_name_name(reply.get()),
          static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get()))};
}

std::optional<std::uint8_t> watchSelection(xcb_connection_t* connection, xcb_window_t root,
                                           xcb_atom_t selection) {
  if (!hasExtension(connection, &xcb_xfixes_id)) return std::nullopt;
  // The protocol requires the version request before any other.
  const XcbReply<xcb_xfixes_query_version_reply_t> version(
      xcb_xfixes_query_version_reply(connection, xcb_xfixes_query_version(connection, 1, 0), nullptr));
  xcb_xfixes_select_selection_input(connection, root, selection,
                                    XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                        XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                        XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
  return xcb_get_extension_data(connection, &xcb_xfixes_id)->first_event + XCB_XFIXES_SELECTION_NOTIFY;
}

xcb_atom_t AtomCache::atom(std::string_view name) {
  const auto known = atoms_.find(name);
  return known != atoms_.end() ? known->second
                               : atoms_.emplace(name, internAtom(connection_, name)).first->second;
}

/// The connection as a source of the main context. XCB also reads events while it waits for replies, so the
/// file descriptor does not tell whether events wait. They are moved into a queue before each poll.
struct X11Connection::Source {
  GSource base;
  X11Connection* owner;
  std::deque<XcbReply<xcb_generic_event_t>>* queue;

  static bool fill(Source* source) {
    while (xcb_generic_event_t* event = xcb_poll_for_event(source->owner->get())) {
      source->queue->emplace_back(event);
    }
    return !source->queue->empty();
  }
  static gboolean prepare(GSource* base, gint* timeout) {
    auto* source = reinterpret_cast<Source*>(base);
    *timeout = -1;
    xcb_flush(source->owner->get());
    return fill(source) ? TRUE : FALSE;
  }
  static gboolean check(GSource* base) { return fill(reinterpret_cast<Source*>(base)) ? TRUE : FALSE; }
  static gboolean dispatch(GSource* base, GSourceFunc /*callback*/, gpointer /*data*/) {
    auto* source = reinterpret_cast<Source*>(base);
    if (xcb_connection_has_error(source->owner->get()) != 0) return G_SOURCE_REMOVE;
    source->owner->dispatchPending();
    return G_SOURCE_CONTINUE;
  }
  static void finalize(GSource* base) { delete reinterpret_cast<Source*>(base)->queue; }
};

std::shared_ptr<X11Connection> X11Connection::open() {
  int screenNumber = 0;
  XcbConnection connection = connectToDisplay(screenNumber);
  if (!connection) return nullptr;
  const xcb_screen_t* screen = screenOf(connection.get(), screenNumber);
  if (screen == nullptr) return nullptr;
  return std::shared_ptr<X11Connection>(new X11Connection(std::move(connection), screenNumber, screen->root));
}

X11Connection::X11Connection(XcbConnection connection, int screenNumber, xcb_window_t root)
    : connection_(std::move(connection)),
      screenNumber_(screenNumber),
      root_(root),
      atoms_(connection_.get()) {
  // Where that fails the connection is gone, and every later request gets no answer either.
  xcb_ewmh_init_atoms_replies(&ewmh_, xcb_ewmh_init_atoms(connection_.get(), &ewmh_), nullptr);
  queryExtensions();
  watch();
}

X11Connection::~X11Connection() {
  g_source_destroy(&source_->base);
  g_source_unref(&source_->base);
  xcb_ewmh_connection_wipe(&ewmh_);
}

void X11Connection::queryExtensions() {
  xcb_connection_t* c = connection_.get();
  for (xcb_extension_t* extension : {&xcb_test_id, &xcb_xfixes_id, &xcb_xkb_id, &xcb_input_id}) {
    xcb_prefetch_extension_data(c, extension);
  }
  hasXTest_ = hasExtension(c, &xcb_test_id);
  if (hasExtension(c, &xcb_xfixes_id)) {
    const XcbReply<xcb_xfixes_query_version_reply_t> version(
        xcb_xfixes_query_version_reply(c, xcb_xfixes_query_version(c, 1, 0), nullptr));
    hasXFixes_ = version != nullptr && version->major_version >= 1;
  }
  if (hasExtension(c, &xcb_xkb_id)) {
    const XcbReply<xcb_xkb_use_extension_reply_t> use(
        xcb_xkb_use_extension_reply(c, xcb_xkb_use_extension(c, 1, 0), nullptr));
    hasXkb_ = use != nullptr && use->supported != 0;
    xkbFirstEvent_ = xcb_get_extension_data(c, &xcb_xkb_id)->first_event;
  }
  if (hasExtension(c, &xcb_input_id)) {
    const XcbReply<xcb_input_xi_query_version_reply_t> version(
        xcb_input_xi_query_version_reply(c, xcb_input_xi_query_version(c, 2, 2), nullptr));
    hasXInput2_ = version != nullptr && (version->major_version > 2 ||
                                         (version->major_version == 2 && version->minor_version >= 2));
    xInputOpcode_ = xcb_get_extension_data(c, &xcb_input_id)->major_opcode;
  }
}

void X11Connection::watch() {
  static GSourceFuncs functions = {Source::prepare,  Source::check, Source::dispatch,
                                   Source::finalize, nullptr,       nullptr};
  source_ = reinterpret_cast<Source*>(g_source_new(&functions, sizeof(Source)));
  source_->owner = this;
  source_->queue = new std::deque<XcbReply<xcb_generic_event_t>>;
  g_source_set_name(&source_->base, "X11 connection");
  g_source_set_can_recurse(&source_->base, TRUE);
  g_source_add_unix_fd(&source_->base, xcb_get_file_descriptor(connection_.get()),
                       static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR));
  g_source_attach(&source_->base, nullptr);
}

X11Connection::Observation X11Connection::observe(EventHandler handler) {
  auto shared = std::make_shared<EventHandler>(std::move(handler));
  observers_.push_back(shared);
  return Observation(std::move(shared));
}

void X11Connection::selectRootEvents(std::uint32_t eventMask) {
  rootEventMask_ |= eventMask;
  xcb_change_window_attributes(connection_.get(), root_, XCB_CW_EVENT_MASK, &rootEventMask_);
  flush();
}

void X11Connection::selectKeymapEvents() {
  if (!hasXkb_) {
    return;  // the core protocol sends MappingNotify to every client
  }
  constexpr std::uint16_t kEvents = XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY;
  constexpr std::uint16_t kMapParts =
      XCB_XKB_MAP_PART_KEY_TYPES | XCB_XKB_MAP_PART_KEY_SYMS | XCB_XKB_MAP_PART_MODIFIER_MAP;
  xcb_xkb_select_events(connection_.get(), XCB_XKB_ID_USE_CORE_KBD, kEvents, 0, kEvents, kMapParts, kMapParts,
                        nullptr);
  flush();
}

bool X11Connection::isKeymapChange(const xcb_generic_event_t& event) const {
  if (eventType(event) == XCB_MAPPING_NOTIFY) return true;
  if (!hasXkb_ || eventType(event) != xkbFirstEvent_) return false;
  // All XKB events share one type. The next byte says which event it is.
  return event.pad0 == XCB_XKB_NEW_KEYBOARD_NOTIFY || event.pad0 == XCB_XKB_MAP_NOTIFY;
}

void X11Connection::dispatchPending() {
  Source::fill(source_);
  // A handler may run the main loop, and so this function, again. So each event leaves the queue before it is
  // handled.
  while (!source_->queue->empty()) {
    const XcbReply<xcb_generic_event_t> event = std::move(source_->queue->front());
    source_->queue->pop_front();
    if (event->response_type == 0) {
      continue;  // an error of an unchecked request, which its sender ignores
    }
    const std::vector<std::weak_ptr<EventHandler>> observers = observers_;
    for (const auto& weak : observers) {
      if (const auto observer = weak.lock()) (*observer)(*event);
    }
  }
  std::erase_if(observers_, [](const auto& weak) { return weak.expired(); });
  flush();
}

std::optional<std::string> X11Connection::property(xcb_window_t window, xcb_atom_t name,
                                                   std::uint32_t maxBytes) {
  const auto cookie =
      xcb_get_property(connection_.get(), 0, window, name, XCB_GET_PROPERTY_TYPE_ANY, 0, maxBytes / 4);
  const XcbReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection_.get(), cookie, nullptr));
  if (!reply || reply->type == XCB_ATOM_NONE) return std::nullopt;
  return std::string(static_cast<const char*>(xcb_get_property_value(reply.get())),
                     static_cast<std::size_t>(xcb_get_property_value_length(reply.get())));
}

xcb_window_t X11Connection::activeWindow() {
  xcb_window_t active = XCB_WINDOW_NONE;
  const bool told = xcb_ewmh_get_active_window_reply(
                        &ewmh_, xcb_ewmh_get_active_window(&ewmh_, screenNumber_), &active, nullptr) != 0;
  return told && active != XCB_WINDOW_NONE ? active : inputFocus();
}

xcb_window_t X11Connection::inputFocus() {
  xcb_connection_t* c = connection_.get();
  const XcbReply<xcb_get_input_focus_reply_t> focus(
      xcb_get_input_focus_reply(c, xcb_get_input_focus(c), nullptr));
  const bool onWindow = focus && focus->focus != XCB_INPUT_FOCUS_NONE &&
                        focus->focus != XCB_INPUT_FOCUS_POINTER_ROOT && focus->focus != root_;
  return onWindow ? focus->focus : static_cast<xcb_window_t>(XCB_WINDOW_NONE);
}

std::optional<std::uint32_t> X11Connection::activeWindowProcess() {
  std::uint32_t process = 0;
  const bool told =
      xcb_ewmh_get_wm_pid_reply(&ewmh_, xcb_ewmh_get_wm_pid(&ewmh_, activeWindow()), &process, nullptr) != 0;
  return told ? std::optional(process) : std::nullopt;
}

void X11Connection::activate(xcb_window_t window) {
  xcb_window_t manager = XCB_WINDOW_NONE;
  const bool isManaged = xcb_ewmh_get_supporting_wm_check_reply(
                             &ewmh_, xcb_ewmh_get_supporting_wm_check(&ewmh_, root_), &manager, nullptr) != 0;
  if (isManaged) {
    xcb_ewmh_request_change_active_window(&ewmh_, screenNumber_, window,
                                          XCB_EWMH_CLIENT_SOURCE_TYPE_OTHER,  // as a wish of the user's
                                          XCB_CURRENT_TIME, XCB_WINDOW_NONE);
  } else {
    xcb_set_input_focus(connection_.get(), XCB_INPUT_FOCUS_PARENT, window, XCB_CURRENT_TIME);
  }
  flush();
}

std::optional<std::string> X11Connection::windowClass(xcb_window_t window) {
  for (int depth = 0; depth < kMaxWindowDepth && window != XCB_WINDOW_NONE && window != root_; ++depth) {
    // Two strings, each ended by a NUL: the instance, then the class. libxcb-icccm would read on past a
    // property that lacks the NULs.
    if (const auto value = property(window, XCB_ATOM_WM_CLASS)) {
      const std::size_t instanceEnd = value->find('\0');
      if (instanceEnd != std::string::npos) {
        const std::string_view rest = std::string_view(*value).substr(instanceEnd + 1);
        return utf8FromLatin1(rest.substr(0, rest.find('\0')));
      }
    }
    const XcbReply<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(connection_.get(), xcb_query_tree(connection_.get(), window), nullptr));
    window = tree ? tree->parent : static_cast<xcb_window_t>(XCB_WINDOW_NONE);
  }
  return std::nullopt;
}

}  // namespace lexwend::platform
