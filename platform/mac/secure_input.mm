// SPDX-License-Identifier: MIT
#include "platform/secure_input.h"

#import <Carbon/Carbon.h>

#include "platform/mac/mac_services.h"

namespace lexwend::platform::mac {
namespace {

class MacSecureInput : public SecureInput {
 public:
  bool isSecureEventInputEnabled() override { return IsSecureEventInputEnabled(); }
};

}  // namespace

std::unique_ptr<SecureInput> makeSecureInput() { return std::make_unique<MacSecureInput>(); }

}  // namespace lexwend::platform::mac
