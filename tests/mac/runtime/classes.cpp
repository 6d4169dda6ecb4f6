// SPDX-License-Identifier: MIT
// Loading of what the compiler emitted: selectors, classes, categories; and the search for an implementation.
#include <cstdlib>
#include <cstring>
#include <thread>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "tests/mac/runtime/internal.h"

extern "C" {
using lexwend::objc::Category;
using lexwend::objc::Class;
using lexwend::objc::Selector;

// The linker defines these two for every section whose name is a C identifier.
#define SECTION(type, section)                                                 \
  extern type __start_##section[] __attribute__((weak, visibility("hidden"))); \
  extern type __stop_##section[] __attribute__((weak, visibility("hidden")));
SECTION(Class*, objc_classlist)
SECTION(Class*, objc_nlclslist)
SECTION(Selector, objc_selrefs)
SECTION(Category*, objc_catlist)
SECTION(Category*, objc_nlcatlist)
#undef SECTION

// Blocks have their own way to count references; this is the class that they answer to.
extern Class nsBlockClass __asm__("OBJC_CLASS_$_NSBlock");
extern void* _NSConcreteStackBlock[];
extern void* _NSConcreteMallocBlock[];
extern void* _NSConcreteGlobalBlock[];

// Every class record points at it; this runtime keeps its tables elsewhere.
void* _objc_empty_cache = nullptr;
}

namespace lexwend::objc {
namespace {

using MethodTable = std::unordered_map<Selector, Implementation>;

struct Tables {
  std::unordered_map<std::string, Selector> selectors;
  std::unordered_map<const Class*, MethodTable> methods;
  std::unordered_map<const Class*, std::vector<ProtocolList*>> protocols;
  std::unordered_map<const Class*, std::size_t> instanceSizes;
  std::unordered_map<std::string, Class*> classes;
  std::thread::id mainThread = std::this_thread::get_id();
};

// Never destroyed: objects may be released while the program's own statics go away.
Tables& tables() {
  static auto* the = new Tables;
  return *the;
}

void addMethods(const Class* cls, const MethodList* list) {
  if (list == nullptr) return;
  for (std::uint32_t i = 0; i < list->count; ++i) {
    const Method& method = list->first[i];
    if (std::strcmp(method.name, "load") == 0 && (cls->description->flags & kMetaclassFlag) != 0) {
      fail(std::string("+load is not supported: ") + cls->description->name);
    }
    if (std::strcmp(method.name, "initialize") == 0 && (cls->description->flags & kMetaclassFlag) != 0) {
      fail(std::string("+initialize is not supported: ") + cls->description->name);
    }
    tables().methods[cls][registerSelector(method.name)] = method.implementation;
  }
}

/// Where a class's own variables were compiled to begin before the end of its superclass (whose size the
/// compiler did not know), moves them behind it. The superclass comes first.
std::size_t slideVariables(Class* cls) {
  auto& sizes = tables().instanceSizes;
  if (const auto known = sizes.find(cls); known != sizes.end()) return known->second;

  const ClassDescription& description = *cls->description;
  std::size_t size = description.instanceSize;
  if (cls->superclass != nullptr) {
    const std::size_t superSize = slideVariables(cls->superclass);
    if (superSize > description.instanceStart) {
      std::size_t shift = superSize - description.instanceStart;
      std::size_t alignment = 1;
      const IvarList* ivars = description.ivars;
      const std::uint32_t count = ivars == nullptr ? 0 : ivars->count;
      for (std::uint32_t i = 0; i < count; ++i) {
        alignment = std::max(alignment, std::size_t{1} << ivars->first[i].alignmentLog2);
      }
      shift = (shift + alignment - 1) / alignment * alignment;
      for (std::uint32_t i = 0; i < count; ++i) {
        if (ivars->first[i].offset != nullptr) *ivars->first[i].offset += static_cast<std::uint32_t>(shift);
      }
      size += shift;
    }
  }
  sizes[cls] = size;
  return size;
}

void loadProgram() {
  for (Selector* selector = __start_objc_selrefs; selector < __stop_objc_selrefs; ++selector) {
    *selector = registerSelector(*selector);
  }
  for (Class** entry = __start_objc_classlist; entry < __stop_objc_classlist; ++entry) {
    Class* cls = *entry;
    addMethods(cls, cls->description->methods);
    addMethods(cls->isa, cls->isa->description->methods);
    if (cls->description->protocols != nullptr) {
      tables().protocols[cls].push_back(cls->description->protocols);
    }
    if (!tables().classes.emplace(cls->description->name, cls).second) {
      fail(std::string("two classes of one name: ") + cls->description->name);
    }
  }
  for (Class** entry = __start_objc_classlist; entry < __stop_objc_classlist; ++entry) slideVariables(*entry);
  for (Category** entry = __start_objc_catlist; entry < __stop_objc_catlist; ++entry) {
    const Category& category = **entry;
    addMethods(category.cls, category.instanceMethods);
    addMethods(category.cls->isa, category.classMethods);
    if (category.protocols != nullptr) tables().protocols[category.cls].push_back(category.protocols);
  }
}

// Before every constructor of the program without a priority, which may already send messages.
constexpr int kBeforeOrdinaryConstructors = 101;
__attribute__((constructor(kBeforeOrdinaryConstructors))) void loadOnce() {
  loadProgram();
}

Implementation find(const Class* cls, Selector selector) {
  const std::lock_guard<std::recursive_mutex> guard(lock());
  for (; cls != nullptr; cls = cls->superclass) {
    const auto table = tables().methods.find(cls);
    if (table == tables().methods.end()) continue;
    const auto method = table->second.find(selector);
    if (method != table->second.end()) return method->second;
  }
  return nullptr;
}

[[noreturn]] void failUnknownSelector(const Class* cls, Selector selector) {
  const bool isMeta = (cls->description->flags & kMetaclassFlag) != 0;
  fail(std::string("unrecognized selector ") + (isMeta ? "+[" : "-[") + cls->description->name + " " +
       selector + "]");
}

bool listHolds(const ProtocolList* list, const char* name) {
  if (list == nullptr) return false;
  for (std::uint64_t i = 0; i < list->count; ++i) {
    const Protocol* protocol = list->first[i];
    if (std::strcmp(protocol->name, name) == 0 || listHolds(protocol->inherited, name)) return true;
  }
  return false;
}

}  // namespace

std::recursive_mutex& lock() {
  static auto* the = new std::recursive_mutex;
  return *the;
}

void fail(const std::string& message) {
  std::fprintf(stderr, "objc: %s\n", message.c_str());
  std::fflush(stderr);
  std::abort();
}

bool isMainThread() {
  return std::this_thread::get_id() == tables().mainThread;
}

Selector registerSelector(const char* name) {
  const std::lock_guard<std::recursive_mutex> guard(lock());
  auto [entry, isNew] = tables().selectors.emplace(name, nullptr);
  if (isNew) entry->second = entry->first.c_str();
  return entry->second;
}

bool isBlock(const Object* object) {
  const void* isa = object->isa;
  return isa == _NSConcreteStackBlock || isa == _NSConcreteMallocBlock || isa == _NSConcreteGlobalBlock;
}

Class* classOf(const Object* object) {
  return isBlock(object) ? &nsBlockClass : object->isa;
}

Class* classNamed(const char* name) {
  const auto entry = tables().classes.find(name);
  return entry == tables().classes.end() ? nullptr : entry->second;
}

bool isClassObject(const Object* object) {
  return !isBlock(object) && (object->isa->description->flags & kMetaclassFlag) != 0;
}

bool isKindOf(const Object* object, const Class* cls) {
  if (object == nullptr) return false;
  for (const Class* each = classOf(object); each != nullptr; each = each->superclass) {
    if (each == cls) return true;
  }
  return false;
}

bool respondsTo(const Object* object, Selector selector) {
  return object != nullptr && find(classOf(object), selector) != nullptr;
}

bool instancesRespondTo(const Class* cls, Selector selector) {
  return find(cls, selector) != nullptr;
}

bool conformsTo(const Object* object, const Protocol* protocol) {
  for (const Class* cls = classOf(object); cls != nullptr; cls = cls->superclass) {
    const auto lists = tables().protocols.find(cls);
    if (lists == tables().protocols.end()) continue;
    for (const ProtocolList* list : lists->second) {
      if (listHolds(list, protocol->name)) return true;
    }
  }
  return false;
}

std::size_t instanceSize(const Class* cls) {
  return tables().instanceSizes.at(cls);
}

Implementation lookUp(Object* object, Selector selector) {
  requireLive(object, selector);
  const Class* cls = classOf(object);
  const Implementation found = find(cls, selector);
  if (found == nullptr) failUnknownSelector(cls, selector);
  return found;
}

Implementation lookUpOwn(const Class* cls, Selector selector) {
  const std::lock_guard<std::recursive_mutex> guard(lock());
  const auto table = tables().methods.find(cls);
  if (table == tables().methods.end()) return nullptr;
  const auto method = table->second.find(selector);
  return method == table->second.end() ? nullptr : method->second;
}

Implementation lookUpSuper(const Super& super, Selector selector) {
  requireLive(super.receiver, selector);
  const Implementation found = find(super.cls->superclass, selector);
  if (found == nullptr) failUnknownSelector(super.cls->superclass, selector);
  return found;
}

}  // namespace lexwend::objc

extern "C" {
using lexwend::objc::Implementation;
using lexwend::objc::Object;
using lexwend::objc::Super;

Implementation lexwend_objc_lookUp(Object* object, Selector selector) {
  return lexwend::objc::lookUp(object, selector);
}
Implementation lexwend_objc_lookUpSuper(const Super* super, Selector selector) {
  return lexwend::objc::lookUpSuper(*super, selector);
}
Selector sel_registerName(const char* name) {
  return lexwend::objc::registerSelector(name);
}
const char* sel_getName(Selector selector) {
  return selector;
}
Class* objc_getClass(const char* name) {
  return lexwend::objc::classNamed(name);
}
Class* object_getClass(Object* object) {
  return object == nullptr ? nullptr : lexwend::objc::classOf(object);
}
const char* class_getName(const Class* cls) {
  return cls == nullptr ? "nil" : cls->description->name;
}
std::size_t class_getInstanceSize(const Class* cls) {
  return cls == nullptr ? 0 : lexwend::objc::instanceSize(cls);
}
}
