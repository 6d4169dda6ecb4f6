// SPDX-License-Identifier: MIT
// A selection's owner that answers with anything: the bytes say which types it tells, and for each request an
// answer, its type and format, its pieces, a refusal, silence or somebody else's claim. Whatever it says,
// reading ends, stays within its budget, and finds only what can be given back.
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <fuzzer/FuzzedDataProvider.h>
#include <poll.h>

#include "platform/linux/selection/x_reader.h"
#include "tests/linux/testing/other_application.h"
#include "tests/linux/testing/virtual_display.h"

namespace lexwend::platform {
namespace {

using std::chrono::milliseconds;

constexpr std::size_t kMaxBytes = 8192;
constexpr std::size_t kMaxAnswer = 3000;
/// Silence is waited for and tells nothing new: few inputs may cost so much.
const ClipboardReader::Budget kBudget{milliseconds(60), milliseconds(15), kMaxBytes, milliseconds(90)};

constexpr const char* kTypes[] = {"UTF8_STRING", "STRING",          "TEXT",        "text/plain;charset=utf-8",
                                  "text/html",   "text/uri-list",   "image/png",   "image/jpeg",
                                  "image/tiff",  "COMPOUND_TEXT",   "INCR",        "ATOM",
                                  "TARGETS",     "x-special/files", "a\tATOM\t32", "MULTIPLE"};

/// The owner on a thread and connection of its own.
class Owner {
 public:
  Owner() {
    int screenNumber = 0;
    connection_ = xcb_connect(nullptr, &screenNumber);
    root_ = screenOf(connection_, screenNumber)->root;
    clipboard_ = internAtom(connection_, "CLIPBOARD");
    targets_ = internAtom(connection_, "TARGETS");
    incr_ = internAtom(connection_, "INCR");
    for (const char* name : kTypes) types_.push_back(internAtom(connection_, name));
    for (xcb_window_t& window : windows_) {
      window = xcb_generate_id(connection_);
      xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, root_, 0, 0, 1, 1, 0,
                        XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    }
    claim();
    thread_ = std::thread([this] { run(); });
    thread_.detach();  // it lives as long as the process
  }

  void behaveAs(const std::uint8_t* data, std::size_t size) {
    const std::lock_guard<std::mutex> lock(mutex_);
    bytes_.assign(data, data + size);
    script_ = std::make_unique<FuzzedDataProvider>(bytes_.data(), bytes_.size());
    pieces_ = 0;
    claim();
  }

 private:
  void claim() {
    xcb_set_selection_owner(connection_, windows_[++claims_ % 2], clipboard_, XCB_CURRENT_TIME);
    std::free(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
  }

  void run() {
    for (;;) {
      {
        const std::lock_guard<std::mutex> lock(mutex_);
        while (const XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(connection_)}) {
          if (eventType(*event) == XCB_SELECTION_REQUEST) {
            serve(reinterpret_cast<const xcb_selection_request_event_t&>(*event));
          } else if (eventType(*event) == XCB_PROPERTY_NOTIFY) {
            const auto& notify = reinterpret_cast<const xcb_property_notify_event_t&>(*event);
            if (notify.state == XCB_PROPERTY_DELETE) sendPiece(notify.window, notify.atom);
          }
        }
        xcb_flush(connection_);
      }
      pollfd waited{xcb_get_file_descriptor(connection_), POLLIN, 0};
      poll(&waited, 1, 2);
    }
  }

  xcb_atom_t anyType() { return types_[script_->ConsumeIntegralInRange<std::size_t>(0, types_.size() - 1)]; }

  void put(xcb_window_t window, xcb_atom_t property, xcb_atom_t type, const std::string& bytes) {
    constexpr std::uint8_t kFormats[] = {8, 8, 8, 16, 32};
    const std::uint8_t format = kFormats[script_->ConsumeIntegralInRange<std::size_t>(0, 4)];
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, property, type, format,
                        static_cast<std::uint32_t>(bytes.size() / (format / 8U)), bytes.data());
  }

  void putTargets(xcb_window_t window, xcb_atom_t property) {
    std::vector<std::uint32_t> atoms;
    const auto count = script_->ConsumeIntegralInRange<std::size_t>(0, 24);
    for (std::size_t i = 0; i < count; ++i) {
      // Most are types, some are numbers that name no atom.
      atoms.push_back(script_->ConsumeProbability<float>() < 0.9F
                          ? anyType()
                          : script_->ConsumeIntegral<std::uint32_t>());
    }
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, property, XCB_ATOM_ATOM, 32,
                        static_cast<std::uint32_t>(atoms.size()), atoms.data());
  }

  void serve(const xcb_selection_request_event_t& request) {
    xcb_atom_t property = request.property;
    const auto way = script_->ConsumeIntegralInRange<int>(0, 15);
    if (way == 15) return;  // silence
    if (way == 14) return claim();
    if (way == 13) {
      property = XCB_ATOM_NONE;
    } else if (request.target == targets_ && way < 10) {
      putTargets(request.requestor, property);
    } else if (way == 12) {
      const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
      xcb_change_window_attributes(connection_, request.requestor, XCB_CW_EVENT_MASK, &events);
      const auto size = script_->ConsumeIntegral<std::uint32_t>();
      xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, request.requestor, property, incr_, 32, 1,
                          &size);
      pieces_ = script_->ConsumeIntegralInRange<int>(0, 6);
    } else {
      const xcb_atom_t type = way < 8 ? request.target : anyType();
      put(request.requestor, property, type, script_->ConsumeRandomLengthString(kMaxAnswer));
    }
    if (script_->ConsumeIntegralInRange<int>(0, 15) == 15) property = anyType();
    sendNotify(connection_, request, property);
  }

  void sendPiece(xcb_window_t window, xcb_atom_t property) {
    if (pieces_ < 0) return;
    const bool isLast = pieces_-- == 0;
    put(window, property, anyType(), isLast ? "" : script_->ConsumeRandomLengthString(kMaxAnswer));
  }

  xcb_connection_t* connection_;
  xcb_window_t root_;
  xcb_window_t windows_[2];
  unsigned claims_ = 0;
  xcb_atom_t clipboard_;
  xcb_atom_t targets_;
  xcb_atom_t incr_;
  std::vector<xcb_atom_t> types_;
  std::mutex mutex_;
  std::vector<std::uint8_t> bytes_;
  std::unique_ptr<FuzzedDataProvider> script_;
  int pieces_ = 0;
  std::thread thread_;
};

/// With the line, which is not to be seen in the trace of an optimised program.
void requireAt(int line, bool truth) {
  if (truth) return;
  std::fprintf(stderr, "not so: line %d\n", line);
  std::abort();
}
#define require(truth) requireAt(__LINE__, truth)

void checkContents(const ClipboardContents& contents) {
  std::size_t total = 0;
  std::set<std::string> names;
  for (const ClipboardTarget& target : contents) {
    total += target.bytes.size();
    require(names.insert(target.name).second);
    require(target.format == 8 || target.format == 16 || target.format == 32);
    require(target.bytes.size() % (target.format / 8U) == 0);
    require(!isProtocolTarget(target.name));
    // What is shown as a type of the pasteboard has to come back as the same target.
    const ClipboardTarget back = targetOfTypeName(encodedTypeName(target));
    require(back.name == target.name && back.propertyType == target.propertyType &&
            back.format == target.format);
  }
  require(total <= kMaxBytes);
}

}  // namespace
}  // namespace lexwend::platform

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace lexwend::platform;
  static const VirtualDisplay kDisplay;
  static auto* const kOwner = new Owner;
  static const auto kReader = XClipboardReader::open();
  kOwner->behaveAs(data, size);
  const ClipboardReader::Result result = kReader->readAll(kBudget);
  checkContents(result.contents);
  for (const std::string& name : result.leftOut) require(name.size() <= 200);
  const auto text = kReader->readText(kBudget);
  require(!text || text->size() <= 2 * kMaxBytes);  // Latin-1 grows when it becomes UTF-8
  return 0;
}
