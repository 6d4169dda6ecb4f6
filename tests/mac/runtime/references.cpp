// SPDX-License-Identifier: MIT
// The life of an object: allocation, reference counts, weak references, autorelease pools, and the entry
// points that ARC and synthesized properties call.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <new>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "tests/mac/runtime/internal.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define LEXWEND_HAS_ASAN 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__)
#define LEXWEND_HAS_ASAN 1
#endif
#ifdef LEXWEND_HAS_ASAN
#include <sanitizer/asan_interface.h>
#endif

extern "C" {
void* _Block_copy(const void* block);
void _Block_release(const void* block);
extern lexwend::objc::Class constantStringClass __asm__("OBJC_CLASS_$_NSConstantString");
}

namespace lexwend::objc {
namespace {

enum class State : std::uint32_t { live = 0x11C0FFEE, deallocating = 0xDEA110C8, gone = 0xDEADDEAD };

/// Lies before the object. Sixteen bytes, so that the object is aligned as malloc aligns.
struct Header {
  std::int64_t references;
  State state;
  std::uint32_t isExempt;
};
static_assert(sizeof(Header) == 16);

/// So many objects that are gone keep their memory, to recognise a late message or release.
constexpr std::size_t kRememberedGoneObjects = 100'000;

struct Store {
  std::size_t live = 0;
  std::map<std::string, std::size_t> liveByClass;
  std::unordered_map<Object*, std::unordered_set<Object**>> weakReferences;
  std::deque<Header*> gone;
};
Store& store() {
  static auto* the = new Store;
  return *the;
}

using Pool = std::vector<Object*>;
std::vector<Pool>& pools() {
  static thread_local std::vector<Pool> the;
  return the;
}

Header* headerOf(const Object* object) {
  return reinterpret_cast<Header*>(const_cast<Object*>(object)) - 1;
}

/// Constants, classes and blocks carry no header.
bool isCounted(const Object* object) {
  return !isBlock(object) && object->isa != &constantStringClass && !isClassObject(object);
}

std::string nameOf(const Object* object) {
  return classOf(object)->description->name;
}

/// Runs one of the compiler's per-class functions for C++ members over the whole chain of classes.
void runForEachClass(Object* object, Class* cls, Selector selector, bool isRootFirst) {
  if (cls == nullptr) return;
  if (isRootFirst) runForEachClass(object, cls->superclass, selector, isRootFirst);
  if (const Implementation own = lookUpOwn(cls, selector)) {
    reinterpret_cast<void (*)(Object*, Selector)>(own)(object, selector);
  }
  if (!isRootFirst) runForEachClass(object, cls->superclass, selector, isRootFirst);
}

void forget(Header* header) {
#ifdef LEXWEND_HAS_ASAN
  __asan_unpoison_memory_region(header + 1, instanceSize(reinterpret_cast<Object*>(header + 1)->isa));
#endif
  std::free(header);
}

void clearWeakReferences(Object* object) {
  const auto entry = store().weakReferences.find(object);
  if (entry == store().weakReferences.end()) return;
  for (Object** reference : entry->second) *reference = nullptr;
  store().weakReferences.erase(entry);
}

void storeWeak(Object** location, Object* value) {
  const std::lock_guard<std::recursive_mutex> guard(lock());
  if (Object* old = *location) {
    const auto entry = store().weakReferences.find(old);
    if (entry != store().weakReferences.end()) {
      entry->second.erase(location);
      if (entry->second.empty()) store().weakReferences.erase(entry);
    }
  }
  // An object on its way out can no longer be referred to weakly.
  if (value != nullptr && isCounted(value) && headerOf(value)->state != State::live) value = nullptr;
  *location = value;
  if (value != nullptr) store().weakReferences[value].insert(location);
}

Object* loadWeakRetained(Object** location) {
  const std::lock_guard<std::recursive_mutex> guard(lock());
  return retain(*location);
}

}  // namespace

void requireLive(const Object* object, const char* message) {
  if (!isBlock(object) && !isLive(object)) {
    fail("message to a deallocated object of class " + nameOf(object) + ": " + message);
  }
}

bool isLive(const Object* object) {
  return !isCounted(object) || headerOf(object)->state != State::gone;
}

std::size_t liveObjects() {
  const std::lock_guard<std::recursive_mutex> guard(lock());
  return store().live;
}

std::map<std::string, std::size_t> liveObjectsByClass() {
  const std::lock_guard<std::recursive_mutex> guard(lock());
  return store().liveByClass;
}

void exemptFromCount(const Object* object) {
  const std::lock_guard<std::recursive_mutex> guard(lock());
  if (!isCounted(object) || headerOf(object)->isExempt != 0) return;
  headerOf(object)->isExempt = 1;
  --store().live;
  if (--store().liveByClass[nameOf(object)] == 0) store().liveByClass.erase(nameOf(object));
}

Object* allocate(Class* cls) {
  const std::lock_guard<std::recursive_mutex> guard(lock());
  auto* header = static_cast<Header*>(std::calloc(1, sizeof(Header) + instanceSize(cls)));
  if (header == nullptr) throw std::bad_alloc();
  header->references = 1;
  header->state = State::live;
  auto* object = reinterpret_cast<Object*>(header + 1);
  object->isa = cls;
  ++store().live;
  ++store().liveByClass[cls->description->name];
  static const Selector construct = registerSelector(".cxx_construct");
  runForEachClass(object, cls, construct, true);
  return object;
}

void destroy(Object* object) {
  const std::lock_guard<std::recursive_mutex> guard(lock());
  Header* header = headerOf(object);
  if (header->state != State::deallocating) {
    fail("dealloc called directly on an object of class " + nameOf(object));
  }
  static const Selector destruct = registerSelector(".cxx_destruct");
  runForEachClass(object, object->isa, destruct, false);
  if (header->isExempt == 0) {
    --store().live;
    if (--store().liveByClass[nameOf(object)] == 0) store().liveByClass.erase(nameOf(object));
  }
  header->state = State::gone;
#ifdef LEXWEND_HAS_ASAN
  __asan_poison_memory_region(object + 1, instanceSize(object->isa) - sizeof(Object));
#endif
  store().gone.push_back(header);
  if (store().gone.size() > kRememberedGoneObjects) {
    Header* oldest = store().gone.front();
    store().gone.pop_front();
    forget(oldest);
  }
}

std::size_t retainCount(const Object* object) {
  return isCounted(object) ? static_cast<std::size_t>(headerOf(object)->references) : SIZE_MAX;
}

Object* retain(Object* object) {
  if (object == nullptr) return nullptr;
  if (isBlock(object)) return static_cast<Object*>(_Block_copy(object));
  if (!isCounted(object)) return object;
  const std::lock_guard<std::recursive_mutex> guard(lock());
  Header* header = headerOf(object);
  if (header->state == State::gone) fail("retain of a deallocated object of class " + nameOf(object));
  if (header->state == State::live) ++header->references;
  return object;
}

void release(Object* object) {
  if (object == nullptr) return;
  if (isBlock(object)) return _Block_release(object);
  if (!isCounted(object)) return;
  const std::lock_guard<std::recursive_mutex> guard(lock());
  Header* header = headerOf(object);
  if (header->state == State::gone) fail("over-release of an object of class " + nameOf(object));
  // Within dealloc, a retain and its release are allowed and change nothing.
  if (header->state == State::deallocating) return;
  if (--header->references > 0) return;
  header->state = State::deallocating;
  clearWeakReferences(object);
  static const Selector dealloc = registerSelector("dealloc");
  reinterpret_cast<void (*)(Object*, Selector)>(lookUp(object, dealloc))(object, dealloc);
  if (header->state != State::gone) {
    fail("dealloc of class " + nameOf(object) + " did not reach the root class");
  }
}

Object* autorelease(Object* object) {
  if (object == nullptr) return nullptr;
  if (pools().empty()) {
    if (!isMainThread()) fail("autorelease without a pool on another thread");
    pools().emplace_back();  // the bottom pool, which lives as long as the process
  }
  pools().back().push_back(object);
  return object;
}

}  // namespace lexwend::objc

extern "C" {
using lexwend::objc::autorelease;
using lexwend::objc::Class;
using lexwend::objc::Object;
using lexwend::objc::registerSelector;
using lexwend::objc::release;
using lexwend::objc::retain;
using lexwend::objc::Selector;

Object* objc_retain(Object* object) {
  return retain(object);
}
void objc_release(Object* object) {
  release(object);
}
Object* objc_autorelease(Object* object) {
  return autorelease(object);
}
Object* objc_retainAutorelease(Object* object) {
  return autorelease(retain(object));
}
// A caller and a callee may hand a reference over without the pool; here they always go through it.
Object* objc_autoreleaseReturnValue(Object* object) {
  return autorelease(object);
}
Object* objc_retainAutoreleaseReturnValue(Object* object) {
  return autorelease(retain(object));
}
Object* objc_retainAutoreleasedReturnValue(Object* object) {
  return retain(object);
}
Object* objc_unsafeClaimAutoreleasedReturnValue(Object* object) {
  return object;
}
Object* objc_retainBlock(Object* block) {
  return block == nullptr ? nullptr : static_cast<Object*>(_Block_copy(block));
}
void objc_storeStrong(Object** location, Object* value) {
  Object* old = *location;
  retain(value);
  *location = value;
  release(old);
}

void* objc_autoreleasePoolPush() {
  lexwend::objc::pools().emplace_back();
  return reinterpret_cast<void*>(lexwend::objc::pools().size());
}
void objc_autoreleasePoolPop(void* token) {
  auto& pools = lexwend::objc::pools();
  const auto depth = reinterpret_cast<std::size_t>(token);
  if (pools.size() < depth) lexwend::objc::fail("an autorelease pool was popped twice");
  while (pools.size() >= depth) {
    // A release may put further objects into the pool that is being emptied.
    while (!pools.back().empty()) {
      Object* object = pools.back().back();
      pools.back().pop_back();
      release(object);
    }
    pools.pop_back();
  }
}

Object* objc_storeWeak(Object** location, Object* value) {
  lexwend::objc::storeWeak(location, value);
  return *location;
}
Object* objc_initWeak(Object** location, Object* value) {
  *location = nullptr;
  return objc_storeWeak(location, value);
}
void objc_destroyWeak(Object** location) {
  lexwend::objc::storeWeak(location, nullptr);
}
Object* objc_loadWeakRetained(Object** location) {
  return lexwend::objc::loadWeakRetained(location);
}
Object* objc_loadWeak(Object** location) {
  return autorelease(lexwend::objc::loadWeakRetained(location));
}
void objc_copyWeak(Object** to, Object** from) {
  Object* value = objc_loadWeakRetained(from);
  objc_initWeak(to, value);
  release(value);
}
void objc_moveWeak(Object** to, Object** from) {
  objc_copyWeak(to, from);
  objc_destroyWeak(from);
}

namespace {
Object* send(Object* object, const char* name) {
  const Selector selector = registerSelector(name);
  return reinterpret_cast<Object* (*)(Object*, Selector)>(lexwend::objc::lookUp(object, selector))(object,
                                                                                                   selector);
}
Object* asObject(Class* cls) {
  return reinterpret_cast<Object*>(cls);
}
}  // namespace

Object* objc_alloc(Class* cls) {
  return send(asObject(cls), "alloc");
}
Object* objc_allocWithZone(Class* cls) {
  return objc_alloc(cls);
}
Object* objc_alloc_init(Class* cls) {
  return send(objc_alloc(cls), "init");
}
Object* objc_opt_new(Class* cls) {
  return send(asObject(cls), "new");
}
Object* objc_opt_self(Object* object) {
  return object;
}
Class* objc_opt_class(Object* object) {
  if (object == nullptr) return nullptr;
  if (lexwend::objc::isClassObject(object)) return reinterpret_cast<Class*>(object);
  return lexwend::objc::classOf(object);
}
signed char objc_opt_isKindOfClass(Object* object, Class* cls) {
  return object == nullptr ? 0 : static_cast<signed char>(lexwend::objc::isKindOf(object, cls));
}
signed char objc_opt_respondsToSelector(Object* object, Selector selector) {
  return static_cast<signed char>(lexwend::objc::respondsTo(object, selector));
}

namespace {
Object** memberAt(Object* object, std::ptrdiff_t offset) {
  return reinterpret_cast<Object**>(reinterpret_cast<char*>(object) + offset);
}
void setMember(Object* object, Object* value, std::ptrdiff_t offset, bool isCopied) {
  Object** member = memberAt(object, offset);
  Object* taken = isCopied && value != nullptr ? send(value, "copy") : retain(value);
  Object* old = *member;
  *member = taken;
  release(old);
}
}  // namespace

Object* objc_getProperty(Object* object, Selector, std::ptrdiff_t offset, signed char) {
  return autorelease(retain(*memberAt(object, offset)));
}
void objc_setProperty_atomic(Object* object, Selector, Object* value, std::ptrdiff_t offset) {
  setMember(object, value, offset, false);
}
void objc_setProperty_nonatomic(Object* object, Selector, Object* value, std::ptrdiff_t offset) {
  setMember(object, value, offset, false);
}
void objc_setProperty_atomic_copy(Object* object, Selector, Object* value, std::ptrdiff_t offset) {
  setMember(object, value, offset, true);
}
void objc_setProperty_nonatomic_copy(Object* object, Selector, Object* value, std::ptrdiff_t offset) {
  setMember(object, value, offset, true);
}
void objc_copyStruct(void* to, const void* from, std::ptrdiff_t size, signed char, signed char) {
  std::memcpy(to, from, static_cast<std::size_t>(size));
}
void objc_enumerationMutation(Object* collection) {
  lexwend::objc::fail("a collection was changed while it was enumerated: " +
                      lexwend::objc::nameOf(collection));
}
}
