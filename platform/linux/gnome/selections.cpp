// SPDX-License-Identifier: MIT
#include "platform/linux/gnome/selections.h"

#include <utility>

#include "platform/linux/gnome/mutter_owner.h"
#include "platform/linux/gnome/mutter_reader.h"

namespace lexwend::platform {

Selections selectionsOfMutter(const std::shared_ptr<MutterRemoteDesktop>& remote, const Selections& x,
                              const std::function<bool(xcb_timestamp_t)>& startKeeper) {
  return {[remote, x, startKeeper](SelectionOwner::Changed changed) -> std::unique_ptr<SelectionOwner> {
            return std::make_unique<MutterOwner>(remote, x.openOwner, startKeeper, std::move(changed));
          },
          [remote, x](std::string_view selection) -> std::unique_ptr<ClipboardReader> {
            if (selection == "PRIMARY") return x.openReader ? x.openReader(selection) : nullptr;
            return std::make_unique<MutterReader>(remote);
          }};
}

}  // namespace lexwend::platform
