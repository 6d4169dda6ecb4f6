// SPDX-License-Identifier: MIT
// The records that clang emits for Apple's 64-bit Objective-C ABI. Only what the runtime reads is spelt out.
#pragma once

#include <cstddef>
#include <cstdint>

namespace lexwend::objc {

struct Class;
using Selector = const char*;  ///< made unique at load time, compared by address
using Implementation = void (*)();

struct Object {
  Class* isa;
};

struct Method {
  Selector name;
  const char* types;
  Implementation implementation;
};
struct MethodList {
  std::uint32_t entrySize;
  std::uint32_t count;
  Method first[1];
};

struct Ivar {
  std::uint32_t*
      offset;  ///< the variable that compiled code reads; a null one belongs to an unnamed bit-field
  const char* name;
  const char* type;
  std::uint32_t alignmentLog2;
  std::uint32_t size;
};
struct IvarList {
  std::uint32_t entrySize;
  std::uint32_t count;
  Ivar first[1];
};

struct ProtocolList;
struct Protocol {
  Class* isa;
  const char* name;
  ProtocolList* inherited;
};
struct ProtocolList {
  std::uint64_t count;
  Protocol* first[1];
};

inline constexpr std::uint32_t kMetaclassFlag = 1;

struct ClassDescription {
  std::uint32_t flags;
  std::uint32_t instanceStart;
  std::uint32_t instanceSize;
  const std::uint8_t* strongLayout;
  const char* name;
  MethodList* methods;
  ProtocolList* protocols;
  IvarList* ivars;
  const std::uint8_t* weakLayout;
  void* properties;
};
struct Class {
  Class* isa;
  Class* superclass;
  void* cache;
  void* vtable;
  ClassDescription* description;
};

struct Category {
  const char* name;
  Class* cls;
  MethodList* instanceMethods;
  MethodList* classMethods;
  ProtocolList* protocols;
  void* properties;
};

/// The receiver and the class whose superclass is asked, as a message to super passes them.
struct Super {
  Object* receiver;
  Class* cls;
};

}  // namespace lexwend::objc
