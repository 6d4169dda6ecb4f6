// SPDX-License-Identifier: MIT
#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "app/app_delegate.h"
#include "core/converter.h"
#include "input/input_sources.h"
#include "platform/accessibility.h"
#include "platform/application.h"
#include "platform/hot_key_service.h"
#include "platform/input_sources.h"
#include "platform/run_loop.h"
#include "platform/running_instance.h"
#include "platform/workspace.h"
#include "support/log.h"
#include "support/settings.h"
#include "text/text_access.h"

namespace lexwend {
namespace {

/// The menu closes and the front application gets the keyboard back within this time.
constexpr std::chrono::milliseconds kMenuDelay{250};
/// How long the icon shows an outcome.
constexpr std::chrono::milliseconds kFlashDuration{700};

std::string frontmostBundleIdentifier() {
  const auto front = platform::workspace().frontmostApplication();
  return front ? front->bundleIdentifier.value_or("?") : "?";
}

}  // namespace

void AppDelegate::performFix() noexcept {
  // A press that waited for this fix would convert what is selected then, which nobody asked for.
  const auto pause = platform::hotKeyService().ignorePresses();
  const auto deaf = platform::runningInstance().dropFixes();
  fixIsRequested_ = false;
  const bool currentLayoutIsHebrew = InputSources::currentLayoutIsHebrew();
  Log::write("fix: front=" + frontmostBundleIdentifier() +
             " currentHebrew=" + (currentLayoutIsHebrew ? "true" : "false"));

  std::optional<std::string_view> target;  // the language that the text was converted to
  const Converter converter(layoutMap_);
  try {
    TextAccess::replaceSelection([&](std::string_view text) -> std::optional<std::string> {
      Converter::Result result = converter.convert(text, currentLayoutIsHebrew);
      if (!result.changed) return std::nullopt;
      target = result.targetIsHebrew ? "he" : "en";
      return std::move(result.text);
    });
  } catch (const TextAccess::Error& error) {
    switch (error.failure()) {
      case TextAccess::Failure::noPermission:
        Log::write("fix: no permission");
        platform::accessibility().isProcessTrustedWithPrompt();
        showPermissionAlert();
        return;
      case TextAccess::Failure::secureInput:
      case TextAccess::Failure::noSelection:
      case TextAccess::Failure::nothingToChange:
        Log::write(std::string("fix: failed ") + TextAccess::caseName(error.failure()));
        platform::application().beep();
        flash("xmark");
        return;
    }
  }

  if (Settings::switchLayoutAfter() && target) {
    if (const auto layout = InputSources::keyboardLayout(*target)) {
      platform::inputSourceService().select(layout->source);
    }
  }
  Log::write("fix: success target=" + std::string(target.value_or("none")));
  flash("checkmark");
}

void AppDelegate::fixSelectionFromMenu() {
  platform::runLoop().dispatchAfter(kMenuDelay, [weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->performFix();
  });
}

bool AppDelegate::requestFix() {
  // While the recorder is open the hot key is not registered, and two fixes would undo each other.
  if (recorder_ != nullptr || fixIsRequested_) return false;
  fixIsRequested_ = true;
  // The launcher or shortcut that asks still has the keyboard. A press of the hot key meanwhile is the fix.
  platform::runLoop().dispatchAfter(kMenuDelay, [weak = weak_from_this()] {
    const auto self = weak.lock();
    if (self == nullptr || !std::exchange(self->fixIsRequested_, false) || self->recorder_ != nullptr) return;
    self->performFix();
  });
  return true;
}

void AppDelegate::flash(std::string_view symbolName) {
  showSymbol(symbolName);
  platform::runLoop().dispatchAfter(kFlashDuration, weakly(&AppDelegate::refreshMenuState));
}

}  // namespace lexwend
