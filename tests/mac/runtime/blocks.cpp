// SPDX-License-Identifier: MIT
// Blocks: a literal starts on the stack, a copy lives on the heap under a reference count, and so do the
// __block variables that it shares with its function.
#include <cstdlib>
#include <cstring>

#include "tests/mac/runtime/internal.h"

extern "C" {
// A block's isa is the address of one of these; nothing is ever read from them.
void* _NSConcreteStackBlock[32];
void* _NSConcreteMallocBlock[32];
void* _NSConcreteGlobalBlock[32];
}

namespace lexwend::objc {
namespace {

constexpr std::int32_t kReferenceMask = 0xFFFF;  // the count of a copy on the heap
constexpr std::int32_t kIsOnHeap = 1 << 24;
constexpr std::int32_t kHasHelpers = 1 << 25;
constexpr std::int32_t kIsGlobal = 1 << 28;

struct Block;
struct BlockDescription {
  unsigned long reserved;
  unsigned long size;
  void (*copyMembers)(Block* to, const Block* from);  // these two only with kHasHelpers
  void (*disposeMembers)(const Block* block);
};
struct Block {
  void* isa;
  std::int32_t flags;
  std::int32_t reserved;
  void (*invoke)(void*, ...);
  const BlockDescription* description;
};

/// A __block variable. Whoever uses it goes through `forwarding`, which leads to the copy on the heap once
/// there is one.
struct SharedVariable {
  void* isa;
  SharedVariable* forwarding;
  std::int32_t flags;
  std::uint32_t size;
  void (*keepValue)(SharedVariable* to, SharedVariable* from);  // these two only with kHasHelpers
  void (*destroyValue)(SharedVariable* variable);
};
constexpr std::size_t kPlainHeaderSize = offsetof(SharedVariable, keepValue);

/// What a captured member is, as the compiler says it.
constexpr int kMemberIsObject = 3;
constexpr int kMemberIsBlock = 7;
constexpr int kMemberIsSharedVariable = 8;
constexpr int kMemberKindMask = 15;
constexpr int kWithinSharedVariable = 128;

std::size_t liveCopies = 0;

SharedVariable* shareOnHeap(SharedVariable* variable) {
  SharedVariable* current = variable->forwarding;
  if ((current->flags & kIsOnHeap) != 0) {
    ++current->flags;
    return current;
  }
  auto* copy = static_cast<SharedVariable*>(std::malloc(variable->size));
  std::memcpy(copy, variable, kPlainHeaderSize);
  copy->forwarding = copy;
  variable->forwarding = copy;
  copy->flags =
      (variable->flags & ~kReferenceMask) | kIsOnHeap | 2;  // the function's own use and the block's
  std::memcpy(reinterpret_cast<char*>(copy) + kPlainHeaderSize,
              reinterpret_cast<const char*>(variable) + kPlainHeaderSize, variable->size - kPlainHeaderSize);
  // The helper moves the value properly, over the bytes just copied.
  if ((variable->flags & kHasHelpers) != 0) copy->keepValue(copy, variable);
  return copy;
}

void unshare(SharedVariable* variable) {
  variable = variable->forwarding;
  if ((variable->flags & kIsOnHeap) == 0) return;
  if ((variable->flags & kReferenceMask) == 0) fail("over-release of a __block variable");
  if ((--variable->flags & kReferenceMask) != 0) return;
  if ((variable->flags & kHasHelpers) != 0) variable->destroyValue(variable);
  std::free(variable);
}

}  // namespace

std::size_t liveBlocks() {
  return liveCopies;
}

}  // namespace lexwend::objc

extern "C" {
using lexwend::objc::Block;
using lexwend::objc::Object;
using lexwend::objc::SharedVariable;

void* _Block_copy(const void* literal) {
  if (literal == nullptr) return nullptr;
  const std::lock_guard<std::recursive_mutex> guard(lexwend::objc::lock());
  auto* block = static_cast<Block*>(const_cast<void*>(literal));
  if ((block->flags & lexwend::objc::kIsGlobal) != 0) return block;
  if ((block->flags & lexwend::objc::kIsOnHeap) != 0) {
    ++block->flags;
    return block;
  }
  auto* copy = static_cast<Block*>(std::malloc(block->description->size));
  std::memcpy(copy, block, block->description->size);
  copy->isa = _NSConcreteMallocBlock;
  copy->flags = (block->flags & ~lexwend::objc::kReferenceMask) | lexwend::objc::kIsOnHeap | 1;
  if ((copy->flags & lexwend::objc::kHasHelpers) != 0) copy->description->copyMembers(copy, block);
  ++lexwend::objc::liveCopies;
  return copy;
}

void _Block_release(const void* literal) {
  if (literal == nullptr) return;
  const std::lock_guard<std::recursive_mutex> guard(lexwend::objc::lock());
  auto* block = static_cast<Block*>(const_cast<void*>(literal));
  if ((block->flags & lexwend::objc::kIsGlobal) != 0 || (block->flags & lexwend::objc::kIsOnHeap) == 0) {
    return;
  }
  if ((block->flags & lexwend::objc::kReferenceMask) == 0) lexwend::objc::fail("over-release of a block");
  if ((--block->flags & lexwend::objc::kReferenceMask) != 0) return;
  if ((block->flags & lexwend::objc::kHasHelpers) != 0) block->description->disposeMembers(block);
  --lexwend::objc::liveCopies;
  std::free(block);
}

void _Block_object_assign(void* destination, const void* value, const int flags) {
  auto** member = static_cast<const void**>(destination);
  if ((flags & lexwend::objc::kWithinSharedVariable) != 0) {
    *member = value;  // a __block variable does not own what it points at
    return;
  }
  switch (flags & lexwend::objc::kMemberKindMask) {
    case lexwend::objc::kMemberIsObject:
      *member = lexwend::objc::retain(static_cast<Object*>(const_cast<void*>(value)));
      break;
    case lexwend::objc::kMemberIsBlock:
      *member = _Block_copy(value);
      break;
    case lexwend::objc::kMemberIsSharedVariable: {
      const std::lock_guard<std::recursive_mutex> guard(lexwend::objc::lock());
      *member = lexwend::objc::shareOnHeap(static_cast<SharedVariable*>(const_cast<void*>(value)));
      break;
    }
    default:
      lexwend::objc::fail("a block captures a kind of variable that this runtime does not know");
  }
}

void _Block_object_dispose(const void* value, const int flags) {
  if ((flags & lexwend::objc::kWithinSharedVariable) != 0) return;
  switch (flags & lexwend::objc::kMemberKindMask) {
    case lexwend::objc::kMemberIsObject:
      lexwend::objc::release(static_cast<Object*>(const_cast<void*>(value)));
      break;
    case lexwend::objc::kMemberIsBlock:
      _Block_release(value);
      break;
    case lexwend::objc::kMemberIsSharedVariable: {
      const std::lock_guard<std::recursive_mutex> guard(lexwend::objc::lock());
      lexwend::objc::unshare(static_cast<SharedVariable*>(const_cast<void*>(value)));
      break;
    }
    default:
      lexwend::objc::fail("a block releases a kind of variable that this runtime does not know");
  }
}
}
