// SPDX-License-Identifier: MIT
#include "platform/linux/server/display_server.h"

#include <utility>

#include "platform/linux/server/compositor.h"
#include "platform/linux/server/x_server.h"

namespace lexwend::platform {

std::unique_ptr<DisplayServer> DisplayServer::open(Needs needs) {
  if (auto sway = openSwayServer(needs)) return sway;
  if (auto kwin = openKWinServer()) return kwin;
  if (auto mutter = openMutterServer(needs)) return mutter;
  if (auto another = openOtherCompositor(needs)) return another;
  return std::make_unique<XServer>(std::move(needs.play));
}

}  // namespace lexwend::platform
