// SPDX-License-Identifier: MIT
#include "app/entry.h"

#include <algorithm>
#include <array>
#include <iostream>
#include <memory>
#include <string_view>
#include <utility>

#include "app/app_delegate.h"
#include "app/self_test.h"
#include "hotkey/hot_key_center.h"
#include "platform/application.h"
#include "platform/running_applications.h"
#include "platform/running_instance.h"
#include "support/log.h"

namespace lexwend {
namespace {

constexpr std::string_view kVersion = LEXWEND_VERSION;
/// For an executable outside of a bundle.
constexpr std::string_view kFallbackBundleIdentifier = LEXWEND_IDENTIFIER;

constexpr std::string_view kHelp =
    "Usage: lexwend [OPTION]\n"
    "\n"
    "Repairs text typed in the wrong keyboard layout, Hebrew or English: select it in\n"
    "any application and press the hot key (F2 unless changed in the menu). Without\n"
    "an option the agent starts and shows its icon in the menu bar or tray.\n"
    "\n"
    "  --fix       tell the agent that runs to fix the selected text\n"
    "  --menu      tell it to open its menu\n"
    "  --settings  tell it to open the window that changes the hot key\n"
    "  --quit      tell it to end\n"
    "  --selftest  print the character maps, a round-trip check and samples\n"
    "  -h, --help  print this text\n"
    "  --version   print the version\n"
    "\n"
    "Examples:\n"
    "  lexwend &      start it; where it runs already, nothing happens\n"
    "  lexwend --fix  as the command of a keyboard shortcut of the desktop\n"
    "\n"
    "Files:\n"
    "  ~/Library/Logs/Lexwend.log  what it did, without your text\n"
    "  On Linux also ~/.config/lexwend/settings, and for the login\n"
    "  ~/.config/autostart/org.lexwend.Lexwend.desktop\n";

constexpr std::array<std::pair<std::string_view, platform::InstanceCommand>, 4> kCommands = {
    {{"--fix", platform::InstanceCommand::fix},
     {"--menu", platform::InstanceCommand::menu},
     {"--settings", platform::InstanceCommand::settings},
     {"--quit", platform::InstanceCommand::quit}}};

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

/// Empty when the command was taken.
std::string_view complaintAbout(platform::InstanceAnswer answer) {
  switch (answer) {
    case platform::InstanceAnswer::taken:
      return "";
    case platform::InstanceAnswer::dropped:
      return "the agent is busy with a fix or with a window of its own; nothing was done";
    case platform::InstanceAnswer::nobodyRuns:
      return "no agent runs in this session; start one with: lexwend";
    case platform::InstanceAnswer::unreachable:
      return "the agent cannot be reached: the session bus or the agent does not answer";
    case platform::InstanceAnswer::notHere:
      return "a running agent can be reached from the command line on Linux only";
  }
  return "";
}

int passCommand(platform::InstanceCommand command, std::ostream& err) {
  const std::string_view complaint = complaintAbout(platform::runningInstance().pass(command));
  if (complaint.empty()) return 0;
  err << "lexwend: " << complaint << '\n' << std::flush;
  return 1;
}

/// Reports before the interface exists: in the log and on the terminal.
void tell(const std::string& sentence, std::ostream& err) {
  Log::write(sentence);
  err << "lexwend: " << sentence << '\n' << std::flush;
}

}  // namespace

bool printNotice(const std::vector<std::string>& arguments, std::ostream& out) {
  if (contains(arguments, "--selftest")) return false;
  if (contains(arguments, "--help") || contains(arguments, "-h")) {
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

  std::vector<platform::InstanceCommand> commands;
  for (const auto& [option, command] : kCommands) {
    if (contains(arguments, option)) commands.push_back(command);
  }
  if (commands.size() > 1) {
    err << "lexwend: give one of --fix, --menu, --settings and --quit\n" << std::flush;
    return 2;
  }
  if (!commands.empty()) return passCommand(commands.front(), err);

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
