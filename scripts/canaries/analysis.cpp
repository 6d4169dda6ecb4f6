// SPDX-License-Identifier: MIT
// Every line that says "denied" follows a null pointer on one of its paths; clang-tidy must report these lines and no others.
int firstOr(const int* numbers, int count, int otherwise) {
  const int* first = nullptr;
  if (count > 0) first = numbers;
  if (otherwise != 0 && first == nullptr) return otherwise;
  return *first;  // denied
}

int firstOrZero(const int* numbers, int count) {
  const int* first = nullptr;
  if (count > 0) first = numbers;
  if (first == nullptr) return 0;
  return *first;
}
