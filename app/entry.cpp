// SPDX-License-Identifier: MIT
#include "app/entry.h"

#include <algorithm>
#include <iostream>
#include <memory>
#include <string_view>

#include "app/app_delegate.h"
#include "app/self_test.h"
#include "hotkey/hot_key_center.h"
#include "platform/application.h"
#include "platform/running_applications.h"
#include "support/log.h"

namespace lexwend {
namespace {

constexpr std::string_view kVersion = LEXWEND_VERSION;
/// For an executable outside of a bundle.
constexpr std::string_view kFallbackBundleIdentifier = LEXWEND_IDENTIFIER;

constexpr std::string_view kHelp =
    "Usage: lexwend [--selftest | --help | --version]\n"
    "\n"
    "Repairs text typed in the wrong keyboard layout, Hebrew or English: select it in any\n"
    "application and press the hot key (F2 unless changed in the menu).\n"
    "Without an option the agent starts and shows its icon in the menu bar or tray.\n"
    "\n"
    "  --selftest  print the character maps, a round-trip check and sample conversions\n"
    "  --help      print this text\n"
    "  --version   print the version\n";

bool contains(const std::vector<std::string>& arguments, std::string_view argument) {
  return std::find(arguments.begin(), arguments.end(), argument) != arguments.end();
}

bool anotherInstanceRuns() {
  const std::string bundleId =
      platform::application().bundleIdentifier().value_or(std::string(kFallbackBundleIdentifier));
  const auto running = platform::runningApplications().withBundleIdentifier(bundleId);
  const auto own = platform::runningApplications().ownProcessIdentifier();
  return std::any_of(running.begin(), running.end(),
                     [own](platform::ProcessIdentifier process) { return process != own; });
}

/// Reports before the interface exists: in the log and on the terminal.
void tell(const std::string& sentence, std::ostream& err) {
  Log::write(sentence);
  err << "lexwend: " << sentence << '\n' << std::flush;
}

}  // namespace

bool printNotice(const std::vector<std::string>& arguments, std::ostream& out) {
  if (contains(arguments, "--selftest")) return false;
  if (contains(arguments, "--help")) {
    out << kHelp << std::flush;
    return true;
  }
  if (contains(arguments, "--version")) {
    out << "lexwend " << kVersion << '\n' << std::flush;
    return true;
  }
  return false;
}

int runEntry(const std::vector<std::string>& arguments, HotKeyCenter& hotKeyCenter, std::ostream& out,
             std::ostream& err) {
  if (contains(arguments, "--selftest")) {
    SelfTest::run(out);
    out.flush();
    return 0;
  }
  if (printNotice(arguments, out)) return 0;

  if (anotherInstanceRuns()) return 0;

  platform::Application& application = platform::application();
  if (const auto reason = application.takeSharedApplication()) {
    tell(*reason, err);
    return 1;
  }
  if (const auto notice = application.notice()) tell(*notice, err);
  const auto delegate = AppDelegate::create(hotKeyCenter);
  application.setDelegate([weak = std::weak_ptr<AppDelegate>(delegate)] {
    if (const auto self = weak.lock()) self->applicationDidFinishLaunching();
  });
  application.setActivationPolicy(platform::ActivationPolicy::accessory);
  application.run();
  return 0;
}

int runEntry(const std::vector<std::string>& arguments) {
  return runEntry(arguments, HotKeyCenter::shared(), std::cout, std::cerr);
}

}  // namespace lexwend
