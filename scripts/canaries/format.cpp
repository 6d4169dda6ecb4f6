// SPDX-License-Identifier: MIT
// clang-format must refuse this file: the pointer stands at the name and the block is not indented.
int length(const char *text) {
int count=0;
while (text[count]!=0) { ++count; }
return count;
}
