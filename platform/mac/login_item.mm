// SPDX-License-Identifier: MIT
#include "platform/mac/login_item.h"

#import <ServiceManagement/ServiceManagement.h>

namespace lexwend::platform::mac {
LoginItemStatus MacLoginItem::status() {
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

bool MacLoginItem::registerItem() { return [[SMAppService mainAppService] registerAndReturnError:nil]; }

bool MacLoginItem::unregisterItem() { return [[SMAppService mainAppService] unregisterAndReturnError:nil]; }

}  // namespace lexwend::platform::mac
