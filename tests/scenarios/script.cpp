// SPDX-License-Identifier: MIT
#include "tests/scenarios/script.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <set>
#include <utility>

namespace lexwend::scenarios {
namespace {

constexpr std::size_t kAny = 99;

/// One act: its words in a script, and how many arguments follow.
struct ActPhrase {
  std::string_view words;
  Act act;
  std::size_t least, most;
};
constexpr ActPhrase kActs[] = {
#define ACT(name, words, least, most) {words, Act::name, least, most},
#include "tests/scenarios/words.inc"
};

/// Where a check's expected lines come from.
enum class Expects {
  oneLine,   ///< the last argument
  lineEach,  ///< one line for each argument
  block,     ///< the lines behind the bars
  nothing,   ///< no line at all
};
/// One check: its words, what it looks at, how many arguments the look takes before the expectation.
struct CheckPhrase {
  std::string_view words;
  Look look;
  Comparison comparison;
  std::size_t lookArguments;
  Expects expects;
};
constexpr CheckPhrase kChecks[] = {
#define CHECK(words, look, comparison, lookArguments, expects) \
  {words, Look::look, Comparison::comparison, lookArguments, Expects::expects},
#include "tests/scenarios/words.inc"
};

struct Word {
  std::string text;
  bool quoted = false;
};

/// Words parted by blanks; a word in double quotes may hold blanks and the escapes \" \\ \n \t.
std::vector<Word> split(const std::string& file, int line, std::string_view text) {
  std::vector<Word> words;
  std::size_t i = 0;
  while (i < text.size()) {
    if (text[i] == ' ') {
      ++i;
      continue;
    }
    Word word;
    if (text[i] != '"') {
      const auto end = std::min(text.find(' ', i), text.size());
      word.text = text.substr(i, end - i);
      if (word.text.find('"') != std::string::npos) {
        throw ScriptError(file, line, "a quotation mark in the middle of a word");
      }
      i = end;
    } else {
      word.quoted = true;
      ++i;
      while (i < text.size() && text[i] != '"') {
        if (text[i] != '\\') {
          word.text += text[i++];
          continue;
        }
        const char escaped = i + 1 < text.size() ? text[i + 1] : ' ';
        if (escaped == 'n') {
          word.text += '\n';
        } else if (escaped == 't') {
          word.text += '\t';
        } else if (escaped == '"' || escaped == '\\') {
          word.text += escaped;
        } else {
          throw ScriptError(file, line, "an unknown escape in a quoted text");
        }
        i += 2;
      }
      if (i >= text.size()) throw ScriptError(file, line, "a quoted text without its end");
      ++i;
      if (i < text.size() && text[i] != ' ') {
        throw ScriptError(file, line, "a quoted text is followed by something other than a blank");
      }
    }
    words.push_back(std::move(word));
  }
  return words;
}

/// How many words of the line the phrase takes; nothing when it is another phrase.
std::optional<std::size_t> matched(std::string_view phrase, const std::vector<Word>& words) {
  std::size_t count = 0;
  while (!phrase.empty()) {
    const auto end = std::min(phrase.find(' '), phrase.size());
    if (count >= words.size() || words[count].quoted || words[count].text != phrase.substr(0, end)) {
      return std::nullopt;
    }
    ++count;
    phrase.remove_prefix(std::min(end + 1, phrase.size()));
  }
  return count;
}

/// The phrase with the most words that the line begins with.
template <typename Phrase, std::size_t kCount>
std::pair<const Phrase*, std::size_t> findPhrase(const Phrase (&phrases)[kCount],
                                                 const std::vector<Word>& words) {
  std::pair<const Phrase*, std::size_t> best{nullptr, 0};
  for (const Phrase& phrase : phrases) {
    const auto count = matched(phrase.words, words);
    if (count && *count > best.second) best = {&phrase, *count};
  }
  return best;
}

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t' || text.back() == '\r')) {
    text.remove_suffix(1);
  }
  return text;
}

class Parser {
 public:
  Parser(std::string file, std::string_view text) : file_(std::move(file)), text_(text) {}

  std::vector<Scenario> parse() {
    while (!text_.empty()) {
      const auto end = std::min(text_.find('\n'), text_.size());
      ++line_;
      readLine(text_.substr(0, end));
      text_.remove_prefix(std::min(end + 1, text_.size()));
    }
    endScenario();
    if (scenarios_.empty()) fail("no scenario in this file");
    return std::move(scenarios_);
  }

 private:
  enum class Section { none, given, when, then };

  [[noreturn]] void fail(const std::string& reason) const { throw ScriptError(file_, line_, reason); }
  [[noreturn]] void failAt(int line, const std::string& reason) const {
    throw ScriptError(file_, line, reason);
  }

  void readLine(std::string_view raw) {
    const auto line = trimmed(raw);
    if (line.starts_with('|')) {
      readBlockLine(raw);
      return;
    }
    endBlock();
    if (line.empty() || line.starts_with('#')) return;
    const auto words = split(file_, line_, line);
    const std::string& first = words.front().text;
    if (words.front().quoted) fail("a line begins with a quoted text");
    if (first == "scenario") {
      startScenario(words);
    } else if (words.size() == 1 && (first == "given" || first == "when" || first == "then")) {
      startSection(first);
    } else if (scenarios_.empty()) {
      fail("\"" + first + "\" before the first scenario");
    } else if (section_ == Section::none) {
      fail("\"" + first + "\" outside of given, when and then");
    } else if (section_ == Section::then) {
      readCheck(words, line);
    } else {
      readAct(words, line);
    }
  }

  void startScenario(const std::vector<Word>& words) {
    endScenario();
    if (words.size() != 2 || !words[1].quoted || words[1].text.empty()) {
      fail("a scenario needs one title in quotation marks");
    }
    if (!titles_.insert(words[1].text).second) fail("a second scenario \"" + words[1].text + "\"");
    scenarios_.push_back({file_, line_, words[1].text, {}});
    section_ = Section::none;
    hasCheck_ = false;
    hasAct_ = false;
  }

  void startSection(const std::string& name) {
    if (scenarios_.empty()) fail("\"" + name + "\" before the first scenario");
    endSection();
    if (name == "given" && section_ != Section::none) fail("given comes first and once");
    section_ = name == "given" ? Section::given : name == "when" ? Section::when : Section::then;
    sectionLine_ = line_;
    sectionSteps_ = 0;
  }

  void endSection() {
    if (section_ != Section::none && sectionSteps_ == 0) failAt(sectionLine_, "an empty section");
  }

  void endScenario() {
    endBlock();
    if (scenarios_.empty()) return;
    endSection();
    const Scenario& scenario = scenarios_.back();
    if (!hasAct_) failAt(scenario.line, "the scenario \"" + scenario.title + "\" does nothing");
    if (!hasCheck_) failAt(scenario.line, "the scenario \"" + scenario.title + "\" has no then");
    if (section_ != Section::then) {
      failAt(sectionLine_, "the scenario \"" + scenario.title + "\" does not end with a then");
    }
  }

  void readAct(const std::vector<Word>& words, std::string_view line) {
    const auto [phrase, count] = findPhrase(kActs, words);
    if (phrase == nullptr) {
      fail(std::string(findPhrase(kChecks, words).first != nullptr ? "only a then can say"
                                                                   : "nobody knows how to") +
           " \"" + std::string(line) + "\"");
    }
    Words arguments;
    for (std::size_t i = count; i < words.size(); ++i) arguments.push_back(words[i].text);
    if (arguments.size() < phrase->least || arguments.size() > phrase->most) {
      fail("\"" + std::string(phrase->words) + "\" takes " + counted(phrase->least, phrase->most) + ", not " +
           std::to_string(arguments.size()));
    }
    try {
      checkArguments(phrase->act, arguments);
    } catch (const ScriptMistake& mistake) {
      fail(mistake.what());
    }
    add(line, ActStep{phrase->act, std::move(arguments)});
    hasAct_ = true;
  }

  /// What can be judged without a world.
  static void checkArguments(Act act, const Words& arguments) {
    if (act == Act::press || act == Act::taken) parseCombination(arguments[0]);
    if (act == Act::wait || act == Act::releaseAfter || act == Act::pastesAfter ||
        act == Act::permissionGrantedAfter || act == Act::dispatch) {
      parseNumber(arguments[0]);
    }
    if (act == Act::hold) {
      for (const auto& modifier : arguments) {
        if (modifier != "Fn") parseModifier(modifier);
      }
    }
  }

  static std::string counted(std::size_t least, std::size_t most) {
    if (most == 0) return "no arguments";
    if (least == most) return std::to_string(least) + (least == 1 ? " argument" : " arguments");
    if (most == kAny) return "at least " + std::to_string(least) + " arguments";
    return std::to_string(least) + " to " + std::to_string(most) + " arguments";
  }

  void readCheck(const std::vector<Word>& words, std::string_view line) {
    const auto [phrase, count] = findPhrase(kChecks, words);
    if (phrase == nullptr) {
      fail(std::string(findPhrase(kActs, words).first != nullptr ? "a then cannot do"
                                                                 : "nobody knows how to check") +
           " \"" + std::string(line) + "\"");
    }
    Words arguments;
    for (std::size_t i = count; i < words.size(); ++i) arguments.push_back(words[i].text);
    if (arguments.size() < phrase->lookArguments) {
      fail("\"" + std::string(phrase->words) + "\" does not say of what");
    }
    const auto split = arguments.begin() + static_cast<std::ptrdiff_t>(phrase->lookArguments);
    Words expected(split, arguments.end());
    arguments.erase(split, arguments.end());
    const std::string title = "\"" + std::string(phrase->words) + "\"";
    switch (phrase->expects) {
      case Expects::oneLine:
        if (expected.size() != 1) fail(title + " expects exactly one value");
        break;
      case Expects::lineEach:
        if (expected.empty()) fail(title + " expects at least one value");
        if (expected == Words{"none"}) expected.clear();
        break;
      case Expects::block:
        if (!expected.empty()) fail(title + " expects lines that begin with a bar, below it");
        inBlock_ = true;
        blockLine_ = line_;
        break;
      case Expects::nothing:
        if (!expected.empty()) fail(title + " expects no value");
        break;
    }
    add(line, CheckStep{phrase->look, phrase->comparison, std::move(arguments), std::move(expected)});
    hasCheck_ = true;
  }

  void readBlockLine(std::string_view raw) {
    if (!inBlock_) fail("a line with a bar that belongs to nothing");
    // Blanks at the end count here: menu titles have some. Only a carriage return goes.
    auto rest = raw.substr(raw.find('|') + 1);
    if (rest.ends_with('\r')) rest.remove_suffix(1);
    if (rest.starts_with(' ')) rest.remove_prefix(1);
    std::get<CheckStep>(scenarios_.back().steps.back().what).expected.emplace_back(rest);
  }

  void endBlock() {
    if (inBlock_ && std::get<CheckStep>(scenarios_.back().steps.back().what).expected.empty()) {
      failAt(blockLine_, "no line with a bar follows");
    }
    inBlock_ = false;
  }

  void add(std::string_view line, std::variant<ActStep, CheckStep> what) {
    scenarios_.back().steps.push_back({line_, std::string(line), std::move(what)});
    ++sectionSteps_;
  }

  std::string file_;
  std::string_view text_;
  int line_ = 0;
  std::vector<Scenario> scenarios_;
  std::set<std::string> titles_;
  Section section_ = Section::none;
  int sectionLine_ = 0;
  int sectionSteps_ = 0;
  bool hasAct_ = false;
  bool hasCheck_ = false;
  bool inBlock_ = false;
  int blockLine_ = 0;
};

struct NamedKey {
  std::string_view name;
  unsigned code;
};
// macOS virtual key codes of the ANSI keyboard.
constexpr NamedKey kKeys[] = {
    {"A", 0},       {"S", 1},       {"D", 2},       {"F", 3},     {"H", 4},     {"G", 5},     {"Z", 6},
    {"X", 7},       {"C", 8},       {"V", 9},       {"B", 11},    {"Q", 12},    {"W", 13},    {"E", 14},
    {"R", 15},      {"Y", 16},      {"T", 17},      {"1", 18},    {"2", 19},    {"3", 20},    {"4", 21},
    {"6", 22},      {"5", 23},      {"=", 24},      {"9", 25},    {"7", 26},    {"-", 27},    {"8", 28},
    {"0", 29},      {"]", 30},      {"O", 31},      {"U", 32},    {"[", 33},    {"I", 34},    {"P", 35},
    {"Return", 36}, {"L", 37},      {"J", 38},      {"'", 39},    {"K", 40},    {";", 41},    {"\\", 42},
    {",", 43},      {"/", 44},      {"N", 45},      {"M", 46},    {".", 47},    {"Tab", 48},  {"Space", 49},
    {"`", 50},      {"Delete", 51}, {"Escape", 53}, {"F17", 64},  {"F18", 79},  {"F19", 80},  {"F5", 96},
    {"F6", 97},     {"F7", 98},     {"F3", 99},     {"F8", 100},  {"F9", 101},  {"F11", 103}, {"F13", 105},
    {"F16", 106},   {"F14", 107},   {"F10", 109},   {"F12", 111}, {"F15", 113}, {"F4", 118},  {"F2", 120},
    {"F1", 122},    {"Left", 123},  {"Right", 124},
};

}  // namespace

std::vector<Scenario> parseScript(const std::string& file, std::string_view text) {
  return Parser(file, text).parse();
}

unsigned parseModifier(std::string_view text) {
  if (text == "Cmd") return 0x0100;
  if (text == "Shift") return 0x0200;
  if (text == "Option") return 0x0800;
  if (text == "Control") return 0x1000;
  throw ScriptMistake("\"" + std::string(text) + "\" is no modifier (Cmd, Shift, Option, Control)");
}

KeyCombination parseCombination(std::string_view text) {
  KeyCombination combination;
  auto rest = text;
  while (true) {
    const auto plus = rest.find('+');
    if (plus == std::string_view::npos || plus == 0) break;
    combination.carbonModifiers |= parseModifier(rest.substr(0, plus));
    rest.remove_prefix(plus + 1);
  }
  if (rest.starts_with('#')) {
    const auto code = parseNumber(rest.substr(1));
    if (code < 0 || code > 0xFFFF) throw ScriptMistake("\"" + std::string(text) + "\" has no valid key code");
    combination.keyCode = static_cast<unsigned>(code);
    return combination;
  }
  for (const auto& key : kKeys) {
    if (key.name != rest) continue;
    combination.keyCode = key.code;
    return combination;
  }
  throw ScriptMistake("\"" + std::string(text) + "\" is no key combination");
}

std::string combinationName(unsigned keyCode, unsigned carbonModifiers) {
  std::string text;
  unsigned rest = carbonModifiers;
  for (const auto* modifier : {"Control", "Option", "Shift", "Cmd"}) {
    const unsigned bit = parseModifier(modifier);
    if ((rest & bit) != 0) text += std::string(modifier) + "+";
    rest &= ~bit;
  }
  if (rest != 0) text += "#" + std::to_string(rest) + "+";
  for (const auto& key : kKeys) {
    if (key.code == keyCode) return text + std::string(key.name);
  }
  return text + "#" + std::to_string(keyCode);
}

long long parseNumber(std::string_view text) {
  long long number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || text.empty()) {
    throw ScriptMistake("\"" + std::string(text) + "\" is no whole number");
  }
  return number;
}

}  // namespace lexwend::scenarios
