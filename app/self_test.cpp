// SPDX-License-Identifier: MIT
#include "app/self_test.h"

#include <array>
#include <cstddef>
#include <ostream>
#include <string>
#include <string_view>

#include "core/characters.h"
#include "core/converter.h"
#include "input/input_sources.h"
#include "support/fatal.h"

namespace lexwend::SelfTest {
namespace {

struct Sample {
  std::string_view input;
  bool currentLayoutIsHebrew;
  std::string_view expected;
};

constexpr std::array<Sample, 10> kSamples = {{
    {"akuo nv akunl", false, "שלום מה שלומך"},
    {"יקךךם", true, "hello"},
    {"hello, world.", true, "יקךךםת ׳םרךגץ"},
    {"יקךךםת ׳םרךגץ", true, "hello, world."},
    {"Akuo", false, "שלום"},
    {"היי akuo nv", false, "היי שלום מה"},
    {"היי akuo nv", true, "vhh akuo nv"},
    {"שלום 123", true, "akuo 123"},
    {"nv akunl?", false, "מה שלומך?"},
    {"(akuo)", false, ")שלום("},
}};

/// One line per entry, in the scalar order of the map.
void printMap(std::ostream& out, std::string_view name, const CharacterMap& map) {
  out << "\n== " << name << " (" << map.size() << ")\n";
  for (const auto& [key, value] : map) out << "  " << key << " -> " << value << '\n';
}

void printRoundTrip(std::ostream& out, const LayoutMap& map) {
  out << "\n== round trip check (en -> he -> en)\n";
  std::size_t mismatches = 0;
  for (const auto& [en, he] : map.toHebrew) {
    // A capital types the same Hebrew letter as its small letter, and the way back gives the small letter.
    if (isUppercaseCharacter(en)) continue;
    if (characterCount(he) != 1) fatal("the self-test met a map value that is not one character");
    const auto found = map.toEnglish.find(he);
    const std::string_view back = found == map.toEnglish.end() ? "∅" : std::string_view(found->second);
    if (back == en) continue;
    out << "  MISMATCH " << en << " -> " << he << " -> " << back << '\n';
    ++mismatches;
  }
  if (mismatches != 0) {
    out << "  " << mismatches << " mismatches\n";
  } else {
    out << "  all good\n";
  }
}

void printConversions(std::ostream& out, const LayoutMap& map) {
  out << "\n== conversions\n";
  const Converter converter(map);
  std::size_t failures = 0;
  for (const Sample& sample : kSamples) {
    const std::string text = converter.convert(sample.input, sample.currentLayoutIsHebrew).text;
    const bool passed = text == sample.expected;
    out << "  " << (passed ? "OK " : "FAIL") << " [" << (sample.currentLayoutIsHebrew ? "he" : "en") << "] \""
        << sample.input << "\" -> \"" << text << '"';
    if (!passed) out << "  expected \"" << sample.expected << '"';
    out << '\n';
    if (!passed) ++failures;
  }
  if (failures == 0) {
    out << "\nALL PASSED\n";
  } else {
    out << '\n' << failures << " FAILED\n";
  }
}

}  // namespace

void run(std::ostream& out) {
  report(out, LayoutMap::build(InputSources::keyTables()));
}

void report(std::ostream& out, const LayoutMap& map) {
  out << "source: " << (map.builtFromSystem ? "system layouts" : "fallback table") << '\n';
  out << "current layout is Hebrew: " << (InputSources::currentLayoutIsHebrew() ? "true" : "false") << '\n';
  printMap(out, "toHebrew", map.toHebrew);
  printMap(out, "toEnglish", map.toEnglish);
  printRoundTrip(out, map);
  printConversions(out, map);
}

}  // namespace lexwend::SelfTest
