// SPDX-License-Identifier: MIT
// What the files of the runtime share.
#pragma once

#include <cstdio>
#include <mutex>
#include <string>

#include "tests/mac/runtime/runtime.h"

namespace lexwend::objc {

std::recursive_mutex& lock();
bool isBlock(const Object* object);
/// Ends the process when the object is one that was deallocated.
void requireLive(const Object* object, const char* message);
/// The class's own implementation, not an inherited one; null when it has none.
Implementation lookUpOwn(const Class* cls, Selector selector);
Implementation lookUpSuper(const Super& super, Selector selector);

}  // namespace lexwend::objc
