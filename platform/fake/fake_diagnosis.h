// SPDX-License-Identifier: MIT
#pragma once

#include "platform/diagnosis.h"

namespace lexwend::platform {

/// A session in which everything is well until a test says otherwise.
class FakeDiagnosis : public Diagnosis {
 public:
  SessionFacts facts() override { return session; }

  // Control of a test.
  SessionFacts session;
};

}  // namespace lexwend::platform
