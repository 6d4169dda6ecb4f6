// SPDX-License-Identifier: MIT
// Every line that says "denied" breaks the rule of braces; clang-tidy must report these lines and no others.
int sum(const int* numbers, int count, int limit) {
  int total = 0;
  if (count < 0) return 0;
  for (int i = 0; i < count; ++i)  // denied
    total += numbers[i];
  if (total > limit)  // denied
    total = limit;
  else  // denied
    total += 1;
  while (total > 100) total -= 100;
  for (int i = 0; i < count; ++i) {
    if (numbers[i] < 0) return -1;
  }
  return total;
}
