// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace lexwend::platform {

/// Gets every complaint that nobody took before the host went away.
using ComplaintHandler = std::function<void(const std::vector<std::string>& complaints)>;

/// Replaces the handler of the whole process and gives back the one before. The first one prints the
/// complaints and aborts, so that a forgotten expectation cannot pass unseen; tests that link
/// lexwend_host_fake_gtest get one that fails the running test instead.
ComplaintHandler setComplaintHandler(ComplaintHandler handler);

/// What a test did that the system cannot do (a click on a hidden item), what the program did against a
/// contract (a write without a clear), and what was prepared and never used.
class FakeComplaints {
 public:
  void add(std::string complaint) { complaints_.push_back(std::move(complaint)); }
  const std::vector<std::string>& all() const { return complaints_; }
  /// Hands them over; what is taken is no longer a failure.
  std::vector<std::string> take() { return std::exchange(complaints_, {}); }

 private:
  std::vector<std::string> complaints_;
};

/// Hands complaints to the handler; does nothing when there are none.
void reportComplaints(const std::vector<std::string>& complaints);

}  // namespace lexwend::platform
