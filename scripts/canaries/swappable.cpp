// SPDX-License-Identifier: MIT
// Every line that says "denied" has parameters that are easily swapped; clang-tidy must report these lines
// and no others.
int three(int count, int hours, int offset) {  // denied
  if (count > 9) return 1;
  if (hours > 8) return 2;
  return offset;
}

int two(int count, int hours) {
  if (count > 9) return 1;
  return hours;
}

int together(int red, int green, int blue) {
  return red + green + blue;
}
