// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <sys/types.h>
#include <xcb/xcb.h>

#include "platform/linux/display/x_application.h"

namespace lexwend::platform {

/// One answer of a selection's owner, or one that a requestor got.
struct SelectionValue {
  std::string type;
  int format = 8;
  std::string bytes;
  bool operator==(const SelectionValue&) const = default;
};

/// Another application that copies: it owns a selection on a thread and connection of its own and answers as
/// told.
class CopyingApplication {
 public:
  struct Behaviour {
    std::vector<std::pair<std::string, SelectionValue>> targets{};
    /// Longer answers go in pieces of this size.
    std::size_t pieceSize = std::size_t{64} * 1024;
    /// Before each answer.
    std::chrono::milliseconds delay{0};
    /// Asked for one of these it says nothing at all.
    std::set<std::string> silentTargets{};
    /// Asked for one of these it dies.
    std::set<std::string> deadlyTargets{};
    /// Offered, and refused when asked for.
    std::set<std::string> refusedTargets{};
    /// Refused so many times when asked for.
    std::map<std::string, int> firstRefusals{};
    /// Before the answer for one of these.
    std::map<std::string, std::chrono::milliseconds> slowTargets{};
    /// It offers so many types more, of which it gives none.
    int furtherTargets = 0;
    /// It dies after so many pieces of an answer.
    int deadlyPiece = -1;
    /// It sends no more after so many.
    int lastPiece = -1;
    bool answersTargets = true;
  };

  /// `time` is the server's time that its claim bears.
  explicit CopyingApplication(Behaviour behaviour, const std::string& selection = "CLIPBOARD",
                              xcb_timestamp_t time = XCB_CURRENT_TIME);
  /// Ends like an application: its connection closes.
  ~CopyingApplication();
  CopyingApplication(const CopyingApplication&) = delete;
  CopyingApplication& operator=(const CopyingApplication&) = delete;

  /// Claims the selection once more.
  void copyAgain();
  bool ownsSelection();
  /// The names of the targets that it was asked for, in order.
  std::vector<std::string> requests();

 private:
  struct Piecewise {
    xcb_window_t requestor;
    xcb_atom_t property;
    xcb_atom_t type;
    int format;
    std::string rest;
    int sentPieces;
  };
  void run();
  void claim(xcb_timestamp_t time);
  void serve(const xcb_selection_request_event_t& request);
  bool serveNextPiece(const xcb_property_notify_event_t& notify);

  Behaviour behaviour_;
  xcb_connection_t* connection_;
  xcb_window_t window_;
  xcb_atom_t selection_;
  std::vector<xcb_atom_t> furtherTargets_;
  std::vector<Piecewise> piecewise_;
  bool dead_ = false;
  std::mutex mutex_;
  std::vector<std::string> requests_;
  int stopPipe_[2];
  std::thread thread_;
};

/// Another application that pastes.
class PastingApplication {
 public:
  PastingApplication();
  ~PastingApplication();
  PastingApplication(const PastingApplication&) = delete;
  PastingApplication& operator=(const PastingApplication&) = delete;

  xcb_window_t window() const { return window_; }
  XApplication application() { return applicationOf(connection_, window_); }
  /// The server's clock.
  xcb_timestamp_t serverTime();
  /// The owner's answer; nothing when it refuses or does not answer in time.
  std::optional<SelectionValue> paste(const std::string& target,
                                      std::chrono::milliseconds time = std::chrono::seconds(10));
  /// Asks for several targets by one MULTIPLE request; a refused one is absent.
  std::map<std::string, SelectionValue> pasteMultiple(const std::vector<std::string>& targets);
  std::vector<std::string> targets();
  bool selectionHasOwner(const std::string& selection = "CLIPBOARD");
  /// Starts a piecewise paste and then takes no piece.
  void pasteAndStop(const std::string& target);
  /// Takes the pieces of it after all.
  std::optional<SelectionValue> takePieces(std::chrono::milliseconds time);

 private:
  std::optional<SelectionValue> take(xcb_atom_t property);
  std::optional<SelectionValue> receivePieces(std::chrono::steady_clock::time_point deadline);
  xcb_connection_t* connection_;
  xcb_window_t window_;
};

/// A clipboard manager: asked to save targets it fetches them.
class ManagingApplication {
 public:
  ManagingApplication();
  ~ManagingApplication();
  ManagingApplication(const ManagingApplication&) = delete;
  ManagingApplication& operator=(const ManagingApplication&) = delete;

  std::map<std::string, SelectionValue> saved();

 private:
  void run();
  xcb_connection_t* connection_;
  xcb_window_t window_;
  std::mutex mutex_;
  std::map<std::string, SelectionValue> saved_;
  int stopPipe_[2];
  std::thread thread_;
};

/// Another program, in a process of its own, that copies and pastes plain text.
class StrangeClient {
 public:
  StrangeClient();
  ~StrangeClient();
  StrangeClient(const StrangeClient&) = delete;
  StrangeClient& operator=(const StrangeClient&) = delete;

  void copy(const std::string& text) { ask('c', text); }
  /// Empty when there is none.
  std::string paste() { return ask('p'); }
  /// How often it was asked for what it has copied.
  int requests() { return std::stoi(ask('r')); }
  /// It claims CLIPBOARD_MANAGER.
  void becomeManager() { ask('m'); }

 private:
  std::string ask(char question, const std::string& text = "");
  pid_t process_;
  int socket_;
};

/// Answers a request: the requestor finds the contents in the property, or is refused (XCB_ATOM_NONE).
void sendNotify(xcb_connection_t* connection, const xcb_selection_request_event_t& request,
                xcb_atom_t property);

/// An atom's number as the four bytes that stand for it in a property.
std::string atomBytes(const std::string& name);

}  // namespace lexwend::platform
