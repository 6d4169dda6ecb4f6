// SPDX-License-Identifier: MIT
#include "platform/fake/fake_layouts.h"

namespace lexwend::platform {
namespace {

/// Return, Tab and Space type the same in every layout. Keys that are in no layout type nothing.
std::map<int, FakeKey> commonKeys() {
  return {{36, {"\r", "\r"}}, {48, {"\t", "\x19"}}, {49, {" ", " "}}};
}

std::map<int, FakeKey> usKeys() {
  auto keys = commonKeys();
  keys.insert({
      {0, {"a", "A"}},  {1, {"s", "S"}},   {2, {"d", "D"}},  {3, {"f", "F"}},   {4, {"h", "H"}},
      {5, {"g", "G"}},  {6, {"z", "Z"}},   {7, {"x", "X"}},  {8, {"c", "C"}},   {9, {"v", "V"}},
      {10, {"§", "±"}}, {11, {"b", "B"}},  {12, {"q", "Q"}}, {13, {"w", "W"}},  {14, {"e", "E"}},
      {15, {"r", "R"}}, {16, {"y", "Y"}},  {17, {"t", "T"}}, {18, {"1", "!"}},  {19, {"2", "@"}},
      {20, {"3", "#"}}, {21, {"4", "$"}},  {22, {"6", "^"}}, {23, {"5", "%"}},  {24, {"=", "+"}},
      {25, {"9", "("}}, {26, {"7", "&"}},  {27, {"-", "_"}}, {28, {"8", "*"}},  {29, {"0", ")"}},
      {30, {"]", "}"}}, {31, {"o", "O"}},  {32, {"u", "U"}}, {33, {"[", "{"}},  {34, {"i", "I"}},
      {35, {"p", "P"}}, {37, {"l", "L"}},  {38, {"j", "J"}}, {39, {"'", "\""}}, {40, {"k", "K"}},
      {41, {";", ":"}}, {42, {"\\", "|"}}, {43, {",", "<"}}, {44, {"/", "?"}},  {45, {"n", "N"}},
      {46, {"m", "M"}}, {47, {".", ">"}},  {50, {"`", "~"}},
  });
  return keys;
}

std::map<int, FakeKey> hebrewKeys() {
  auto keys = commonKeys();
  keys.insert({
      {0, {"ש", "A"}},  {1, {"ד", "S"}},   {2, {"ג", "D"}},  {3, {"כ", "F"}},  {4, {"י", "H"}},
      {5, {"ע", "G"}},  {6, {"ז", "Z"}},   {7, {"ס", "X"}},  {8, {"ב", "C"}},  {9, {"ה", "V"}},
      {10, {"§", "±"}}, {11, {"נ", "B"}},  {12, {"/", "Q"}}, {13, {"׳", "W"}}, {14, {"ק", "E"}},
      {15, {"ר", "R"}}, {16, {"ט", "Y"}},  {17, {"א", "T"}}, {18, {"1", "!"}}, {19, {"2", "@"}},
      {20, {"3", "#"}}, {21, {"4", "$"}},  {22, {"6", "^"}}, {23, {"5", "%"}}, {24, {"=", "+"}},
      {25, {"9", ")"}}, {26, {"7", "₪"}},  {27, {"-", "_"}}, {28, {"8", "*"}}, {29, {"0", "("}},
      {30, {"[", "{"}}, {31, {"ם", "O"}},  {32, {"ו", "U"}}, {33, {"]", "}"}}, {34, {"ן", "I"}},
      {35, {"פ", "P"}}, {37, {"ך", "L"}},  {38, {"ח", "J"}}, {39, {",", "״"}}, {40, {"ל", "K"}},
      {41, {"ף", ":"}}, {42, {"\\", "|"}}, {43, {"ת", ">"}}, {44, {".", "?"}}, {45, {"מ", "N"}},
      {46, {"צ", "M"}}, {47, {"ץ", "<"}},  {50, {";", "~"}},
  });
  return keys;
}

std::map<int, FakeKey> russianKeys() {
  auto keys = usKeys();
  const std::map<int, FakeKey> letters = {{0, {"ф", "Ф"}}, {1, {"ы", "Ы"}},  {2, {"в", "В"}},
                                          {3, {"а", "А"}}, {12, {"й", "Й"}}, {13, {"ц", "Ц"}}};
  for (const auto& [code, key] : letters) keys[code] = key;
  return keys;
}

FakeLayout layout(std::string id, std::vector<std::string> languages, std::map<int, FakeKey> keys) {
  FakeLayout made;
  made.id = std::move(id);
  made.languages = std::move(languages);
  made.keys = std::move(keys);
  return made;
}

}  // namespace

FakeLayout usLayout() {
  return layout("com.apple.keylayout.US", {"en", "de", "fr"}, usKeys());
}
FakeLayout abcLayout() {
  return layout("com.apple.keylayout.ABC", {"en"}, usKeys());
}
FakeLayout britishLayout() {
  auto keys = usKeys();
  keys[20].shifted = "£";
  return layout("com.apple.keylayout.British", {"en"}, std::move(keys));
}
FakeLayout hebrewLayout() {
  return layout("com.apple.keylayout.Hebrew", {"he"}, hebrewKeys());
}
FakeLayout russianLayout() {
  return layout("com.apple.keylayout.Russian", {"ru"}, russianKeys());
}

}  // namespace lexwend::platform
