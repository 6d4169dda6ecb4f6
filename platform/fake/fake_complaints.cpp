// SPDX-License-Identifier: MIT
#include "platform/fake/fake_complaints.h"

#include <cstdio>
#include <cstdlib>

namespace lexwend::platform {
namespace {

void printAndAbort(const std::vector<std::string>& complaints) {
  for (const auto& complaint : complaints) std::fprintf(stderr, "in-memory host: %s\n", complaint.c_str());
  std::abort();
}

ComplaintHandler& handler() {
  static ComplaintHandler current = printAndAbort;
  return current;
}

}  // namespace

ComplaintHandler setComplaintHandler(ComplaintHandler next) {
  return std::exchange(handler(), std::move(next));
}

void reportComplaints(const std::vector<std::string>& complaints) {
  if (!complaints.empty()) handler()(complaints);
}

}  // namespace lexwend::platform
