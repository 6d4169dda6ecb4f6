// SPDX-License-Identifier: MIT
#import <ServiceManagement/ServiceManagement.h>

#include "tests/mac/doubles/support.h"

using namespace lexwend::doubles;

namespace {
struct State {
  long status = SMAppServiceStatusNotRegistered;
  std::int32_t nextError = 0;
  long statusAfterRegistration = SMAppServiceStatusEnabled;
};
State& state() {
  static auto* the = new State;
  return *the;
}
const ResetHook kReset([] { state() = State{}; });

BOOL failed(const char* call, NSError** error) {
  const std::int32_t code = takeFailure(call).value_or(std::exchange(state().nextError, 0));
  if (code == 0) return NO;
  if (error != nullptr) *error = [NSError errorWithDomain:@"SMAppServiceErrorDomain" code:code userInfo:nil];
  return YES;
}
}  // namespace

namespace lexwend::doubles::login_item {
void setStatus(long status) { state().status = status; }
long status() { return state().status; }
void failNext(std::int32_t code) { state().nextError = code; }
void registrationNeedsApproval(bool needs) {
  state().statusAfterRegistration = needs ? SMAppServiceStatusRequiresApproval : SMAppServiceStatusEnabled;
}
void setStatusAfterRegistration(long status) { state().statusAfterRegistration = status; }
}  // namespace lexwend::doubles::login_item

@implementation SMAppService
+ (SMAppService*)mainAppService {
  record();
  static SMAppService* the = keptForever([[SMAppService alloc] init]);
  return the;
}
- (SMAppServiceStatus)status {
  record();
  return static_cast<SMAppServiceStatus>(state().status);
}
- (BOOL)registerAndReturnError:(NSError**)error {
  record();
  if (failed("-[SMAppService registerAndReturnError:]", error)) return NO;
  state().status = state().statusAfterRegistration;
  return YES;
}
- (BOOL)unregisterAndReturnError:(NSError**)error {
  record();
  if (failed("-[SMAppService unregisterAndReturnError:]", error)) return NO;
  state().status = SMAppServiceStatusNotRegistered;
  return YES;
}
@end
