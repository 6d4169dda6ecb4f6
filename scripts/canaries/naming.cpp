// SPDX-License-Identifier: MIT
// Every line that says "denied" breaks a rule of naming; clang-tidy must report these lines and no others.
#include <string>

constexpr int maxCount = 3;  // denied
constexpr int kMaxCount = 3;

enum class Outcome { Converted, nothingToChange };  // denied

struct text_access {  // denied
  int field_count = 0;  // denied
  int fieldCount = 0;
};

class Converter {
 public:
  void Convert(int Amount) {  // denied
    total_ += Amount;
    count += kMaxCount;
  }
  void convert(int amount) { total_ += amount + maxCount; }
  int total() const { return total_ + count; }

 private:
  int total_ = 0;
  int count = 0;  // denied
};

int WordCount(const std::string& text) {  // denied
  const int local_length = static_cast<int>(text.size());  // denied
  const int localLength = local_length;
  return localLength;
}
