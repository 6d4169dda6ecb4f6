// SPDX-License-Identifier: MIT
#include "platform/pasteboard.h"

#import <AppKit/AppKit.h>

#include "platform/mac/cf_text.h"
#include "platform/mac/mac_services.h"

/// What NSPasteboard has on macOS 15.4 and later; declared here, so that an older SDK does as well.
@protocol LXWPasteboardAccess
@property(readonly) NSInteger accessBehavior;
@end

namespace lexwend::platform::mac {
namespace {

/// NSPasteboardAccessBehaviorAlwaysAllow
constexpr NSInteger kAlwaysAllow = 2;

NSPasteboardType nsType(const std::string& type) { return (__bridge NSString*)cfTextOrEmpty(type).get(); }

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

class MacPasteboard : public Pasteboard {
 public:
  std::optional<std::vector<std::unique_ptr<PasteboardItem>>> items() override {
    NSArray<NSPasteboardItem*>* reported = pasteboard_.pasteboardItems;
    if (reported == nil) return std::nullopt;
    std::vector<std::unique_ptr<PasteboardItem>> items;
    for (NSPasteboardItem* item in reported) items.push_back(std::make_unique<MacPasteboardItem>(item));
    return items;
  }

  bool mayRefuseReading() override {
    if (![pasteboard_ respondsToSelector:@selector(accessBehavior)]) return false;
    return [(id<LXWPasteboardAccess>)pasteboard_ accessBehavior] != kAlwaysAllow;
  }

  std::int64_t changeCount() override { return pasteboard_.changeCount; }
  void clearContents() override { [pasteboard_ clearContents]; }

  std::optional<std::string> string() override {
    NSString* text = [pasteboard_ stringForType:NSPasteboardTypeString];
    if (text == nil) return std::nullopt;
    return utf8((__bridge CFStringRef)text);
  }

  void setString(std::string_view text) override {
    const CFRef<CFStringRef> string = cfText(text);
    if (string) [pasteboard_ setString:(__bridge NSString*)string.get() forType:NSPasteboardTypeString];
  }

  void writeItems(const std::vector<PasteboardItemData>& items) override {
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
      [pasteboard_ writeObjects:written];
    }
  }

 private:
  NSPasteboard* pasteboard_ = [NSPasteboard generalPasteboard];
};

}  // namespace

std::shared_ptr<Pasteboard> makeGeneralPasteboard() { return std::make_shared<MacPasteboard>(); }

}  // namespace lexwend::platform::mac
