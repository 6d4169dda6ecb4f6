// SPDX-License-Identifier: MIT
#include <chrono>
#include <string>

#include "app/app_delegate.h"
#include "platform/application.h"
#include "platform/run_loop.h"
#include "platform/running_instance.h"
#include "support/settings.h"

namespace lexwend {
namespace {

/// A panel that starts together with the agent has shown the icon by then.
constexpr std::chrono::milliseconds kUnseenDelay{8000};

}  // namespace

void AppDelegate::receiveCommands() {
  commands_ =
      platform::runningInstance().receive([weak = weak_from_this()](platform::InstanceCommand command) {
        const auto self = weak.lock();
        return self != nullptr && self->carryOut(command);
      });
  if (statusItem().isShown()) return;
  platform::runLoop().dispatchAfter(kUnseenDelay, weakly(&AppDelegate::sayThatItRunsUnseen));
}

bool AppDelegate::carryOut(platform::InstanceCommand command) {
  switch (command) {
    case platform::InstanceCommand::fix:
      return requestFix();
    case platform::InstanceCommand::menu:
      statusItem().openMenu();
      return true;
    case platform::InstanceCommand::settings:
      changeHotKey();
      return true;
    case platform::InstanceCommand::quit:
      platform::application().terminate();
      return true;
  }
  return false;
}

void AppDelegate::sayThatItRunsUnseen() {
  if (statusItem().isShown()) return;
  const std::string key = HotKeyCenter::displayName(Settings::hotKeyCode(), Settings::hotKeyModifiers());
  platform::application().notifyUser("Lexwend פועל ברקע. סמן טקסט ולחץ על " + key +
                                     " כדי לתקן אותו. אין כאן מגש לסמל, והתפריט נפתח בפקודה lexwend --menu.");
}

}  // namespace lexwend
