// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <gio/gio.h>

namespace lexwend::platform {

/// Mutter's remote control on a private bus, on a thread of its own, with one session at a time and a
/// clipboard that another program fills.
class FakeMutter {
 public:
  FakeMutter();
  ~FakeMutter();
  FakeMutter(const FakeMutter&) = delete;
  FakeMutter& operator=(const FakeMutter&) = delete;

  /// Another program copies these types; nobody copies where there is none.
  void copy(std::map<std::string, std::string> contents);
  /// The next reads are refused, as while another one has not quite ended.
  void beBusyFor(int reads);
  /// From now on a session takes so long for each answer until it is open.
  void openSlowly(std::chrono::milliseconds each);
  /// From now on the next reads get no end of what is copied, until endReads().
  void holdReads();
  void endReads();
  /// Another program asks for what the session owns, and gets it; empty when it is refused.
  std::string fetch(const std::string& type);
  /// The types that the session owns.
  std::vector<std::string> owned();
  /// The user ends the session.
  void end();
  bool isOpen();
  int sessions();
  std::vector<std::string> keys();

 private:
  static void called(GDBusConnection* bus, const char* sender, const char* path, const char* interface,
                     const char* method, GVariant* arguments, GDBusMethodInvocation* invocation, void* self);
  void answer(const std::string& method, GVariant* arguments, GDBusMethodInvocation* invocation);
  void tellOwner();

  GMainContext* context_;
  GMainLoop* loop_;
  GDBusConnection* bus_ = nullptr;
  std::thread thread_;
  std::mutex mutex_;
  // Under the mutex.
  bool isOpen_ = false;
  int sessions_ = 0;
  bool sessionOwns_ = false;
  std::vector<std::string> owned_;
  std::map<std::string, std::string> copied_;
  int refusedReads_ = 0;
  std::chrono::milliseconds opening_{0};
  bool holdsReads_ = false;
  std::vector<int> held_;  // write ends
  std::vector<std::string> keys_;
  std::map<unsigned, int> waiting_;  // read ends by serial
  std::map<unsigned, std::string> fetched_;
  unsigned lastSerial_ = 0;
};

}  // namespace lexwend::platform
