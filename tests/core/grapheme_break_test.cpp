// SPDX-License-Identifier: MIT
// Unicode's own test of character boundaries: each line of GraphemeBreakTest.txt is a sequence of scalars
// with ÷ where a boundary is and × where none is.
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <unicode/uchar.h>
#include <unicode/uvernum.h>

#include "core/characters.h"
#include "core/converter.h"
#include "tests/core/random_text.h"

namespace lexwend {
namespace {

struct GraphemeBreakTest : testing::Test {
  struct Line {
    int number = 0;
    std::string text;
    std::vector<std::string> characters;
  };

  std::string title;
  std::vector<Line> lines;

  void SetUp() override {
    std::ifstream file(LEXWEND_GRAPHEME_BREAK_TEST);
    ASSERT_TRUE(file) << "cannot read " << LEXWEND_GRAPHEME_BREAK_TEST;
    std::getline(file, title);
    int number = 1;
    for (std::string raw; std::getline(file, raw);) {
      ++number;
      const std::string sequence = raw.substr(0, raw.find('#'));
      if (!sequence.empty()) lines.push_back(parsed(number, sequence));
    }
    ASSERT_GT(lines.size(), 500U);
  }

  static Line parsed(int number, const std::string& sequence) {
    Line line;
    line.number = number;
    std::istringstream words(sequence);
    bool begins = false;
    for (std::string word; words >> word;) {
      if (word == "÷" || word == "×") {
        begins = word == "÷";
        continue;
      }
      const std::string bytes = utf8Of(static_cast<char32_t>(std::stoul(word, nullptr, 16)));
      if (begins) line.characters.emplace_back();
      line.characters.back() += bytes;
      line.text += bytes;
    }
    return line;
  }
};

TEST_F(GraphemeBreakTest, isOfTheUnicodeVersionOfIcu) {
  const std::string version = U_UNICODE_VERSION;  // "15.0" names the file "GraphemeBreakTest-15.0.0.txt"
  EXPECT_NE(title.find("GraphemeBreakTest-" + version + "."), std::string::npos)
      << title << " against " << version;
}

TEST_F(GraphemeBreakTest, readerFindsEveryCharacter) {
  for (const Line& line : lines) {
    std::vector<std::string> characters;
    for (CharacterReader reader(line.text); !reader.atEnd();) characters.emplace_back(reader.next());
    EXPECT_EQ(characters, line.characters) << "line " << line.number;
    EXPECT_EQ(characterCount(line.text), line.characters.size()) << "line " << line.number;
  }
}

TEST_F(GraphemeBreakTest, converterCutsTheSameCharacters) {
  for (const Line& line : lines) {
    // Every character of the line leads to itself in brackets: the conversion shows where it saw one begin
    // and end.
    LayoutMap map;
    std::string expected;
    for (const std::string& character : line.characters) {
      const std::string bracketed = "[" + character + "]";
      map.toHebrew[character] = bracketed;
      map.toEnglish[character] = bracketed;
      expected += isSpaceCharacter(character) ? character : bracketed;
    }
    EXPECT_EQ(Converter(map).convert(line.text, false).text, expected) << "line " << line.number;
  }
}

}  // namespace
}  // namespace lexwend
