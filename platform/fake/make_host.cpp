// SPDX-License-Identifier: MIT
// The in-memory host as the host of the program. It runs the whole agent without a desktop. One editor is in
// front. Its event loop reads commands from standard input and ends with the input. "help" lists the
// commands.
#include <charconv>
#include <iostream>
#include <string>
#include <string_view>

#include "platform/fake/fake_host.h"

namespace lexwend::platform {
namespace {

constexpr std::string_view kHelp =
    "text TEXT             the editor holds this text\n"
    "select TEXT           selects it there; alone: all\n"
    "press [CODE [MASK]]   a key by its virtual key code and Carbon modifiers; alone: the hot key\n"
    "wait MS               time passes\n"
    "choose TITLE          chooses a menu item\n"
    "save, cancel, close   in the recorder window\n"
    "answer TITLE          the next alert will be answered by that button\n"
    "permission on|off     grants or revokes the Accessibility permission\n"
    "use ID                switches to the layout of that identifier\n"
    "copy TEXT             another application copies it\n"
    "show                  prints what the user sees\n"
    "log                   prints the log file\n"
    "quit                  ends the event loop\n";

std::uint32_t wholeNumber(std::string_view text) {
  std::uint32_t value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

class Console {
 public:
  explicit Console(FakeHost& host) : host_(host) {}

  void run() {
    for (std::string line; !host_.application().terminated && std::getline(std::cin, line);) {
      const auto blank = line.find(' ');
      const std::string command = line.substr(0, blank);
      if (command == "quit") break;
      if (!command.empty() && command.front() != '#') {
        obey(command, blank == std::string::npos ? std::string() : line.substr(blank + 1));
      }
      complain(host_.complaints().take());
    }
    complain(host_.settle());
  }

 private:
  void obey(const std::string& command, const std::string& rest) {
    FakeField& field = *host_.apps().focus();
    if (command == "text") {
      field.setText(rest);
    } else if (command == "select") {
      if (rest.empty()) {
        field.selectAll();
      } else if (!field.select(rest)) {
        std::cout << "the text is not there\n";
      }
    } else if (command == "press") {
      press(rest);
    } else if (command == "wait") {
      host_.advance(std::chrono::milliseconds(wholeNumber(rest)));
    } else if (command == "choose") {
      host_.statusBar().choose(rest);
    } else if (command == "save") {
      host_.recorderWindows().clickSave();
    } else if (command == "cancel") {
      host_.recorderWindows().clickCancel();
    } else if (command == "close") {
      host_.recorderWindows().clickCloseBox();
    } else if (command == "answer") {
      host_.alerts().answer(rest);
    } else if (command == "permission") {
      host_.accessibility().setTrusted(rest == "on");
    } else if (command == "use") {
      if (!host_.inputSourceService().use(rest)) std::cout << "no such layout is enabled\n";
    } else if (command == "copy") {
      host_.pasteboard().otherAppCopies(rest);
    } else if (command == "show") {
      show(field);
    } else if (command == "log") {
      std::cout << host_.logFile();
    } else if (command == "help") {
      std::cout << kHelp;
    } else {
      std::cout << "unknown command \"" << command << "\"; try help\n";
    }
    std::cout << std::flush;
  }

  void press(const std::string& rest) {
    if (!rest.empty()) {
      const auto blank = rest.find(' ');
      const auto modifiers =
          blank == std::string::npos ? 0 : wholeNumber(std::string_view(rest).substr(blank + 1));
      host_.userPresses(KeyCode{wholeNumber(std::string_view(rest).substr(0, blank))}, Modifiers{modifiers});
      return;
    }
    const auto& held = host_.hotKeyService().registered();
    if (held.empty()) {
      std::cout << "no hot key is registered\n";
      return;
    }
    const auto combination = held.begin()->first;
    host_.hotKeyService().press(combination.first, combination.second);
  }

  void show(const FakeField& field) {
    std::cout << "text: " << field.text() << "\nselected: " << field.selectedText()
              << "\npasteboard: " << host_.pasteboard().plainText().value_or("(no text)")
              << "\nlayout: " << host_.inputSourceService().currentId()
              << "\nicon: " << host_.statusBar().icon() << "\nmenu:\n";
    if (const auto menu = host_.statusBar().menu()) {
      for (const auto& item : menu->items) {
        if (item->hidden) continue;
        std::cout << "  " << (item->separator ? "---" : (item->checked ? "[x] " : "    ") + item->title)
                  << (item->separator || menu->canChoose(*item) ? "" : " (disabled)") << '\n';
      }
    }
    if (const auto* window = host_.recorderWindows().window()) {
      std::cout << "recorder: " << window->combination << '\n' << window->message << '\n';
    }
    for (const auto& alert : host_.alerts().shown()) std::cout << "alert: " << alert.messageText << '\n';
  }

  static void complain(const std::vector<std::string>& complaints) {
    for (const auto& complaint : complaints) std::cout << "cannot: " << complaint << '\n';
    std::cout << std::flush;
  }

  FakeHost& host_;
};

}  // namespace

std::unique_ptr<Host> makeHost() {
  auto host = std::make_unique<FakeHost>();
  host->apps().open("Editor", "org.lexwend.Editor");
  host->application().whileRunning = [running = host.get()] { Console(*running).run(); };
  return host;
}

}  // namespace lexwend::platform
