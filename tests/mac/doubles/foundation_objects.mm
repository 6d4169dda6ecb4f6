// SPDX-License-Identifier: MIT
// The root class, strings, collections, data, numbers, errors and URLs.
#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <limits>

#include "tests/mac/doubles/support.h"
#include "tests/mac/runtime/runtime.h"

using namespace lexwend;
using namespace lexwend::doubles;

namespace {
objc::Object* raw(id object) { return reinterpret_cast<objc::Object*>((void*)object); }
objc::Class* raw(Class cls) { return reinterpret_cast<objc::Class*>((void*)cls); }
objc::Selector raw(SEL selector) { return reinterpret_cast<objc::Selector>((void*)selector); }
id cooked(objc::Object* object) { return reinterpret_cast<id>((void*)object); }
}  // namespace

@implementation NSObject
+ (instancetype)alloc {
  return cooked(objc::allocate(raw((Class)self)));
}
+ (instancetype)new {
  return [[self alloc] init];
}
+ (Class)class {
  return (Class)self;
}
+ (Class)superclass {
  return reinterpret_cast<Class>((void*)raw((Class)self)->superclass);
}
+ (BOOL)instancesRespondToSelector:(SEL)selector {
  return objc::instancesRespondTo(raw((Class)self), raw(selector));
}
+ (NSString*)description {
  return string(raw((Class)self)->description->name);
}
- (instancetype)init {
  return self;
}
- (void)dealloc {
  objc::destroy(raw(self));
}
- (instancetype)retain {
  return cooked(objc::retain(raw(self)));
}
- (oneway void)release {
  objc::release(raw(self));
}
- (instancetype)autorelease {
  return cooked(objc::autorelease(raw(self)));
}
- (NSUInteger)retainCount {
  return objc::retainCount(raw(self));
}
- (instancetype)self {
  return self;
}
- (Class)class {
  return reinterpret_cast<Class>((void*)objc::classOf(raw(self)));
}
- (Class)superclass {
  return reinterpret_cast<Class>((void*)objc::classOf(raw(self))->superclass);
}
- (id)copy {
  return [(id<NSCopying>)self copyWithZone:nullptr];
}
- (id)mutableCopy {
  return [(id<NSMutableCopying>)self mutableCopyWithZone:nullptr];
}
- (BOOL)isKindOfClass:(Class)cls {
  return objc::isKindOf(raw(self), raw(cls));
}
- (BOOL)isMemberOfClass:(Class)cls {
  return objc::classOf(raw(self)) == raw(cls);
}
- (BOOL)conformsToProtocol:(Protocol*)protocol {
  return objc::conformsTo(raw(self), reinterpret_cast<objc::Protocol*>((void*)protocol));
}
- (BOOL)respondsToSelector:(SEL)selector {
  return objc::respondsTo(raw(self), raw(selector));
}
- (BOOL)isEqual:(id)object {
  return self == object;
}
- (NSUInteger)hash {
  return reinterpret_cast<NSUInteger>((void*)self);
}
- (NSString*)description {
  return string(std::string("<") + objc::classOf(raw(self))->description->name + ">");
}
- (id)performSelector:(SEL)selector {
  return reinterpret_cast<id (*)(id, SEL)>(objc::lookUp(raw(self), raw(selector)))(self, selector);
}
- (id)performSelector:(SEL)selector withObject:(id)object {
  return reinterpret_cast<id (*)(id, SEL, id)>(objc::lookUp(raw(self), raw(selector)))(self, selector,
                                                                                       object);
}
@end

@implementation NSCoder
@end

// What a block answers to.
@interface NSBlock : NSObject <NSCopying>
@end
extern "C" void* _Block_copy(const void* block);
@implementation NSBlock
- (id)copyWithZone:(struct _NSZone*)zone {
  return reinterpret_cast<id>(_Block_copy((void*)self));
}
@end

// ----------------------------------------------------------------------------------------------------
// strings

@interface NSString () {
 @public
  std::u16string units_;
  std::string utf8_;
}
@end

namespace {

/// A literal as the compiler lays it out; the second kind holds UTF-16.
struct Literal {
  void* isa;
  std::uint32_t flags;
  const void* text;
  long count;
};
constexpr std::uint32_t kUtf16Literal = 0x7d0;
constexpr char16_t kReplacement = 0xFFFD;

bool isHigh(char16_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool isLow(char16_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

/// UTF-8 of the units; `isWellFormed` becomes false at a surrogate without its partner, which gives U+FFFD.
std::string encode(const std::u16string& units, bool& isWellFormed) {
  std::string out;
  isWellFormed = true;
  for (std::size_t i = 0; i < units.size(); ++i) {
    char32_t scalar = units[i];
    if (isHigh(units[i]) && i + 1 < units.size() && isLow(units[i + 1])) {
      scalar = 0x10000 + ((static_cast<char32_t>(units[i]) - 0xD800) << 10) + (units[i + 1] - 0xDC00u);
      ++i;
    } else if (isHigh(units[i]) || isLow(units[i])) {
      isWellFormed = false;
      scalar = kReplacement;
    }
    const auto append = [&out](char32_t byte) { out.push_back(static_cast<char>(byte)); };
    if (scalar < 0x80) {
      append(scalar);
    } else if (scalar < 0x800) {
      append(0xC0 | scalar >> 6);
      append(0x80 | (scalar & 0x3F));
    } else if (scalar < 0x10000) {
      append(0xE0 | scalar >> 12);
      append(0x80 | (scalar >> 6 & 0x3F));
      append(0x80 | (scalar & 0x3F));
    } else {
      append(0xF0 | scalar >> 18);
      append(0x80 | (scalar >> 12 & 0x3F));
      append(0x80 | (scalar >> 6 & 0x3F));
      append(0x80 | (scalar & 0x3F));
    }
  }
  return out;
}

/// The units of well-formed UTF-8; nothing for anything else.
std::optional<std::u16string> decode(std::string_view text) {
  std::u16string out;
  for (std::size_t i = 0; i < text.size();) {
    const auto lead = static_cast<unsigned char>(text[i]);
    std::size_t length = lead < 0x80                   ? 1
                         : lead >= 0xC2 && lead < 0xE0 ? 2
                         : lead >= 0xE0 && lead < 0xF0 ? 3
                                                       : 4;
    if ((lead >= 0x80 && lead < 0xC2) || lead > 0xF4 || i + length > text.size()) return std::nullopt;
    char32_t scalar = length == 1 ? lead : lead & (0x7Fu >> length);
    for (std::size_t k = 1; k < length; ++k) {
      const auto next = static_cast<unsigned char>(text[i + k]);
      if ((next & 0xC0) != 0x80) return std::nullopt;
      scalar = scalar << 6 | (next & 0x3F);
    }
    if ((length == 3 && scalar < 0x800) || (length == 4 && (scalar < 0x10000 || scalar > 0x10FFFF)) ||
        (scalar >= 0xD800 && scalar < 0xE000)) {
      return std::nullopt;
    }
    if (scalar >= 0x10000) {
      out.push_back(static_cast<char16_t>(0xD800 + ((scalar - 0x10000) >> 10)));
      out.push_back(static_cast<char16_t>(0xDC00 + ((scalar - 0x10000) & 0x3FF)));
    } else {
      out.push_back(static_cast<char16_t>(scalar));
    }
    i += length;
  }
  return out;
}

NSString* makeString(Class cls, std::u16string units) {
  NSString* made = [[cls alloc] init];
  made->units_ = std::move(units);
  return made;
}

}  // namespace

namespace lexwend::doubles {

const std::u16string unitsOf(NSString* string) {
  if (string == nil) return {};
  if (raw(string)->isa == raw([NSConstantString class])) {
    const auto* literal = reinterpret_cast<const Literal*>((void*)string);
    const auto count = static_cast<std::size_t>(literal->count);
    if (literal->flags == kUtf16Literal) return {static_cast<const char16_t*>(literal->text), count};
    const auto* ascii = static_cast<const char*>(literal->text);
    return {ascii, ascii + count};
  }
  return string->units_;
}

std::string utf8(NSString* string) {
  bool isWellFormed = true;
  return encode(unitsOf(string), isWellFormed);
}

NSString* string(std::string_view text) {
  auto units = decode(text);
  if (!units) die("a test gave text that is not UTF-8");
  return stringOfUnits(std::move(*units));
}

NSString* stringOfUnits(std::u16string units) {
  return [makeString([NSString class], std::move(units)) autorelease];
}

std::string describe(id object) {
  if (object == nil) return "nil";
  if ([object isKindOfClass:[NSString class]]) return "\"" + utf8(object) + "\"";
  return utf8([object description]);
}

}  // namespace lexwend::doubles

@implementation NSString
+ (instancetype)stringWithUTF8String:(const char*)text {
  requireNonnull(text);
  return [[[self alloc] initWithUTF8String:text] autorelease];
}
- (instancetype)init {
  return [super init];
}
- (instancetype)initWithUTF8String:(const char*)text {
  return [self initWithBytes:text length:std::strlen(text) encoding:NSUTF8StringEncoding];
}
- (instancetype)initWithBytes:(const void*)bytes
                       length:(NSUInteger)length
                     encoding:(NSStringEncoding)encoding {
  self = [self init];
  if (encoding == NSUTF8StringEncoding || encoding == NSASCIIStringEncoding) {
    auto units = decode({static_cast<const char*>(bytes), length});
    if (!units) {
      [self release];
      return nil;
    }
    units_ = std::move(*units);
    return self;
  }
  if (encoding == NSUTF16LittleEndianStringEncoding || encoding == NSUTF16StringEncoding) {
    units_.resize(length / sizeof(char16_t));
    std::memcpy(units_.data(), bytes, units_.size() * sizeof(char16_t));
    return self;
  }
  die("a string encoding that the doubles do not know");
}
- (instancetype)initWithData:(NSData*)data encoding:(NSStringEncoding)encoding {
  return [self initWithBytes:data.bytes length:data.length encoding:encoding];
}
- (id)copyWithZone:(struct _NSZone*)zone {
  return [self retain];
}
- (NSUInteger)length {
  return unitsOf(self).size();
}
- (void)getCharacters:(unichar*)buffer range:(NSRange)range {
  const std::u16string units = unitsOf(self);
  if (range.location + range.length > units.size()) die("-[NSString getCharacters:range:] beyond the end");
  std::copy_n(units.data() + range.location, range.length, reinterpret_cast<char16_t*>(buffer));
}
- (const char*)UTF8String {
  bool isWellFormed = true;
  std::string text = encode(unitsOf(self), isWellFormed);
  if (!isWellFormed) return nullptr;
  // The pointer lives as long as the pool that is current now, not longer.
  NSData* holder = [NSData dataWithBytes:text.c_str() length:text.size() + 1];
  return static_cast<const char*>(holder.bytes);
}
- (NSData*)dataUsingEncoding:(NSStringEncoding)encoding {
  return [self dataUsingEncoding:encoding allowLossyConversion:NO];
}
- (NSData*)dataUsingEncoding:(NSStringEncoding)encoding allowLossyConversion:(BOOL)lossy {
  const std::u16string units = unitsOf(self);
  if (encoding == NSUTF16LittleEndianStringEncoding) {
    return [NSData dataWithBytes:units.data() length:units.size() * sizeof(char16_t)];
  }
  if (encoding != NSUTF8StringEncoding) die("a string encoding that the doubles do not know");
  bool isWellFormed = true;
  const std::string text = encode(units, isWellFormed);
  if (!isWellFormed && !lossy) return nil;
  return [NSData dataWithBytes:text.data() length:text.size()];
}
- (BOOL)isEqualToString:(NSString*)other {
  return other != nil && unitsOf(self) == unitsOf(other);
}
- (BOOL)isEqual:(id)other {
  return [other isKindOfClass:[NSString class]] && [self isEqualToString:other];
}
- (NSString*)substringFromIndex:(NSUInteger)from {
  return stringOfUnits(unitsOf(self).substr(from));
}
- (NSString*)stringByAppendingString:(NSString*)other {
  requireNonnull((void*)other);
  return stringOfUnits(unitsOf(self) + unitsOf(other));
}
- (NSInteger)integerValue {
  return std::strtol(utf8(self).c_str(), nullptr, 10);
}
- (NSString*)description {
  return self;
}
@end

@implementation NSMutableString
@end
@implementation NSSimpleCString
@end
@implementation NSConstantString
@end
// The compiler names the class of a literal by this symbol.
__asm__(".globl __CFConstantStringClassReference\n"
        ".set __CFConstantStringClassReference, \"OBJC_CLASS_$_NSConstantString\"\n");

// ------------------------------------------------------------------------------------------------
// collections

@interface NSArray () {
 @public
  std::vector<id> items_;
}
@end
@implementation NSArray
+ (instancetype)array {
  return [[[self alloc] init] autorelease];
}
+ (instancetype)arrayWithObjects:(const id _Nonnull[])objects count:(NSUInteger)count {
  return [[[self alloc] initWithObjects:objects count:count] autorelease];
}
- (instancetype)init {
  return [super init];
}
- (instancetype)initWithObjects:(const id _Nonnull[])objects count:(NSUInteger)count {
  self = [super init];
  for (NSUInteger i = 0; i < count; ++i) {
    requireNonnull((void*)objects[i]);
    items_.push_back([objects[i] retain]);
  }
  return self;
}
- (void)dealloc {
  for (id item : items_) [item release];
  [super dealloc];
}
- (id)copyWithZone:(struct _NSZone*)zone {
  return [self isMemberOfClass:[NSArray class]]
             ? [self retain]
             : [[NSArray alloc] initWithObjects:items_.data() count:items_.size()];
}
- (NSUInteger)count {
  return items_.size();
}
- (id)objectAtIndex:(NSUInteger)index {
  if (index >= items_.size()) die("-[NSArray objectAtIndex:] beyond the end");
  return items_[index];
}
- (id)objectAtIndexedSubscript:(NSUInteger)index {
  return [self objectAtIndex:index];
}
- (id)lastObject {
  return items_.empty() ? nil : items_.back();
}
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id __unsafe_unretained[])buffer
                                    count:(NSUInteger)count {
  if (state->state != 0) return 0;
  state->state = 1;
  state->itemsPtr = items_.data();
  state->extra[0] = 0;
  state->mutationsPtr = &state->extra[0];
  return items_.size();
}
@end
@implementation NSMutableArray
- (instancetype)init {
  return [super init];
}
- (void)addObject:(id)object {
  requireNonnull((void*)object);
  items_.push_back([object retain]);
}
@end

@interface NSDictionary () {
 @public
  std::vector<std::pair<id, id>> entries_;
  std::vector<id> keysForEnumeration_;
}
@end
@implementation NSDictionary
+ (instancetype)dictionary {
  return [[[self alloc] init] autorelease];
}
+ (instancetype)dictionaryWithObjects:(const id _Nonnull[])objects
                              forKeys:(const id<NSCopying> _Nonnull[])keys
                                count:(NSUInteger)count {
  NSDictionary* made = [[self alloc] init];
  for (NSUInteger i = 0; i < count; ++i) {
    requireNonnull((void*)keys[i]);
    requireNonnull((void*)objects[i]);
    made->entries_.emplace_back([(id)keys[i] copy], [objects[i] retain]);
  }
  return [made autorelease];
}
- (instancetype)init {
  return [super init];
}
- (void)dealloc {
  for (auto& [key, object] : entries_) {
    [key release];
    [object release];
  }
  [super dealloc];
}
- (NSUInteger)count {
  return entries_.size();
}
- (id)objectForKey:(id)wanted {
  for (auto& [key, object] : entries_) {
    if ([key isEqual:wanted]) return object;
  }
  return nil;
}
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id __unsafe_unretained[])buffer
                                    count:(NSUInteger)count {
  if (state->state != 0) return 0;
  keysForEnumeration_.clear();
  for (auto& [key, object] : entries_) keysForEnumeration_.push_back(key);
  state->state = 1;
  state->itemsPtr = keysForEnumeration_.data();
  state->extra[0] = 0;
  state->mutationsPtr = &state->extra[0];
  return keysForEnumeration_.size();
}
- (NSString*)description {
  std::string text = "{";
  for (auto& [key, object] : entries_) {
    text += (text.size() > 1 ? ", " : "") + utf8([key description]) + "=" + utf8([object description]);
  }
  return string(text + "}");
}
@end
@implementation NSMutableDictionary
- (void)setObject:(id)object forKey:(id)key {
  requireNonnull((void*)key);
  requireNonnull((void*)object);
  [object retain];
  [self removeObjectForKey:key];
  entries_.emplace_back([key copy], object);
}
- (void)removeObjectForKey:(id)wanted {
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    if ([entries_[i].first isEqual:wanted]) {
      [entries_[i].first release];
      [entries_[i].second release];
      entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(i));
      return;
    }
  }
}
@end

@interface NSData () {
  Bytes bytes_;
}
@end
@implementation NSData
+ (instancetype)dataWithBytes:(const void*)bytes length:(NSUInteger)length {
  return [[[self alloc] initWithBytes:bytes length:length] autorelease];
}
- (instancetype)initWithBytes:(const void*)bytes length:(NSUInteger)length {
  self = [super init];
  const auto* first = static_cast<const std::byte*>(bytes);
  bytes_.assign(first, first + length);
  return self;
}
- (NSUInteger)length {
  return bytes_.size();
}
- (const void*)bytes {
  return bytes_.empty() ? nullptr : bytes_.data();
}
- (BOOL)writeToURL:(NSURL*)url options:(NSDataWritingOptions)options error:(NSError**)error {
  requireNonnull((void*)url);
  record(utf8(url.path) + ", " + std::to_string(bytes_.size()) +
         " bytes, options=" + std::to_string(options));
  const bool isRefused = isReadOnly(utf8(url.path)) || takeFailure();
  std::FILE* file = isRefused ? nullptr : std::fopen(utf8(url.path).c_str(), "wb");
  const bool isOpen = file != nullptr;
  bool isWritten = isOpen && std::fwrite(bytes_.data(), 1, bytes_.size(), file) == bytes_.size();
  if (isOpen) isWritten = std::fclose(file) == 0 && isWritten;
  if (!isWritten && error != nullptr) {
    *error = [NSError errorWithDomain:NSCocoaErrorDomain code:512 userInfo:nil];
  }
  return isWritten;
}
+ (instancetype)dataWithContentsOfURL:(NSURL*)url {
  std::FILE* file = std::fopen(utf8(url.path).c_str(), "rb");
  if (file == nullptr) return nil;
  std::string text;
  for (int byte = std::fgetc(file); byte != EOF; byte = std::fgetc(file)) {
    text.push_back(static_cast<char>(byte));
  }
  std::fclose(file);
  return [self dataWithBytes:text.data() length:text.size()];
}
@end

// ---------------------------------------------------------------------------------------- numbers, null,
// error

@implementation NSValue
@end

@interface NSNumber () {
  // A number keeps the type that it was made of, which is seen from outside.
  char type_;
  long long integer_;
  double real_;
}
@end
// What lies outside of the integers becomes their nearest end, and what is no number becomes 0.
static long long truncated(double value) {
  if (value != value) return 0;
  if (value >= 0x1p63) return std::numeric_limits<long long>::max();
  if (value < -0x1p63) return std::numeric_limits<long long>::min();
  return static_cast<long long>(value);
}

@implementation NSNumber
+ (NSNumber*)makeOfType:(char)type integer:(long long)integer real:(double)real {
  NSNumber* made = [[self alloc] init];
  made->type_ = type;
  made->integer_ = integer;
  made->real_ = real;
  return [made autorelease];
}
static NSNumber* makeInteger(char type, long long value) {
  return [NSNumber makeOfType:type integer:value real:static_cast<double>(value)];
}
+ (NSNumber*)numberWithInt:(int)value {
  return makeInteger('i', value);
}
+ (NSNumber*)numberWithLongLong:(long long)value {
  return makeInteger('q', value);
}
+ (NSNumber*)numberWithInteger:(NSInteger)value {
  return makeInteger('q', value);
}
+ (NSNumber*)numberWithDouble:(double)value {
  return [self makeOfType:'d' integer:truncated(value) real:value];
}
+ (NSNumber*)numberWithBool:(BOOL)value {
  return (NSNumber*)(value ? kCFBooleanTrue : kCFBooleanFalse);
}
- (const char*)objCType {
  static const char* const kTypes = "c\0C\0s\0S\0i\0I\0q\0Q\0f\0d\0";
  for (const char* type = kTypes; *type != 0; type += 2) {
    if (*type == type_) return type;
  }
  return "?";
}
- (long long)longLongValue {
  return integer_;
}
- (double)doubleValue {
  return real_;
}
- (BOOL)boolValue {
  return real_ != 0;
}
@end

// The two truth values are objects of their own, which is how a program tells them from numbers.
@interface __NSCFBoolean : NSNumber
@end
@implementation __NSCFBoolean
- (NSString*)description {
  return [self boolValue] ? @"true" : @"false";
}
@end

@implementation NSNull
+ (NSNull*)null {
  static NSNull* the = keptForever([[NSNull alloc] init]);
  return the;
}
@end

NSErrorDomain const NSCocoaErrorDomain = @"NSCocoaErrorDomain";
NSErrorDomain const NSPOSIXErrorDomain = @"NSPOSIXErrorDomain";
NSErrorDomain const NSOSStatusErrorDomain = @"NSOSStatusErrorDomain";
NSErrorUserInfoKey const NSLocalizedDescriptionKey = @"NSLocalizedDescription";
@interface NSError () {
  NSString* domain_;
  NSInteger code_;
  NSDictionary* userInfo_;
}
@end
@implementation NSError
+ (instancetype)errorWithDomain:(NSErrorDomain)domain code:(NSInteger)code userInfo:(NSDictionary*)userInfo {
  NSError* made = [[self alloc] init];
  made->domain_ = [domain copy];
  made->code_ = code;
  made->userInfo_ = [userInfo copy];
  return [made autorelease];
}
- (void)dealloc {
  [domain_ release];
  [userInfo_ release];
  [super dealloc];
}
- (NSInteger)code {
  return code_;
}
@end

namespace {
bool hasPortOfLetters(const std::string& url) {
  const std::size_t host = url.find("://");
  if (host == std::string::npos) return false;
  const std::size_t colon = url.find(':', host + 3);
  const std::size_t slash = std::min(url.find('/', host + 3), url.size());
  return colon < slash && url.find_first_not_of("0123456789", colon + 1) < slash;
}
}  // namespace

@interface NSURL () {
  std::string text_;
}
@end
@implementation NSURL
+ (instancetype)URLWithString:(NSString*)text {
  requireNonnull((void*)text);
  const std::string spelt = utf8(text);
  record(spelt);
  if (takeFailure()) return nil;
  // Nearly everything is one: what must not stand in a URL is percent-encoded, and no scheme makes a relative
  // one.
  if (spelt.empty() || hasPortOfLetters(spelt)) return nil;
  NSURL* made = [[self alloc] init];
  made->text_ = spelt;
  return [made autorelease];
}
+ (NSURL*)fileURLWithPath:(NSString*)path {
  requireNonnull((void*)path);
  NSURL* made = [[self alloc] init];
  made->text_ = "file://" + utf8(path);
  return [made autorelease];
}
+ (NSURL*)fileURLWithPath:(NSString*)path isDirectory:(BOOL)isDirectory {
  record(utf8(path) + ", " + truth(isDirectory));
  return [self fileURLWithPath:path];
}
- (NSString*)absoluteString {
  return string(text_);
}
- (BOOL)isFileURL {
  return text_.starts_with("file://");
}
- (NSString*)path {
  return self.isFileURL ? string(text_.substr(std::strlen("file://"))) : @"";
}
@end

// ------------------------------------------------------------------------------------------- names and
// globals

NSString* NSStringFromClass(Class cls) { return string(raw(cls)->description->name); }
NSString* NSStringFromSelector(SEL selector) { return string(raw(selector)); }
Class NSClassFromString(NSString* name) {
  return reinterpret_cast<Class>((void*)objc::classNamed(utf8(name).c_str()));
}
SEL NSSelectorFromString(NSString* name) {
  return reinterpret_cast<SEL>((void*)objc::registerSelector(utf8(name).c_str()));
}
void NSLog(NSString* format, ...) {
  // The host writes its own log file; what goes to the system's log would be seen by everybody.
  die("NSLog: nothing is written to the system log");
}
const NSPoint NSZeroPoint = {0, 0};
const NSRect NSZeroRect = {{0, 0}, {0, 0}};

// The empty literals and the two truth values. The declarations of the latter are constants; here they are
// made at the start of the process, before any constructor that could want them.
extern "C" {
id __NSArray0__ = nil;
id __NSDictionary0__ = nil;
}
extern "C" {
id lexwend_trueObject __asm__("kCFBooleanTrue") = nil;
id lexwend_falseObject __asm__("kCFBooleanFalse") = nil;
}

static __attribute__((constructor(102))) void makeSharedObjects() {
  __NSArray0__ = keptForever([[NSArray alloc] init]);
  __NSDictionary0__ = keptForever([[NSDictionary alloc] init]);
  lexwend_trueObject = keptForever([[__NSCFBoolean makeOfType:'c' integer:1 real:1] retain]);
  lexwend_falseObject = keptForever([[__NSCFBoolean makeOfType:'c' integer:0 real:0] retain]);
}
