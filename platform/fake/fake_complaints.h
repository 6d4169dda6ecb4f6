// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace lexwend::platform {

/// Receives every complaint that nobody took before the host was destroyed.
using ComplaintHandler = std::function<void(const std::vector<std::string>& complaints)>;

/// Replaces the handler of this process and returns the previous one. The first handler prints the complaints
/// and aborts, so that a forgotten expectation is noticed. Tests that link lexwend_host_fake_gtest get a
/// handler that fails the running test instead.
ComplaintHandler setComplaintHandler(ComplaintHandler handler);

/// Complaints are of three kinds: what a test did that the system cannot do (a click on a hidden item), what
/// the program did against a contract (a write without a clear), and what was prepared and never used.
class FakeComplaints {
 public:
  void add(std::string complaint) { complaints_.push_back(std::move(complaint)); }
  const std::vector<std::string>& all() const { return complaints_; }
  /// Returns the complaints and forgets them: they are no failure any more.
  std::vector<std::string> take() { return std::exchange(complaints_, {}); }

 private:
  std::vector<std::string> complaints_;
};

/// Passes complaints to the handler, if there are any.
void reportComplaints(const std::vector<std::string>& complaints);

}  // namespace lexwend::platform
