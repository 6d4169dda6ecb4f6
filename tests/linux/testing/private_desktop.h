// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <optional>

#include "platform/linux/linux_host.h"
#include "tests/linux/testing/private_bus.h"
#include "tests/linux/testing/temporary_folder.h"
#include "tests/linux/testing/virtual_display.h"

namespace lexwend::platform {

/// A display, a session bus that is the system bus as well, a home, and the host with its application object:
/// one for all tests of a program, because a process has one application object and one connection to a bus.
class PrivateDesktop {
 public:
  PrivateDesktop();
  ~PrivateDesktop();
  PrivateDesktop(const PrivateDesktop&) = delete;
  PrivateDesktop& operator=(const PrivateDesktop&) = delete;

  /// The desktop of this program.
  static PrivateDesktop& shared();
  LinuxHost& host() { return *host_; }

 private:
  test::TemporaryFolder home_;
  VirtualDisplay display_;
  PrivateBus bus_;
  std::unique_ptr<LinuxHost> host_;
  std::optional<HostScope> scope_;
};

}  // namespace lexwend::platform
