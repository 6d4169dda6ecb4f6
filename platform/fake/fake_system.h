// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <utility>

#include "platform/fake/fake_call_log.h"
#include "platform/fake/fake_clock.h"
#include "platform/fake/fake_complaints.h"
#include "platform/fake/fake_injections.h"

namespace lexwend::platform {

/// What all services of the in-memory host share.
struct FakeSystem {
  FakeCallLog calls;
  FakeComplaints complaints;
  FakeInjections injections;
  FakeClock clock;

  void called(std::string call) { calls.add(std::move(call)); }
  void complain(std::string complaint) { complaints.add(std::move(complaint)); }
  std::optional<std::int32_t> failure(FakeOperation operation) { return injections.take(operation); }
};

}  // namespace lexwend::platform
