// SPDX-License-Identifier: MIT
// A small Objective-C runtime for programs that clang compiled for Apple's ABI (-fobjc-runtime=macosx-13.0)
// into ELF, x86-64 only. It knows classes, categories, protocols, messages, reference counts, weak
// references, autorelease pools, blocks and the sliding of instance variables. It has no @throw, no key-value
// observing, no +load and no +initialize; a program that needs one of the last two is refused when it starts.
//
// It is stricter than a real one: whatever there would be undefined (a release too many, a message to an
// object that is gone, an unknown selector) ends the process with one line on standard error that begins with
// "objc: ". Objects that are gone keep their memory for a while so that their misuse is recognised.
//
// Safe for several threads; every entry takes one lock.
#pragma once

#include <cstddef>
#include <map>
#include <string>

#include "tests/mac/runtime/abi.h"

namespace lexwend::objc {

/// Prints "objc: " and the message and ends the process.
[[noreturn]] void fail(const std::string& message);

/// How many objects live now, in all and by class. Constant strings and classes are not counted.
std::size_t liveObjects();
std::map<std::string, std::size_t> liveObjectsByClass();

/// How many copies of blocks are on the heap.
std::size_t liveBlocks();

/// Takes an object that is never released (a singleton of the process) out of the counts.
void exemptFromCount(const Object* object);

Object* allocate(Class* cls);  ///< zeroed memory, reference count 1, C++ members constructed
void destroy(Object* object);  ///< what the root class's dealloc does
bool isLive(const Object* object);
std::size_t retainCount(const Object* object);

Object* retain(Object* object);
void release(Object* object);
Object* autorelease(Object* object);

Selector registerSelector(const char* name);
Class* classOf(const Object* object);
Class* classNamed(const char* name);       ///< null when there is none
bool isClassObject(const Object* object);  ///< whether it is a class and not an instance
bool isKindOf(const Object* object, const Class* cls);
bool respondsTo(const Object* object, Selector selector);
bool instancesRespondTo(const Class* cls, Selector selector);
bool conformsTo(const Object* object, const Protocol* protocol);
std::size_t instanceSize(const Class* cls);

/// The implementation that a message to this object runs; ends the process when there is none.
Implementation lookUp(Object* object, Selector selector);

/// Whether the calling thread is the one that loaded the program.
bool isMainThread();

}  // namespace lexwend::objc
