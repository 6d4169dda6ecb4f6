// SPDX-License-Identifier: MIT
#include "platform/mac/pasteboard.h"

#import <AppKit/AppKit.h>

#include "platform/mac/cf_text.h"

/// What NSPasteboard has on macOS 15.4 and later; declared here, so that an older SDK does as well.
@protocol LXWPasteboardAccess
@property(readonly) NSInteger accessBehavior;
@end

namespace lexwend::platform::mac {
namespace {

/// NSPasteboardAccessBehaviorAlwaysAllow
constexpr NSInteger kAlwaysAllow = 2;

NSPasteboardType nsType(const std::string& type) { return (__bridge NSString*)cfTextOrEmpty(type).get(); }

NSPasteboard* general() { return [NSPasteboard generalPasteboard]; }

Bytes bytesOf(NSData* data) {
  const auto* first = static_cast<const std::byte*>(data.bytes);
  return first == nullptr ? Bytes() : Bytes(first, first + data.length);
}

class MacPasteboardItem : public PasteboardItem {
 public:
  explicit MacPasteboardItem(NSPasteboardItem* item) : item_(item) {}

  std::vector<std::string> types() override {
    std::vector<std::string> names;
    for (NSPasteboardType type in item_.types) names.push_back(utf8((__bridge CFStringRef)type));
    return names;
  }

  std::optional<Bytes> data(const std::string& type) override {
    // A picture may be large: it goes as soon as it is copied, not with the event.
    @autoreleasepool {
      NSData* data = [item_ dataForType:nsType(type)];
      if (data == nil) return std::nullopt;
      return bytesOf(data);
    }
  }

 private:
  NSPasteboardItem* item_;
};

}  // namespace

std::optional<std::vector<std::unique_ptr<PasteboardItem>>> MacPasteboard::items() {
  NSArray<NSPasteboardItem*>* reported = general().pasteboardItems;
  if (reported == nil) return std::nullopt;
  std::vector<std::unique_ptr<PasteboardItem>> items;
  for (NSPasteboardItem* item in reported) items.push_back(std::make_unique<MacPasteboardItem>(item));
  return items;
}

bool MacPasteboard::mayRefuseReading() {
  if (![general() respondsToSelector:@selector(accessBehavior)]) return false;
  return [(id<LXWPasteboardAccess>)general() accessBehavior] != kAlwaysAllow;
}

std::int64_t MacPasteboard::changeCount() { return general().changeCount; }

void MacPasteboard::clearContents() { [general() clearContents]; }

std::optional<std::string> MacPasteboard::string() {
  NSString* text = [general() stringForType:NSPasteboardTypeString];
  if (text == nil) return std::nullopt;
  return utf8((__bridge CFStringRef)text);
}

void MacPasteboard::setString(std::string_view text) {
  const CFRef<CFStringRef> string = cfText(text);
  if (string) [general() setString:(__bridge NSString*)string.get() forType:NSPasteboardTypeString];
}

void MacPasteboard::writeItems(const std::vector<PasteboardItemData>& items) {
  @autoreleasepool {
    // A pasteboard item belongs to the one pasteboard that it was written to: each write needs new ones.
    NSMutableArray<NSPasteboardItem*>* written = [NSMutableArray array];
    for (const PasteboardItemData& entry : items) {
      NSPasteboardItem* item = [[NSPasteboardItem alloc] init];
      for (const auto& [type, bytes] : entry) {
        [item setData:[NSData dataWithBytes:bytes.data() length:bytes.size()] forType:nsType(type)];
      }
      [written addObject:item];
    }
    [general() writeObjects:written];
  }
}

}  // namespace lexwend::platform::mac
