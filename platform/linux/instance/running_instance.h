// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <functional>
#include <memory>

#include <gio/gio.h>

#include "platform/linux/session/buses.h"
#include "platform/running_instance.h"

namespace lexwend::platform {

/// The agent as an object on the session bus. It owns the name org.lexwend.Lexwend and has, at
/// /org/lexwend/Lexwend, an interface of that name with the methods Fix, Menu, Settings and Quit, without
/// arguments and results. A command that is dropped gets the error org.lexwend.Lexwend.Error.Dropped. Main
/// thread only.
class LinuxRunningInstance : public RunningInstance {
 public:
  /// `menuIsOpen`: whether the agent's menu has the keyboard, so that a fix could not reach the application.
  explicit LinuxRunningInstance(std::function<bool()> menuIsOpen = {});
  ~LinuxRunningInstance() override;
  LinuxRunningInstance(const LinuxRunningInstance&) = delete;
  LinuxRunningInstance& operator=(const LinuxRunningInstance&) = delete;

  InstanceAnswer pass(InstanceCommand command) override;
  /// While there is no session bus nothing arrives.
  Registration receive(std::function<bool(InstanceCommand)> handler) override;
  /// A message is judged when it arrives, although the main thread reads it after the fix.
  Registration dropFixes() override;

 private:
  using Pauses = std::atomic<int>;
  static GDBusMessage* messageArrived(GDBusConnection* bus, GDBusMessage* message, gboolean incoming,
                                      void* pauses);
  static void methodCalled(GDBusConnection* bus, const char* sender, const char* path, const char* interface,
                           const char* method, GVariant* arguments, GDBusMethodInvocation* invocation,
                           void* self);
  void offerOn(GDBusConnection* bus);
  bool takes(InstanceCommand command);

  std::function<bool()> menuIsOpen_;
  std::shared_ptr<Pauses> pauses_ = std::make_shared<Pauses>(0);
  Handlers<std::function<bool(InstanceCommand)>> handlers_;
  GDBusConnection* bus_ = nullptr;
  guint filter_ = 0;
  guint object_ = 0;
  guint name_ = 0;
  BusObservation observation_;
};

}  // namespace lexwend::platform
