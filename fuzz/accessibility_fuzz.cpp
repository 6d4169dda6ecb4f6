// SPDX-License-Identifier: MIT
// A whole application on the accessibility bus that is made of the bytes: its tree, its field, what the field
// refuses, and what it answers instead of the truth. A fix in it ends, gives no length that is more than was
// handed over, and leaves what stands beside the selection of an honest field.
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <fuzzer/FuzzedDataProvider.h>
#include <unistd.h>

#include "platform/linux/accessibility/accessibility.h"
#include "tests/linux/testing/private_bus.h"
#include "tests/linux/testing/scripted_application.h"
#include "tests/linux/testing/virtual_display.h"

namespace lexwend::platform {
namespace {

constexpr std::size_t kMaxText = 24;
constexpr const char* kMethods[] = {
    "GetState",           "GetRole",        "GetRoleName",  "GetInterfaces",  "GetText",
    "Get CharacterCount", "GetNSelections", "GetSelection", "InsertText",     "DeleteText",
    "SetCaretOffset",     "AddSelection",   "SetSelection", "GetApplication", "Get ToolkitName",
    "GetChildren",        "Get ChildCount"};
constexpr const char* kToolkits[] = {"gtk", "Qt", "gtk", "Qt", "GTK", "Chromium", ""};
constexpr std::uint32_t kRoles[] = {ATSPI_ROLE_TEXT,     ATSPI_ROLE_ENTRY,     ATSPI_ROLE_TEXT,
                                    ATSPI_ROLE_TERMINAL, ATSPI_ROLE_PARAGRAPH, ATSPI_ROLE_PASSWORD_TEXT};
constexpr const char* kPaths[] = {"/field", "/panel/0", "/panel/1", "/panel/2", "/window", "/application"};
constexpr const char* kBuses[] = {"", ":1.999", "org.a11y.atspi.Registry", "not a name",
                                  "org.lexwend.Nobody"};
constexpr const char* kNowhere[] = {"/org/a11y/atspi/null", "/", "/field"};

/// With the line, which is not to be seen in the trace of an optimised program.
void requireAt(int line, bool truth) {
  if (truth) return;
  std::fprintf(stderr, "not so: line %d\n", line);
  std::abort();
}
#define require(truth) requireAt(__LINE__, truth)

template <typename T, std::size_t N>
T oneOf(FuzzedDataProvider& bytes, const T (&choices)[N]) {
  return choices[bytes.ConsumeIntegralInRange<std::size_t>(0, N - 1)];
}

bool rarely(FuzzedDataProvider& bytes) {
  return bytes.ConsumeIntegralInRange<int>(0, 7) == 7;
}

icu::UnicodeString text(FuzzedDataProvider& bytes) {
  constexpr char32_t kLetters[] = {U'a',  U'k',      U'ש',          U'ם',      U' ',
                                   U'\n', U'\u05b8', U'\U0001F600', U'\u2022', U'\u202e'};
  icu::UnicodeString text;
  const auto length = bytes.ConsumeIntegralInRange<std::size_t>(0, kMaxText);
  for (std::size_t i = 0; i < length; ++i) {
    text.append(static_cast<UChar32>(oneOf(bytes, kLetters)));
  }
  return text;
}

std::set<std::string> someMethods(FuzzedDataProvider& bytes) {
  std::set<std::string> methods;
  if (!rarely(bytes)) return methods;
  const auto count = bytes.ConsumeIntegralInRange<int>(1, 3);
  for (int i = 0; i < count; ++i) methods.insert(oneOf(bytes, kMethods));
  return methods;
}

int offset(FuzzedDataProvider& bytes, int length) {
  return rarely(bytes) ? bytes.ConsumeIntegral<int>() : bytes.ConsumeIntegralInRange<int>(0, length);
}

ScriptedField field(FuzzedDataProvider& bytes) {
  ScriptedField field;
  field.toolkit = oneOf(bytes, kToolkits);
  field.role = rarely(bytes) ? bytes.ConsumeIntegral<std::uint32_t>() : oneOf(bytes, kRoles);
  text(bytes).toUTF8String(field.roleName);
  if (rarely(bytes)) field.states ^= bytes.ConsumeIntegral<std::uint64_t>();
  if (rarely(bytes)) field.interfaces.pop_back();
  field.text = text(bytes);
  const int length = field.toolkit == "Qt" ? field.text.length() : field.text.countChar32();
  for (int i = rarely(bytes) ? bytes.ConsumeIntegralInRange<int>(0, 3) : 1; i > 0; --i) {
    const int start = offset(bytes, length);
    field.selections.emplace_back(start, offset(bytes, length));
  }
  field.selectionGrows = bytes.ConsumeBool();
  field.knowsItsEnd = bytes.ConsumeBool();
  if (rarely(bytes)) field.maxLength = bytes.ConsumeIntegralInRange<int>(0, 2 * int{kMaxText});
  if (rarely(bytes)) {
    field.filter = [](const icu::UnicodeString& typed) { return icu::UnicodeString(typed).toUpper(); };
  }
  field.refused = someMethods(bytes);
  field.broken = someMethods(bytes);
  field.answersNonsense = someMethods(bytes);
  if (rarely(bytes)) field.claimedLength = bytes.ConsumeIntegral<int>();
  if (rarely(bytes)) field.application = {oneOf(bytes, kBuses), oneOf(bytes, kNowhere)};
  if (rarely(bytes)) {
    field.meanwhile[oneOf(bytes, kMethods)] = [typed = text(bytes)](ScriptedField& changed) {
      changed.text = typed;
      changed.selections.clear();
    };
  }
  field.answersUnfocused = rarely(bytes) ? 1 : 0;
  return field;
}

std::map<std::string, ScriptedObject> others(FuzzedDataProvider& bytes) {
  std::map<std::string, ScriptedObject> others;
  for (const char* path : {"/window", "/panel/0", "/panel/1"}) {
    if (!rarely(bytes)) continue;
    ScriptedObject& object = others[path];
    object.role = rarely(bytes) ? bytes.ConsumeIntegral<std::uint32_t>() : std::uint32_t{ATSPI_ROLE_PANEL};
    if (rarely(bytes)) object.states ^= bytes.ConsumeIntegral<std::uint64_t>();
    for (int i = bytes.ConsumeIntegralInRange<int>(0, 4); i > 0; --i) {
      object.children.emplace_back(oneOf(bytes, kPaths));  // rings too
    }
    if (rarely(bytes)) object.promisedChildren = bytes.ConsumeIntegral<int>();
    if (rarely(bytes)) object.malformedChildren.emplace_back(oneOf(bytes, kBuses), oneOf(bytes, kNowhere));
  }
  return others;
}

/// Answers of any type, well-formed on the wire.
GVariant* strangeAnswer(FuzzedDataProvider& bytes) {
  const auto number = [&bytes] { return bytes.ConsumeIntegral<int>(); };
  std::string word;
  text(bytes).toUTF8String(word);
  switch (bytes.ConsumeIntegralInRange<int>(0, 11)) {
    case 0:
      return g_variant_new("()");
    case 1:
      return g_variant_new("(s)", word.c_str());
    case 2:
      return g_variant_new("(i)", number());
    case 3:
      return g_variant_new("(ii)", number(), number());
    case 4:
      return g_variant_new("(u)", static_cast<guint32>(number()));
    case 5:
      return g_variant_new("(v)", g_variant_new_int32(number()));
    case 6:
      return g_variant_new("(v)", g_variant_new_string(word.c_str()));
    case 7:
      return g_variant_new("(so)", oneOf(bytes, kBuses), oneOf(bytes, kNowhere));
    case 8:
      return g_variant_new("((so))", oneOf(bytes, kBuses), oneOf(bytes, kNowhere));
    case 9: {
      GVariantBuilder children;
      g_variant_builder_init(&children, G_VARIANT_TYPE("a(so)"));
      for (int i = bytes.ConsumeIntegralInRange<int>(0, 200); i > 0; --i) {
        g_variant_builder_add(&children, "(so)", oneOf(bytes, kBuses), oneOf(bytes, kNowhere));
      }
      return g_variant_new("(a(so))", &children);
    }
    case 10: {
      const guint32 words[] = {static_cast<guint32>(number()), static_cast<guint32>(number()), 0};
      const auto count = bytes.ConsumeIntegralInRange<gsize>(0, 3);
      return g_variant_new("(@au)",
                           g_variant_new_fixed_array(G_VARIANT_TYPE_UINT32, words, count, sizeof words[0]));
    }
    default:
      return g_variant_new("(b)", bytes.ConsumeBool() ? TRUE : FALSE);
  }
}

/// Without what would make its answers untrue.
bool isHonest(const ScriptedField& field) {
  return !field.claimedLength && field.meanwhile.empty() && field.answersNonsense.empty() &&
         !field.strangeAnswer && field.selections.size() == 1;
}

/// What an honest field holds after a fix: the selection may have become something else, or nothing.
void checkText(const ScriptedField& before, const std::string& after) {
  const int length = before.toolkit == "Qt" ? before.text.length() : before.text.countChar32();
  auto [start, end] = before.selections.front();
  if (start > end) std::swap(start, end);
  const auto index = [&](int at) { return before.toolkit == "Qt" ? at : before.text.moveIndex32(0, at); };
  const auto cutsACharacter = [&](int at) { return before.text.getChar32Limit(index(at)) != index(at); };
  // No selection, or one that is not to be touched: then the whole text has to be there.
  if (start < 0 || end > length || cutsACharacter(start) || cutsACharacter(end)) start = end = 0;
  std::string head;
  std::string tail;
  before.text.tempSubStringBetween(0, index(start)).toUTF8String(head);
  before.text.tempSubStringBetween(index(end)).toUTF8String(tail);
  require(after.size() >= head.size() + tail.size());
  require(after.compare(0, head.size(), head) == 0);
  require(after.compare(after.size() - tail.size(), tail.size(), tail) == 0);
}

struct Desktop {
  PrivateBus bus;
  std::optional<std::string> windowClass;
  std::optional<std::string> primary;
  std::string toolkit;
  std::unique_ptr<ScriptedApplication> app = std::make_unique<ScriptedApplication>();
  LinuxAccessibility access{
      {.mayControl = [] { return true; },
       .frontProcess = [] { return std::optional(static_cast<std::uint32_t>(::getpid())); },
       .frontWindowClass = [this] { return windowClass; },
       .primarySelection = [this] { return primary; }}};

  Desktop() {
    access.start();
    app->show({});
    constexpr AccessibilityError kNotConnected = -25204;
    require(pumpUntil([this] { return focus().error != kNotConnected; }));
  }
  /// An application keeps its toolkit: the agent asks for it once. What it has not answered in time reaches
  /// nobody, not the next field.
  void restart() {
    app = nullptr;
    app = std::make_unique<ScriptedApplication>();
  }
  void show(const ScriptedField& field, const std::map<std::string, ScriptedObject>& others) {
    if (std::exchange(toolkit, field.toolkit) != field.toolkit) restart();
    app->show(field, others);
  }
  AttributeResult focus() {
    return access.copyAttributeValue(access.createSystemWideElement(), kFocusedUIElementAttribute);
  }
  void fix(const std::string& newText) {
    if (access.focusIsSecure()) return;
    const auto focused = focus();
    const auto* element = std::get_if<AccessibilityElementRef>(&focused.value);
    if (element == nullptr || *element == nullptr) {
      access.selectionIsKnownEmpty();
      return;
    }
    access.copyAttributeValue(*element, kRoleAttribute);
    access.copyAttributeValue(*element, kSelectedTextAttribute);
    if (!access.isAttributeSettable(*element, kSelectedTextAttribute).settable) return;
    access.copyAttributeValue(*element, kValueAttribute);
    access.setAttributeValue(*element, kSelectedTextAttribute, newText);
    access.copyAttributeValue(*element, kValueAttribute);
  }
};

}  // namespace
}  // namespace lexwend::platform

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace lexwend::platform;
  static auto* const kDesktop = new Desktop;  // its threads run until the process ends
  FuzzedDataProvider bytes(data, size);
  ScriptedField shown = field(bytes);
  const std::map<std::string, ScriptedObject> tree = others(bytes);
  std::string newText;
  text(bytes).toUTF8String(newText);
  if (rarely(bytes)) newText += bytes.ConsumeRandomLengthString(kMaxText);
  kDesktop->windowClass =
      rarely(bytes) ? std::optional(bytes.ConsumeRandomLengthString(kMaxText)) : std::nullopt;
  kDesktop->primary = rarely(bytes) ? std::optional(bytes.ConsumeRandomLengthString(kMaxText)) : std::nullopt;
  if (rarely(bytes)) {
    // Read by the application's thread from now on.
    const auto rest =
        std::make_shared<std::vector<std::uint8_t>>(bytes.ConsumeRemainingBytes<std::uint8_t>());
    const auto answers = std::make_shared<FuzzedDataProvider>(rest->data(), rest->size());
    shown.strangeAnswer = [rest, answers](const std::string&, const std::string&) {
      return answers->remaining_bytes() != 0 && rarely(*answers) ? strangeAnswer(*answers) : nullptr;
    };
  }
  kDesktop->show(shown, tree);
  const auto start = std::chrono::steady_clock::now();
  kDesktop->fix(newText);
  const bool mayBeUnderWay = std::chrono::steady_clock::now() - start > std::chrono::milliseconds(200);
  require(!kDesktop->app->wasOverrun());
  if (isHonest(shown)) checkText(shown, kDesktop->app->text());
  while (g_main_context_iteration(nullptr, FALSE) != FALSE) continue;
  if (mayBeUnderWay) kDesktop->restart();
  return 0;
}
