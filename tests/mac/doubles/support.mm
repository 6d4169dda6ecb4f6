// SPDX-License-Identifier: MIT
#include "tests/mac/doubles/support.h"

#include <cstdio>
#include <cstdlib>
#include <deque>

#include "tests/mac/runtime/runtime.h"

extern "C" {
void* objc_autoreleasePoolPush();
void objc_autoreleasePoolPop(void* token);
}

namespace lexwend::doubles {
namespace {

std::vector<Call>& callLog() {
  static auto* the = new std::vector<Call>;
  return *the;
}

std::vector<void (*)()>& resetters() {
  static auto* the = new std::vector<void (*)()>;
  return *the;
}

std::vector<void (*)()>& processEnds() {
  static auto* the = new std::vector<void (*)()>;
  return *the;
}

/// The outcomes of the next calls of each name in order; nothing: the call goes well.
std::map<std::string, std::deque<std::optional<std::int32_t>>>& preparedFailures() {
  static auto* the = new std::map<std::string, std::deque<std::optional<std::int32_t>>>;
  return *the;
}
const ResetHook kResetFailures([] { preparedFailures().clear(); });

objc::Object* asRuntimeObject(const void* object) {
  return static_cast<objc::Object*>(const_cast<void*>(object));
}

void resetEverything() {
  for (void (*reset)() : resetters()) reset();
  forgetCalls();
}

}  // namespace

void die(const std::string& message) {
  std::fprintf(stderr, "macOS: %s\n", message.c_str());
  std::fflush(stderr);
  std::abort();
}

void record(const std::string& arguments, const char* name) { callLog().push_back({name, arguments}); }
void called(const std::string& arguments, const char* name) {
  requireMainThread(name);
  record(arguments, name);
}
std::vector<Call> calls() { return callLog(); }
std::vector<Call> callsNamed(const std::string& name) {
  std::vector<Call> found;
  for (const Call& call : callLog()) {
    if (call.name == name) found.push_back(call);
  }
  return found;
}
void forgetCalls() { callLog().clear(); }

void requireMainThread(const char* what) {
  if (!objc::isMainThread()) die(std::string(what) + " off the main thread");
}
void requireApplication(const char* what) {
  requireMainThread(what);
  if (NSApp == nil) die(std::string(what) + " before the shared application was made");
}
void requireNonnull(const void* value, const char* what) {
  if (value == nullptr) die(std::string(what) + ": nil where a value is required");
}
void requireKind(CFTypeRef object, Class cls, const char* what) {
  requireNonnull(object, what);
  if (!objc::isKindOf(asRuntimeObject(object), reinterpret_cast<objc::Class*>((void*)cls))) {
    die(std::string(what) + ": wrong type, an object of class " +
        objc::classOf(asRuntimeObject(object))->description->name);
  }
}

std::string truth(bool value) { return value ? "true" : "false"; }
std::string decimal(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%g", value);
  return text;
}

Bytes bytesOf(const std::string& text) {
  const auto* first = reinterpret_cast<const std::byte*>(text.data());
  return Bytes(first, first + text.size());
}
NSData* dataOf(const Bytes& bytes) { return [NSData dataWithBytes:bytes.data() length:bytes.size()]; }
Bytes bytesOfData(NSData* data) {
  const auto* first = static_cast<const std::byte*>(data.bytes);
  return Bytes(first, first + data.length);
}

id objectOf(const Value& value) {
  struct Maker {
    id operator()(std::monostate) const { return nil; }
    id operator()(bool truthValue) const { return [NSNumber numberWithBool:truthValue]; }
    id operator()(std::int64_t integer) const { return [NSNumber numberWithLongLong:integer]; }
    id operator()(double real) const { return [NSNumber numberWithDouble:real]; }
    id operator()(const std::string& text) const { return string(text); }
    id operator()(const std::u16string& units) const { return stringOfUnits(units); }
    id operator()(const std::vector<std::string>& texts) const {
      NSMutableArray* array = [NSMutableArray array];
      for (const std::string& text : texts) [array addObject:string(text)];
      return array;
    }
    id operator()(const Bytes& bytes) const { return dataOf(bytes); }
    id operator()(NullObject) const { return [NSNull null]; }
    id operator()(MixedList) const {
      NSMutableArray* array = [NSMutableArray array];
      [array addObject:@"he"];
      [array addObject:[NSNumber numberWithInt:1]];
      return array;
    }
  };
  return std::visit(Maker{}, value);
}

Value valueOf(id object) {
  if (object == nil) return std::monostate{};
  if ([object isKindOfClass:[NSString class]]) return utf8(object);
  if (CFGetTypeID(object) == CFBooleanGetTypeID()) return static_cast<bool>([object boolValue]);
  if ([object isKindOfClass:[NSNumber class]]) {
    if (CFNumberIsFloatType((CFNumberRef)object)) return static_cast<double>([object doubleValue]);
    return static_cast<std::int64_t>([object longLongValue]);
  }
  if ([object isKindOfClass:[NSData class]]) return bytesOfData(object);
  return NullObject{};
}

ResetHook::ResetHook(void (*reset)()) { resetters().push_back(reset); }

ProcessEndHook::ProcessEndHook(void (*end)()) { processEnds().push_back(end); }

std::optional<std::int32_t> takeFailure(const std::string& call) {
  const auto waiting = preparedFailures().find(call);
  if (waiting == preparedFailures().end()) return std::nullopt;
  const auto outcome = waiting->second.front();
  waiting->second.pop_front();
  if (waiting->second.empty()) preparedFailures().erase(waiting);
  return outcome;
}

namespace failures {
void failNext(const std::string& call, std::int32_t code, int after) {
  auto& waiting = preparedFailures()[call];
  for (int i = 0; i < after; ++i) waiting.push_back(std::nullopt);
  waiting.push_back(code);
}
std::vector<std::string> unused() {
  std::vector<std::string> calls;
  for (const auto& [call, outcomes] : preparedFailures()) calls.push_back(call);
  return calls;
}
}  // namespace failures

namespace process {
void end() {
  for (void (*hook)() : processEnds()) hook();
}
}  // namespace process

id keptForever(id object) {
  objc::exemptFromCount(asRuntimeObject(object));
  return object;
}

Session::Session() {
  resetEverything();
  before_ = objc::liveObjectsByClass();
  blocksBefore_ = objc::liveBlocks();
  pool_ = objc_autoreleasePoolPush();
}

Session::~Session() {
  resetEverything();
  if (pool_ != nullptr) objc_autoreleasePoolPop(pool_);
}

std::size_t liveObjects(const std::string& className) {
  if (className.empty()) return objc::liveObjects();
  const auto counts = objc::liveObjectsByClass();
  const auto found = counts.find(className);
  return found == counts.end() ? 0 : found->second;
}

std::string Session::unbalancedObjects() {
  resetEverything();
  objc_autoreleasePoolPop(pool_);
  pool_ = nullptr;
  std::string left;
  for (const auto& [name, count] : objc::liveObjectsByClass()) {
    const auto earlier = before_.find(name);
    const std::size_t known = earlier == before_.end() ? 0 : earlier->second;
    if (count > known) left += name + " +" + std::to_string(count - known) + "\n";
  }
  if (objc::liveBlocks() > blocksBefore_) {
    left += "blocks +" + std::to_string(objc::liveBlocks() - blocksBefore_) + "\n";
  }
  pool_ = objc_autoreleasePoolPush();
  return left;
}

}  // namespace lexwend::doubles
