// SPDX-License-Identifier: MIT
// Text input sources and the translation of keys.
#import <Carbon/Carbon.h>

#include <cstring>

#include "tests/mac/doubles/support.h"
#include "tests/mac/doubles/system_objects.h"

using namespace lexwend::doubles;

@implementation LXWInputSource
- (void)dealloc {
  [properties release];
  [super dealloc];
}
@end

namespace {

struct State {
  std::vector<input_sources::Source> sources;
  std::optional<std::size_t> current;
  bool isMethodInFront = false;
  bool isListAbsent = false;
  bool isListMistyped = false;
  std::uint8_t keyboardType = 91;
};
State& state() {
  static auto* the = new State;
  return *the;
}
const ResetHook kReset([] { state() = State{}; });

/// A handle is made for every answer; equality of handles is not promised by the system either.
LXWInputSource* makeHandle(std::size_t index) {
  LXWInputSource* handle = [[LXWInputSource alloc] init];
  handle->source = state().sources.at(index);
  handle->index = index;
  handle->properties = [[NSMutableDictionary alloc] init];
  return handle;
}

// The data of a layout: a head that says what it is, then a record for each key and modifier state.
constexpr std::uint16_t kLayoutFormat = 0x1002;
constexpr std::uint16_t kOwnLayoutVersion = 0x4C58;
constexpr std::size_t kMostUnits = 16;
struct LayoutHead {
  std::uint16_t format;
  std::uint16_t version;
  std::uint32_t count;
};
struct LayoutRecord {
  std::uint16_t keyCode;
  std::uint16_t isDead;
  std::uint32_t modifiers;
  std::int32_t error;
  std::uint32_t length;
  char16_t units[kMostUnits];
};

void append(Bytes& bytes, const void* data, std::size_t size) {
  const auto* first = static_cast<const std::byte*>(data);
  bytes.insert(bytes.end(), first, first + size);
}

std::optional<LayoutRecord> recordFor(const void* layout, std::uint16_t keyCode, std::uint32_t modifiers) {
  LayoutHead head;
  std::memcpy(&head, layout, sizeof head);
  if (head.format != kLayoutFormat || head.version != kOwnLayoutVersion) {
    die("UCKeyTranslate: the data is no keyboard layout");
  }
  for (std::uint32_t i = 0; i < head.count; ++i) {
    LayoutRecord record;
    std::memcpy(&record, static_cast<const char*>(layout) + sizeof head + i * sizeof record, sizeof record);
    if (record.keyCode == keyCode && record.modifiers == modifiers) return record;
  }
  return std::nullopt;
}

}  // namespace

namespace lexwend::doubles::input_sources {

Bytes layoutData(const KeyOutputs& outputs) {
  Bytes bytes;
  const LayoutHead head{kLayoutFormat, kOwnLayoutVersion, static_cast<std::uint32_t>(outputs.size())};
  append(bytes, &head, sizeof head);
  for (const auto& [key, output] : outputs) {
    if (output.text.size() > kMostUnits) die("a test wants a key to type too much");
    LayoutRecord record{};
    record.keyCode = key.first;
    record.isDead = output.isDead ? 1 : 0;
    record.modifiers = key.second;
    record.error = output.error;
    record.length = static_cast<std::uint32_t>(output.text.size());
    std::copy(output.text.begin(), output.text.end(), record.units);
    append(bytes, &record, sizeof record);
  }
  return bytes;
}
void install(const Source& source) { state().sources.push_back(source); }
void clear() {
  state().sources.clear();
  state().current.reset();
}
void setCurrentLayout(std::optional<std::size_t> index) { state().current = index; }
void setInputMethodInFront() { state().isMethodInFront = true; }
std::optional<std::size_t> currentLayout() { return state().current; }
void listIsAbsent() { state().isListAbsent = true; }
void listIsMistyped() { state().isListMistyped = true; }
void setKeyboardType(std::uint8_t type) { state().keyboardType = type; }
void postEnabledSourcesChanged() {
  postTo([NSDistributedNotificationCenter defaultCenter],
         (NSString*)kTISNotifyEnabledKeyboardInputSourcesChanged);
}
void postSelectedSourceChanged() {
  postTo([NSDistributedNotificationCenter defaultCenter],
         (NSString*)kTISNotifySelectedKeyboardInputSourceChanged);
}

}  // namespace lexwend::doubles::input_sources

extern "C" {

const CFStringRef kTISPropertyInputSourceCategory = CFSTR("TISPropertyInputSourceCategory");
const CFStringRef kTISPropertyInputSourceType = CFSTR("TISPropertyInputSourceType");
const CFStringRef kTISPropertyInputSourceIsSelectCapable = CFSTR("TISPropertyInputSourceIsSelectCapable");
const CFStringRef kTISPropertyInputSourceIsEnabled = CFSTR("TISPropertyInputSourceIsEnabled");
const CFStringRef kTISPropertyInputSourceIsSelected = CFSTR("TISPropertyInputSourceIsSelected");
const CFStringRef kTISPropertyInputSourceID = CFSTR("TISPropertyInputSourceID");
const CFStringRef kTISPropertyLocalizedName = CFSTR("TISPropertyLocalizedName");
const CFStringRef kTISPropertyInputSourceLanguages = CFSTR("TISPropertyInputSourceLanguages");
const CFStringRef kTISPropertyUnicodeKeyLayoutData = CFSTR("TISPropertyUnicodeKeyLayoutData");
const CFStringRef kTISCategoryKeyboardInputSource = CFSTR("TISCategoryKeyboardInputSource");
const CFStringRef kTISTypeKeyboardLayout = CFSTR("TISTypeKeyboardLayout");
const CFStringRef kTISTypeKeyboardInputMethodWithoutModes = CFSTR("TISTypeKeyboardInputMethodWithoutModes");
const CFStringRef kTISNotifySelectedKeyboardInputSourceChanged =
    CFSTR("com.apple.Carbon.TISNotifySelectedKeyboardInputSourceChanged");
const CFStringRef kTISNotifyEnabledKeyboardInputSourcesChanged =
    CFSTR("com.apple.Carbon.TISNotifyEnabledKeyboardInputSourcesChanged");

CFArrayRef TISCreateInputSourceList(CFDictionaryRef properties, Boolean includeAllInstalled) {
  called(utf8([(id)properties description]) + ", " + truth(includeAllInstalled));
  if (state().isListMistyped) return (CFArrayRef)(id)[@"no array" retain];
  if (state().isListAbsent || takeFailure()) return nullptr;
  NSMutableArray* found = [[NSMutableArray alloc] init];
  for (std::size_t i = 0; i < state().sources.size(); ++i) {
    const input_sources::Source& source = state().sources[i];
    if (!source.isEnabled && !includeAllInstalled) continue;
    bool isMatch = true;
    for (id key in (NSDictionary*)properties) {
      id wanted = [(NSDictionary*)properties objectForKey:key];
      if ([key isEqual:(id)kTISPropertyInputSourceType]) {
        requireKind(wanted, [NSString class], "TISCreateInputSourceList: the type");
        isMatch = isMatch && utf8(wanted) == source.type;
      } else if ([key isEqual:(id)kTISPropertyInputSourceIsEnabled]) {
        if ((CFTypeRef)wanted != kCFBooleanTrue && (CFTypeRef)wanted != kCFBooleanFalse) {
          die("TISCreateInputSourceList: whether enabled is no truth value");
        }
        isMatch = isMatch && ((CFTypeRef)wanted == kCFBooleanTrue) == source.isEnabled;
      } else {
        die("TISCreateInputSourceList: a property that the doubles do not filter by: " + describe(key));
      }
    }
    if (!isMatch) continue;
    LXWInputSource* handle = makeHandle(i);
    [found addObject:handle];
    [handle release];
  }
  return (CFArrayRef)found;
}

void* TISGetInputSourceProperty(TISInputSourceRef inputSource, CFStringRef key) {
  requireMainThread();
  requireKind(inputSource, [LXWInputSource class]);
  requireKind(key, [NSString class]);
  auto* handle = (LXWInputSource*)inputSource;
  record(std::to_string(handle->index) + ", " + utf8((NSString*)key));
  if (id known = [handle->properties objectForKey:(id)key]) return (void*)known;
  id answer = nil;
  if ([(id)key isEqual:(id)kTISPropertyInputSourceID]) {
    answer = objectOf(handle->source.id);
  } else if ([(id)key isEqual:(id)kTISPropertyInputSourceLanguages]) {
    answer = objectOf(handle->source.languages);
  } else if ([(id)key isEqual:(id)kTISPropertyUnicodeKeyLayoutData]) {
    answer = objectOf(handle->source.unicodeKeyLayoutData);
  } else {
    die("TISGetInputSourceProperty: a property that the doubles do not hold: " + describe((id)key));
  }
  if (answer != nil) [handle->properties setObject:answer forKey:(id)key];
  return (void*)answer;
}

TISInputSourceRef TISCopyCurrentKeyboardLayoutInputSource() {
  called();
  if (takeFailure()) return nullptr;
  return state().current ? (TISInputSourceRef)makeHandle(*state().current) : nullptr;
}
TISInputSourceRef TISCopyCurrentKeyboardInputSource() {
  record();
  if (state().isMethodInFront) {
    LXWInputSource* method = [[LXWInputSource alloc] init];
    method->source = {.id = std::string("com.apple.inputmethod.Kotoeri"),
                      .languages = std::vector<std::string>{"ja"},
                      .unicodeKeyLayoutData = {},
                      .type = "TISTypeKeyboardInputMethodWithoutModes"};
    method->properties = [[NSMutableDictionary alloc] init];
    return (TISInputSourceRef)method;
  }
  return state().current ? (TISInputSourceRef)makeHandle(*state().current) : nullptr;
}
OSStatus TISSelectInputSource(TISInputSourceRef inputSource) {
  requireMainThread();
  requireKind(inputSource, [LXWInputSource class]);
  const std::size_t index = ((LXWInputSource*)inputSource)->index;
  record(std::to_string(index));
  if (const auto code = takeFailure()) return *code;
  state().current = index;
  state().isMethodInFront = false;
  return noErr;
}

UInt8 LMGetKbdType() {
  record();
  return state().keyboardType;
}

OSStatus UCKeyTranslate(const UCKeyboardLayout* keyLayout, UInt16 virtualKeyCode, UInt16 keyAction,
                        UInt32 modifierKeyState, UInt32 keyboardType, OptionBits options,
                        UInt32* deadKeyState, UniCharCount maxStringLength, UniCharCount* actualStringLength,
                        UniChar* unicodeString) {
  requireNonnull(keyLayout, "UCKeyTranslate: the layout");
  requireNonnull(deadKeyState, "UCKeyTranslate: the dead-key state");
  requireNonnull(actualStringLength, "UCKeyTranslate: the length");
  requireNonnull(unicodeString, "UCKeyTranslate: the string");
  record(std::to_string(virtualKeyCode) + ", action=" + std::to_string(keyAction) +
         ", modifiers=" + std::to_string(modifierKeyState) + ", keyboard=" + std::to_string(keyboardType) +
         ", options=" + std::to_string(options) + ", dead=" + std::to_string(*deadKeyState) +
         ", room=" + std::to_string(maxStringLength));
  const auto found = recordFor(keyLayout, virtualKeyCode, modifierKeyState);
  // What the caller finds in its variables after an error is not to be used.
  *actualStringLength = 0;
  if (!found) return noErr;
  if (found->error != 0) {
    *actualStringLength = found->length;
    return found->error;
  }
  const bool suppressesDeadKeys = (options & kUCKeyTranslateNoDeadKeysMask) != 0;
  if (found->isDead != 0 && !suppressesDeadKeys) {
    *deadKeyState = virtualKeyCode + 1u;
    return noErr;
  }
  std::u16string typed(found->units, found->length);
  if (*deadKeyState != 0) typed.insert(0, u"\u00B4");
  *deadKeyState = 0;
  if (typed.size() > maxStringLength) return kUCOutputBufferTooSmall;
  std::copy(typed.begin(), typed.end(), reinterpret_cast<char16_t*>(unicodeString));
  *actualStringLength = typed.size();
  return noErr;
}
}
