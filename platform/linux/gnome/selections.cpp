// SPDX-License-Identifier: MIT
#include "platform/linux/gnome/selections.h"

#include <utility>

#include "platform/linux/gnome/mutter_owner.h"
#include "platform/linux/gnome/mutter_reader.h"

namespace lexwend::platform {

Selections selectionsOfMutter(const std::shared_ptr<MutterRemoteDesktop>& remote) {
  const Selections x = selectionsOfX();
  return {[remote, x](SelectionOwner::Changed changed) -> std::unique_ptr<SelectionOwner> {
            return std::make_unique<MutterOwner>(remote, x.openOwner, std::move(changed));
          },
          [remote, x](std::string_view selection) -> std::unique_ptr<ClipboardReader> {
            if (selection == "PRIMARY") return x.openReader(selection);
            return std::make_unique<MutterReader>(remote);
          }};
}

}  // namespace lexwend::platform
