// SPDX-License-Identifier: MIT
#include "platform/login_item.h"

#import <ServiceManagement/ServiceManagement.h>

#include "platform/mac/mac_services.h"

namespace lexwend::platform::mac {
namespace {

class MacLoginItem : public LoginItem {
 public:
  LoginItemStatus status() override {
    switch ([[SMAppService mainAppService] status]) {
      case SMAppServiceStatusNotRegistered:
        return LoginItemStatus::notRegistered;
      case SMAppServiceStatusEnabled:
        return LoginItemStatus::enabled;
      case SMAppServiceStatusRequiresApproval:
        return LoginItemStatus::requiresApproval;
      case SMAppServiceStatusNotFound:
        return LoginItemStatus::notFound;
    }
    return LoginItemStatus::notFound;  // a status that a later system may add
  }
  bool registerItem() override { return [[SMAppService mainAppService] registerAndReturnError:nil]; }
  bool unregisterItem() override { return [[SMAppService mainAppService] unregisterAndReturnError:nil]; }
};

}  // namespace

std::unique_ptr<LoginItem> makeLoginItem() { return std::make_unique<MacLoginItem>(); }

}  // namespace lexwend::platform::mac
