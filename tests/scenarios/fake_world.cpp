// SPDX-License-Identifier: MIT
#include "tests/scenarios/fake_world.h"

#include <array>
#include <chrono>
#include <utility>

#include "app/entry.h"
#include "hotkey/hot_key_center.h"
#include "tests/scenarios/script.h"
#include "tests/scenarios/vocabulary.h"

namespace lexwend::scenarios {
namespace {

using namespace platform;
using std::chrono::milliseconds;

constexpr std::string_view kLogPath = "/Library/Logs/Lexwend.log";

std::size_t keysDown(const std::vector<FakePostedKey>& posted, KeyCode keyCode) {
  std::size_t count = 0;
  for (const auto& key : posted) count += key.keyDown && key.keyCode == keyCode ? 1 : 0;
  return count;
}

}  // namespace

std::vector<FakeLayout> FakeWorld::layoutList(const Words& names) {
  std::vector<FakeLayout> list;
  if (names == Words{"none"}) return list;
  for (const auto& name : names) list.push_back(layout(name));
  return list;
}

void FakeWorld::actOnSystem(Act act, const Words& arguments) {
  switch (act) {
    case Act::layouts:
      host_.inputSourceService().setLayouts(layoutList(arguments));
      return;
    case Act::useLayout: {
      if (arguments[0] == "none") {
        host_.inputSourceService().useNone();
        return;
      }
      const auto* id = std::get_if<std::string>(&layout(arguments[0]).id);
      if (id == nullptr || !host_.inputSourceService().use(*id)) {
        throw ScriptMistake("the layout \"" + arguments[0] + "\" is not enabled");
      }
      return;
    }
    case Act::changeLayouts:
      host_.inputSourceService().changeLayouts(layoutList(arguments));
      return;
    case Act::app:
      host_.apps().open(arguments[0], arguments.size() > 1 ? std::optional(arguments[1]) : std::nullopt);
      return;
    case Act::front: {
      if (arguments[0] == "nobody") {
        host_.apps().bringToFront(nullptr);
        return;
      }
      const auto found = host_.apps().named(arguments[0]);
      if (!found) throw ScriptMistake("there is no application \"" + arguments[0] + "\"");
      host_.apps().bringToFront(found);
      return;
    }
    case Act::focusAnswer:
      host_.accessibility().answerFocus(answerOf(arguments, 0));
      return;
    case Act::terminal:
      app().terminal = true;
      return;
    case Act::otherAppCopies:
      host_.pasteboard().otherAppCopies(arguments[0]);
      return;
    case Act::pasteboardItem: {
      if (arguments.size() % 2 != 0) throw ScriptMistake("a pasteboard item is pairs of type and data");
      FakePasteboardItemContents item;
      for (std::size_t i = 0; i < arguments.size(); i += 2) {
        item.push_back(arguments[i + 1] == "unobtainable"
                           ? FakePasteboardEntry::brokenPromise(arguments[i])
                           : FakePasteboardEntry::data(arguments[i], arguments[i + 1]));
      }
      auto contents = host_.pasteboard().contents();
      contents.push_back(std::move(item));
      host_.pasteboard().otherAppWrites(std::move(contents));
      return;
    }
    case Act::clearPasteboard:
      host_.pasteboard().otherAppClears();
      return;
    case Act::pasteboardReportsNothing:
      host_.pasteboard().reportNoItems(true);
      return;
    case Act::hold:
      host_.keyEvents().holdModifiers(eventFlagsOf(arguments));
      return;
    case Act::releaseAfter:
      host_.keyEvents().releaseModifiersAfter(durationOf(arguments[0]));
      return;
    case Act::secureInput:
      host_.secureInput().hold(onOff(arguments[0], "on", "off"));
      return;
    case Act::permission:
      host_.accessibility().setTrusted(onOff(arguments[0], "granted", "missing"));
      return;
    case Act::permissionGrantedAfter:
      host_.accessibility().grantAfter(durationOf(arguments[0]));
      return;
    case Act::taken: {
      const auto combination = parseCombination(arguments[0]);
      host_.hotKeyService().otherAppTakes(KeyCode{combination.keyCode},
                                          Modifiers{combination.carbonModifiers});
      return;
    }
    case Act::loseHotKeys:
      host_.hotKeyService().loseRegistrations();
      return;
    case Act::setting:
      host_.standardUserDefaults().put(arguments[0], valueOf(arguments));
      return;
    case Act::loginItem:
      host_.loginItem().setStatus(statusOf(arguments[0]));
      return;
    case Act::loginItemRegistersAs:
      host_.loginItem().setStatusAfterRegister(statusOf(arguments[0]));
      return;
    case Act::failNext:
      host_.failNext(failureOf(arguments[0]),
                     arguments.size() > 1 ? static_cast<std::int32_t>(parseNumber(arguments[1])) : -1);
      return;
    case Act::failLater:
      host_.failNext(
          failureOf(arguments[1]),
          {.code = arguments.size() > 2 ? static_cast<std::int32_t>(parseNumber(arguments[2])) : -1,
           .after = static_cast<int>(parseNumber(arguments[0]))});
      return;
    case Act::alertAnswer:
      host_.alerts().answer(arguments[0]);
      return;
    case Act::alertAnswerByClosing:
      host_.alerts().answerByClosing();
      return;
    case Act::logFolderMissing:
      host_.files().removeFolder(host_.files().home + "/Library/Logs");
      return;
    case Act::logFile:
      host_.files().put(host_.files().home + std::string(kLogPath), arguments[0]);
      return;
    case Act::logFileReadOnly:
      host_.files().setReadOnly(host_.files().home + std::string(kLogPath), true);
      return;
    case Act::homeMissing:
      host_.files().home.clear();
      return;
    case Act::version:
      host_.application().version = arguments[0];
      return;
    case Act::versionMissing:
      host_.application().version.reset();
      return;
    case Act::bundleIdentifierMissing:
      host_.application().identifier.reset();
      return;
    case Act::otherInstance:
      host_.runningApplications().add("org.lexwend.Lexwend",
                                      host_.runningApplications().ownProcessIdentifier() + 1);
      return;
    case Act::ownInstanceListed:
      host_.runningApplications().addOwnProcess("org.lexwend.Lexwend");
      return;
    case Act::press: {
      const auto combination = parseCombination(arguments[0]);
      host_.userPresses(KeyCode{combination.keyCode}, Modifiers{combination.carbonModifiers});
      return;
    }
    case Act::wait:
      host_.advance(durationOf(arguments[0]));
      return;
    case Act::choose:
      host_.statusBar().choose(arguments[0]);
      return;
    case Act::click: {
      enum class Button { save, cancel, close };
      switch (oneOf<Button, 3>(
          arguments[0], {{{"save", Button::save}, {"cancel", Button::cancel}, {"close", Button::close}}})) {
        case Button::save:
          host_.recorderWindows().clickSave();
          return;
        case Button::cancel:
          host_.recorderWindows().clickCancel();
          return;
        case Button::close:
          host_.recorderWindows().clickCloseBox();
          return;
      }
      return;
    }
    case Act::wake:
      host_.workspace().wake();
      return;
    case Act::dispatch:
      host_.hotKeyService().dispatch({0x544B5652, static_cast<std::uint32_t>(parseNumber(arguments[0]))});
      return;
    default:
      throw ScriptMistake("this system has no such act");
  }
}

void FakeWorld::start(const Words& arguments, const std::function<void()>& whileRunning) {
  host_.processEnds();
  exitStatus_.reset();
  bool ran = false;
  host_.application().whileRunning = [&] {
    ran = true;
    whileRunning();
  };
  Words all{"lexwend"};
  all.insert(all.end(), arguments.begin(), arguments.end());
  HotKeyCenter center;
  int status = 0;
  {
    const HostScope scope(host_);
    status = runEntry(all, center, output_, output_);
  }
  host_.application().whileRunning = nullptr;
  if (!ran) {
    exitStatus_ = status;
    whileRunning();
  }
}

std::vector<ModelWorld::MenuEntry> FakeWorld::menu() {
  std::vector<MenuEntry> entries;
  const auto menu = host_.statusBar().menu();
  if (!menu) return entries;
  for (const auto& item : menu->items) {
    entries.push_back({item->title, item->keyEquivalent, item->separator, item->checked, item->hidden,
                       item->hidden ? item->enabled : menu->canChoose(*item)});
  }
  return entries;
}

Words FakeWorld::lookAtSystem(Look look, const Words& arguments) {
  switch (look) {
    case Look::pasteboardText:
      return lineOf(host_.pasteboard().plainText());
    case Look::pasteboardItems: {
      Words lines;
      for (const auto& item : host_.pasteboard().contents()) {
        std::string line = "item";
        for (const auto& entry : item) {
          line +=
              " " + entry.type + "=" + (entry.bytes ? "\"" + textOf(*entry.bytes) + "\"" : "unobtainable");
        }
        lines.push_back(std::move(line));
      }
      return lines;
    }
    case Look::pasteboardClears:
      return lineOf(host_.calls().count("pasteboard.clearContents"));
    case Look::layout:
      return {layoutName(host_.inputSourceService().currentId())};
    case Look::layoutsSelected: {
      Words lines;
      for (const auto& id : host_.inputSourceService().selections()) {
        lines.push_back(id.empty() ? "unnamed" : layoutName(id));
      }
      return lines;
    }
    case Look::icon: {
      const auto icon = host_.statusBar().icon();
      return {icon.empty() ? "none" : icon};
    }
    case Look::icons: {
      const auto item = host_.statusBar().item();
      return item ? item->icons : Words{};
    }
    case Look::alerts:
      return alertLines(host_.alerts().shown());
    case Look::log:
      return host_.logMessages();
    case Look::logFile:
      return lineOf(host_.files().bytes(host_.files().home + std::string(kLogPath)));
    case Look::beeps:
      return lineOf(static_cast<std::size_t>(host_.application().beeps));
    case Look::prompts:
      return lineOf(static_cast<std::size_t>(host_.accessibility().prompts()));
    case Look::activations:
      return lineOf(host_.application().activations.size());
    case Look::opened:
      return host_.workspace().openedUrls();
    case Look::setting: {
      const auto value = host_.standardUserDefaults().objectForKey(arguments[0]);
      return {value ? settingText(*value) : "absent"};
    }
    case Look::settingsWritten: {
      Words keys;
      for (const auto& call : host_.calls().of("userDefaults.set")) {
        keys.push_back(call.substr(call.find(' ') + 1, call.rfind(' ') - call.find(' ') - 1));
      }
      return keys;
    }
    case Look::loginItem:
      return {nameOf(host_.loginItem().status())};
    case Look::loginRegistrations:
      return lineOf(host_.calls().count("loginItem.registerItem"));
    case Look::loginRemovals:
      return lineOf(host_.calls().count("loginItem.unregisterItem"));
    case Look::hotKeys: {
      Words lines;
      for (const auto& [combination, identity] : host_.hotKeyService().registered()) {
        lines.push_back(combinationName(number(combination.first), number(combination.second)));
      }
      return lines;
    }
    case Look::hotKeyIds: {
      Words lines;
      for (const auto& identity : host_.hotKeyService().offered()) {
        lines.push_back(signatureText(identity.signature) + ":" + std::to_string(identity.id));
      }
      return lines;
    }
    case Look::copiesSent:
      return lineOf(keysDown(host_.keyEvents().posted(), kKeyC));
    case Look::pastesSent:
      return lineOf(keysDown(host_.keyEvents().posted(), kKeyV));
    case Look::keysSent: {
      Words lines;
      for (const auto& key : host_.keyEvents().posted()) {
        std::ostringstream line;
        line << number(key.keyCode) << (key.keyDown ? " down" : " up") << " flags 0x" << std::hex
             << number(key.flags) << std::dec << " source "
             << (key.source ? std::to_string(static_cast<int>(*key.source)) : "none") << " tap "
             << static_cast<unsigned>(key.tap) << " at " << key.time.count();
        lines.push_back(line.str());
      }
      return lines;
    }
    case Look::elementCalls:
      return lineOf(static_cast<std::size_t>(host_.accessibility().elementCalls()));
    case Look::recorder:
      return {host_.recorderWindows().window() != nullptr ? "open" : "closed"};
    case Look::recorderLook: {
      const auto* window = host_.recorderWindows().window();
      return window != nullptr ? linesOf(window->look) : Words{};
    }
    case Look::recorderCombination:
    case Look::recorderMessage:
    case Look::save: {
      const auto* window = host_.recorderWindows().window();
      if (window == nullptr) return {"no recorder is open"};
      if (look == Look::recorderCombination) return {window->combination};
      if (look == Look::save) return {window->saveEnabled ? "enabled" : "disabled"};
      return {window->message, nameOf(window->messageColor)};
    }
    case Look::timers:
      return lineOf(host_.runLoop().liveTimers());
    case Look::pendingWork:
      return lineOf(host_.runLoop().pendingWork());
    case Look::elapsed:
      return lineOf(
          static_cast<std::size_t>(std::chrono::duration_cast<milliseconds>(host_.runLoop().now()).count()));
    default:
      throw ScriptMistake("this system has no such look");
  }
}

Words FakeWorld::complaints() {
  return host_.settle();
}

}  // namespace lexwend::scenarios
