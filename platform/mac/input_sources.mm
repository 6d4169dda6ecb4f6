// SPDX-License-Identifier: MIT
#include "platform/mac/input_sources.h"

#import <Carbon/Carbon.h>
#import <Foundation/Foundation.h>

#include <algorithm>
#include <array>
#include <utility>

#include "platform/mac/callback.h"
#include "platform/mac/cf_ref.h"
#include "platform/mac/cf_text.h"

/// Hears of a change of the enabled layouts also while the application is not active. The center of the
/// notifications holds it weakly.
@interface LXWLayoutsObserver : NSObject {
 @public
  std::weak_ptr<std::function<void()>> handler;
}
@end

@implementation LXWLayoutsObserver

- (void)layoutsChanged:(NSNotification*)notification {
  if (const auto running = handler.lock()) lexwend::platform::mac::guarded(*running);
}

@end

namespace lexwend::platform::mac {
namespace {

class MacInputSource : public InputSource {
 public:
  explicit MacInputSource(CFRef<TISInputSourceRef> source) : source_(std::move(source)) {}
  TISInputSourceRef get() const { return source_.get(); }

 private:
  CFRef<TISInputSourceRef> source_;
};

TISInputSourceRef tisSource(const InputSourceRef& source) {
  return static_cast<const MacInputSource&>(*source).get();
}

/// The bytes of a 'uchr' resource.
class MacKeyLayoutData : public KeyLayoutData {
 public:
  explicit MacKeyLayoutData(CFRef<CFDataRef> bytes) : bytes_(std::move(bytes)) {}
  bool empty() const override { return CFDataGetLength(bytes_.get()) == 0; }
  const UCKeyboardLayout* layout() const {
    return reinterpret_cast<const UCKeyboardLayout*>(CFDataGetBytePtr(bytes_.get()));
  }

 private:
  CFRef<CFDataRef> bytes_;
};

CFStringRef propertyKey(InputSourceProperty key) {
  switch (key) {
    case InputSourceProperty::id:
      return kTISPropertyInputSourceID;
    case InputSourceProperty::languages:
      return kTISPropertyInputSourceLanguages;
    case InputSourceProperty::unicodeKeyLayoutData:
      return kTISPropertyUnicodeKeyLayoutData;
  }
  return nullptr;
}

CFStringRef sourceType(InputSourceType type) {
  switch (type) {
    case InputSourceType::keyboardLayout:
      return kTISTypeKeyboardLayout;
  }
  return nullptr;
}

/// Exactly the entries that are set.
CFRef<CFDictionaryRef> propertyFilter(const InputSourceFilter& filter) {
  std::array<const void*, 2> keys{};
  std::array<const void*, 2> values{};
  std::size_t count = 0;
  const auto require = [&](CFStringRef key, CFTypeRef value) {
    keys.at(count) = key;
    values.at(count) = value;
    ++count;
  };
  if (filter.type) require(kTISPropertyInputSourceType, sourceType(*filter.type));
  if (filter.isEnabled) {
    require(kTISPropertyInputSourceIsEnabled, *filter.isEnabled ? kCFBooleanTrue : kCFBooleanFalse);
  }
  return CFRef<CFDictionaryRef>::adopt(
      CFDictionaryCreate(kCFAllocatorDefault, keys.data(), values.data(), static_cast<CFIndex>(count),
                         &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
}

InputSourceValue stringValue(CFTypeRef value) {
  if (CFGetTypeID(value) != CFStringGetTypeID()) return MistypedProperty{};
  return utf8(static_cast<CFStringRef>(value));
}

InputSourceValue stringListValue(CFTypeRef value) {
  if (CFGetTypeID(value) != CFArrayGetTypeID()) return MistypedProperty{};
  const auto array = static_cast<CFArrayRef>(value);
  std::vector<std::string> strings;
  for (CFIndex index = 0; index < CFArrayGetCount(array); ++index) {
    const CFTypeRef element = CFArrayGetValueAtIndex(array, index);
    if (CFGetTypeID(element) != CFStringGetTypeID()) return MistypedProperty{};
    strings.push_back(utf8(static_cast<CFStringRef>(element)));
  }
  return strings;
}

InputSourceValue layoutDataValue(CFTypeRef value) {
  if (CFGetTypeID(value) != CFDataGetTypeID()) return MistypedProperty{};
  return std::make_shared<MacKeyLayoutData>(CFRef<CFDataRef>::share(static_cast<CFDataRef>(value)));
}

/// UCKeyTranslate takes the mask of a Carbon event without its low byte.
constexpr unsigned kModifierShift = 8;

}  // namespace

std::optional<std::vector<InputSourceRef>> MacInputSourceService::createInputSourceList(
    const InputSourceFilter& filter, bool includeAllInstalled) {
  const CFRef<CFDictionaryRef> properties = propertyFilter(filter);
  const auto list = CFRef<CFArrayRef>::adopt(TISCreateInputSourceList(properties.get(), includeAllInstalled));
  if (!list || CFGetTypeID(list.get()) != CFArrayGetTypeID()) return std::nullopt;

  std::vector<InputSourceRef> sources;
  for (CFIndex index = 0; index < CFArrayGetCount(list.get()); ++index) {
    const void* element = CFArrayGetValueAtIndex(list.get(), index);
    const auto source = static_cast<TISInputSourceRef>(const_cast<void*>(element));
    sources.push_back(std::make_shared<MacInputSource>(CFRef<TISInputSourceRef>::share(source)));
  }
  return sources;
}

InputSourceValue MacInputSourceService::property(const InputSourceRef& source, InputSourceProperty key) {
  const CFTypeRef value = TISGetInputSourceProperty(tisSource(source), propertyKey(key));
  if (value == nullptr) return std::monostate{};
  switch (key) {
    case InputSourceProperty::id:
      return stringValue(value);
    case InputSourceProperty::languages:
      return stringListValue(value);
    case InputSourceProperty::unicodeKeyLayoutData:
      return layoutDataValue(value);
  }
  return MistypedProperty{};
}

InputSourceRef MacInputSourceService::copyCurrentKeyboardLayoutInputSource() {
  auto source = CFRef<TISInputSourceRef>::adopt(TISCopyCurrentKeyboardLayoutInputSource());
  if (!source) return nullptr;
  return std::make_shared<MacInputSource>(std::move(source));
}

void MacInputSourceService::select(const InputSourceRef& source) { TISSelectInputSource(tisSource(source)); }

std::uint32_t MacInputSourceService::keyboardType() { return LMGetKbdType(); }

std::optional<std::u16string> MacInputSourceService::translate(const KeyLayoutData& data,
                                                               const KeyTranslation& translation,
                                                               std::uint32_t& deadKeyState) {
  const auto keyCode = static_cast<UInt16>(translation.keyCode);
  if (KeyCode{keyCode} != translation.keyCode) return std::nullopt;
  std::vector<UniChar> characters(translation.maxLength);
  UniCharCount length = 0;
  const ::OSStatus status = UCKeyTranslate(
      static_cast<const MacKeyLayoutData&>(data).layout(), keyCode, static_cast<UInt16>(translation.action),
      number(translation.modifiers) >> kModifierShift, translation.keyboardType, translation.options,
      &deadKeyState, characters.size(), &length, characters.data());
  if (status != noErr) return std::nullopt;
  const std::size_t reported = std::min<std::size_t>(length, characters.size());
  return std::u16string(characters.begin(), characters.begin() + static_cast<std::ptrdiff_t>(reported));
}

Registration MacInputSourceService::observeEnabledLayoutsChanged(std::function<void()> handler) {
  auto kept = shared(std::move(handler));
  const std::weak_ptr observer = kept;
  NSString* name = (__bridge NSString*)kTISNotifyEnabledKeyboardInputSourcesChanged;
  void (^changed)(NSNotification*) = ^(NSNotification*) {
    if (const auto running = observer.lock()) guarded(*running);
  };
  NSDistributedNotificationCenter* center = [NSDistributedNotificationCenter defaultCenter];
  [center addObserverForName:name object:nil queue:[NSOperationQueue mainQueue] usingBlock:changed];
  // The system holds back what the one above observes as long as the application is not active, and this
  // one hardly ever is. While it is active, both hear of the change.
  LXWLayoutsObserver* immediate = [[LXWLayoutsObserver alloc] init];
  immediate->handler = observer;
  [center addObserver:immediate
                selector:@selector(layoutsChanged:)
                    name:name
                  object:nil
      suspensionBehavior:NSNotificationSuspensionBehaviorDeliverImmediately];
  observers_.emplace_back([center, immediate] { [center removeObserver:immediate]; });
  // The system keeps the other observer, which does nothing once the handler has gone.
  return Registration([kept = std::move(kept)] {});
}

static_assert(static_cast<int>(KeyAction::down) == kUCKeyActionDown);

}  // namespace lexwend::platform::mac
