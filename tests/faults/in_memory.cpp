// SPDX-License-Identifier: MIT
// Faults on an operating system in memory, where every moment of a fix can be met exactly: one line a fault,
// in the words of run.py. What a fault may cost stands in its row with the reason.
#include <chrono>
#include <cstdio>
#include <exception>
#include <functional>
#include <string>
#include <vector>

#include "tests/app/agent.h"

namespace lexwend::tests {
namespace {

using namespace std::chrono_literals;
using platform::AccessOperation;
using platform::FakeAnswer;
using platform::FakeCopy;
using platform::FakeOperation;
using platform::FakePasteboardEntry;
using std::chrono::milliseconds;

constexpr const char* kGarbled = "akuo nv akunl";
constexpr const char* kMeant = "שלום מה שלומך";
constexpr const char* kElsewhere = "gkho";

/// An agent, an editor with the garbled text selected, and a clipboard of two items.
struct Desk {
  Agent agent;
  platform::FakeHost& host = agent.host;
  platform::FakeAppRef editor;
  platform::FakeAppRef other;
  const std::vector<platform::FakePasteboardItemContents> users = {
      {FakePasteboardEntry::text("the user's own"), FakePasteboardEntry::data("public.html", "<i>")},
      {FakePasteboardEntry::data("public.png", "\x89PNG")}};

  explicit Desk(bool compatible) {
    if (compatible) host.standardUserDefaults().setBool(true, "compatMode");
    agent.launch();
    other = host.apps().open("Other", "com.example.other", kElsewhere);
    editor = agent.openEditor(kGarbled);
    host.pasteboard().otherAppWrites(users);
  }
  ~Desk() { host.settle(); }  // what was prepared and not met is no matter here
  Desk(const Desk&) = delete;
  Desk& operator=(const Desk&) = delete;
};

/// What a fault may cost on every host that cannot refuse it.
struct Allowed {
  bool clipboard = false;
  bool otherWindow = false;
  bool text = false;
  const char* inherent = nullptr;
};

struct Row {
  std::string name;
  bool compatible = false;
  std::function<void(Desk&)> prepare;
  Allowed allowed;
};

std::string lostBy(const Row& row) {
  Desk desk(row.compatible);
  row.prepare(desk);
  desk.host.userPresses(platform::kKeyF2);
  desk.host.advance(5s);
  const std::string text = desk.editor->windows.front().field->text();
  if (text != kGarbled && text != kMeant && !row.allowed.text) return "the text is " + text;
  const std::string elsewhere = desk.other->windows.front().field->text();
  if (elsewhere != kElsewhere && !row.allowed.otherWindow) return "the other window holds " + elsewhere;
  if (desk.host.pasteboard().contents() != desk.users && !row.allowed.clipboard) {
    return "the clipboard holds " + desk.host.pasteboard().plainText().value_or("no text");
  }
  int down = 0;
  for (const auto& key : desk.host.keyEvents().posted()) down += key.keyDown ? 1 : -1;
  if (down != 0) return "a key is down";
  if (!desk.host.complaints().all().empty()) return desk.host.complaints().all().front();

  // The next fix, in a sound application.
  desk.host.settle();
  desk.host.accessibility().setTrusted(true);
  desk.host.secureInput().hold(false);
  desk.host.keyEvents().holdModifiers(platform::kNoEventFlags);
  desk.host.inputSourceService().changeLayouts({platform::usLayout(), platform::hebrewLayout()});
  const auto next = desk.agent.openEditor(kGarbled);
  desk.host.userPresses(platform::kKeyF2);
  desk.host.advance(5s);
  const std::string served = next->windows.front().field->text();
  return served == kMeant ? "" : "the next fix came to " + served;
}

void addTimed(std::vector<Row>& rows, const std::string& what, const std::function<void(Desk&)>& event,
              const Allowed& allowed, int first = 0) {
  for (const int at : {0, 10, 50, 90, 110, 120, 130, 150, 200, 400, 620, 640, 700}) {
    if (at < first) continue;
    rows.push_back({what + ", " + std::to_string(at) + " ms", true,
                    [=](Desk& desk) {
                      // Slow enough for every moment between the copy and the end of the paste to pass.
                      desk.editor->copies = {FakeCopy::Kind::selection, 100ms};
                      desk.editor->pastes.delay = 20ms;
                      desk.host.clock().systemDoes(milliseconds(at), [&desk, event] { event(desk); });
                    },
                    allowed});
  }
}

std::vector<Row> table() {
  std::vector<Row> rows;
  const Allowed nothing{};
  const Allowed users{.clipboard = true,
                      .otherWindow = false,
                      .text = true,
                      .inherent = "this system does not tell who copies, and what was kept is put back"};
  const Allowed focus{.clipboard = false,
                      .otherWindow = true,
                      .text = false,
                      .inherent = "this system gives keys to whoever is in front"};

  addTimed(
      rows, "another program copies", [](Desk& d) { d.host.pasteboard().otherAppCopies("gkho"); }, users);
  addTimed(
      rows, "another program empties the clipboard", [](Desk& d) { d.host.pasteboard().otherAppClears(); },
      users);
  addTimed(
      rows, "another window gets the keyboard",
      [](Desk& d) {
        d.other->focus()->selectAll();
        d.host.apps().bringToFront(d.other);
      },
      focus);
  addTimed(
      rows, "nobody is in front", [](Desk& d) { d.host.apps().bringToFront(nullptr); }, nothing);
  addTimed(
      rows, "a password field gets the focus", [](Desk& d) { d.editor->focus()->password = true; }, nothing);
  addTimed(
      rows, "the field becomes read-only", [](Desk& d) { d.editor->focus()->editable = false; }, nothing);
  addTimed(
      rows, "the permission is withdrawn",
      [](Desk& d) {
        d.host.accessibility().setTrusted(false);
        d.host.alerts().answer("ביטול");
      },
      nothing);
  addTimed(
      rows, "one layout is left",
      [](Desk& d) { d.host.inputSourceService().changeLayouts({platform::usLayout()}); }, nothing);
  addTimed(
      rows, "no layout is left", [](Desk& d) { d.host.inputSourceService().changeLayouts({}); }, nothing);
  addTimed(
      rows, "the user presses the hot key again", [](Desk& d) { d.host.userPresses(platform::kKeyF2); },
      nothing, /*first=*/10);

  for (const bool compatible : {false, true}) {
    const std::string path = compatible ? "clipboard" : "accessibility";
    for (const FakeOperation operation :
         {FakeOperation::copyCurrentLayout, FakeOperation::createInputSourceList,
          FakeOperation::selectInputSource, FakeOperation::createEventSource,
          FakeOperation::createKeyDownEvent, FakeOperation::createKeyUpEvent, FakeOperation::symbolImage,
          FakeOperation::openFile, FakeOperation::writeFile, FakeOperation::closeFile,
          FakeOperation::writeWholeFile}) {
      for (const int after : {0, 1, 2, 5}) {
        rows.push_back(
            {std::string(platform::name(operation)) + " fails after " + std::to_string(after) + ": " + path,
             compatible, [=](Desk& d) { d.host.failNext(operation, {.after = after}); }, nothing});
      }
    }
    for (const auto& [name, kind] : {std::pair{"nothing", FakeCopy::Kind::nothing},
                                     {"an empty text", FakeCopy::Kind::emptyText},
                                     {"an image", FakeCopy::Kind::image},
                                     {"by clearing", FakeCopy::Kind::clears}}) {
      for (const milliseconds delay : {0ms, 300ms, 700ms}) {
        rows.push_back({std::string("the application copies ") + name + " after " +
                            std::to_string(delay.count()) + " ms: " + path,
                        compatible,
                        [=, copy = kind](Desk& d) {
                          d.editor->copies = {copy, delay};
                        },
                        {}});
      }
    }
    for (const milliseconds delay : {10ms, 490ms}) {
      rows.push_back({"the application pastes " + std::to_string(delay.count()) + " ms late: " + path,
                      compatible, [=](Desk& d) { d.editor->pastes.delay = delay; }, nothing});
    }
    rows.push_back({"the application takes no paste: " + path, compatible,
                    [](Desk& d) { d.editor->pastes.ignored = true; }, nothing});
  }

  struct Attribute {
    AccessOperation operation;
    std::string_view name;
  };
  const Attribute attributes[] = {{AccessOperation::read, platform::kRoleAttribute},
                                  {AccessOperation::read, platform::kSelectedTextAttribute},
                                  {AccessOperation::read, platform::kValueAttribute},
                                  {AccessOperation::settable, platform::kSelectedTextAttribute},
                                  {AccessOperation::write, platform::kSelectedTextAttribute}};
  const std::pair<const char*, FakeAnswer> answers[] = {
      {"fails", FakeAnswer::fails(platform::kAccessibilityCannotComplete)},
      {"hangs", FakeAnswer::hangs(700ms)},
      {"gives no value", FakeAnswer::noValue()},
      {"gives another kind", FakeAnswer::otherKind()},
      {"refuses", FakeAnswer::refuses()},
      {"lies", FakeAnswer::lies()}};
  for (const Attribute& attribute : attributes) {
    for (const auto& [name, answer] : answers) {
      const bool isWrite = attribute.operation == AccessOperation::write;
      const bool isSettable = attribute.operation == AccessOperation::settable;
      if (answer.kind == FakeAnswer::Kind::lies && !isWrite) continue;
      if (answer.kind == FakeAnswer::Kind::refuses && !isSettable) continue;
      if ((isWrite || isSettable) &&
          (answer.kind == FakeAnswer::Kind::noValue || answer.kind == FakeAnswer::Kind::otherKind)) {
        continue;
      }
      for (const int after : {0, 1}) {
        rows.push_back({std::string(attribute.name) +
                            (isWrite      ? " written "
                             : isSettable ? " settable "
                                          : " read ") +
                            name + " after " + std::to_string(after),
                        false,
                        [=, prepared = answer](Desk& d) {
                          d.editor->focus()->answer(attribute.operation, attribute.name, prepared, after);
                        },
                        nothing});
      }
    }
  }
  for (const auto& [name, answer] : answers) {
    if (answer.kind == FakeAnswer::Kind::lies || answer.kind == FakeAnswer::Kind::refuses) continue;
    rows.push_back({std::string("the question for the focus ") + name, false,
                    [=, prepared = answer](Desk& d) { d.host.accessibility().answerFocus(prepared); },
                    nothing});
  }
  return rows;
}

}  // namespace
}  // namespace lexwend::tests

int main() {
  int tried = 0;
  int lost = 0;
  for (const auto& row : lexwend::tests::table()) {
    ++tried;
    std::string cost;
    try {
      cost = lexwend::tests::lostBy(row);
    } catch (const std::exception& error) {
      cost = error.what();
    }
    if (!cost.empty()) ++lost;
    const std::string reason = row.allowed.inherent != nullptr && cost.empty()
                                   ? "  (inherent: " + std::string(row.allowed.inherent) + ")"
                                   : "";
    std::printf("%s  in memory: %s%s\n", cost.empty() ? "survived" : "LOST    ", row.name.c_str(),
                reason.c_str());
    if (!cost.empty()) std::printf("            %s\n", cost.c_str());
  }
  std::printf("faults: %d tried, %d survived, %d lost\n", tried, tried - lost, lost);
  return lost == 0 ? 0 : 1;
}
