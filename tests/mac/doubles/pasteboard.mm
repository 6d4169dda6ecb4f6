// SPDX-License-Identifier: MIT
// The general pasteboard and its items.
#include <algorithm>

#include "tests/mac/doubles/support.h"

using namespace lexwend::doubles;

NSPasteboardType const NSPasteboardTypeString = @"public.utf8-plain-text";
NSPasteboardType const NSPasteboardTypeRTF = @"public.rtf";
NSPasteboardType const NSPasteboardTypeHTML = @"public.html";
NSPasteboardType const NSPasteboardTypePNG = @"public.png";

namespace {

struct State {
  std::vector<pasteboard::Item> items;
  std::int64_t changeCount = 1;
  bool isOwnedHere = false;  // cleared by this process and by nobody since
  bool areItemsAbsent = false;
  std::optional<long> accessBehavior;
  bool isReadingRefused = false;
  std::optional<std::pair<std::chrono::microseconds, bool>> question;  // how long the answer takes; its yes
  int promisesKept = 0;
};
State& state() {
  static auto* the = new State;
  return *the;
}
const ResetHook kReset([] { state() = State{}; });

pasteboard::Representation* representation(pasteboard::Item& item, const std::string& type) {
  for (auto& each : item) {
    if (each.type == type) return &each;
  }
  return nullptr;
}

NSData* dataIn(pasteboard::Item& item, const std::string& type) {
  const auto* found = representation(item, type);
  if (const auto asked = state().isOwnedHere ? std::nullopt : std::exchange(state().question, std::nullopt)) {
    time::block(asked->first);
    state().isReadingRefused = !asked->second;
  }
  if (state().isReadingRefused && !state().isOwnedHere) return nil;
  if (found == nullptr || !found->data) return nil;
  if (found->isPromised) ++state().promisesKept;
  return dataOf(*found->data);
}

void setDataIn(pasteboard::Item& item, const std::string& type, NSData* data) {
  if (auto* found = representation(item, type)) {
    found->data = bytesOfData(data);
  } else {
    item.push_back({type, bytesOfData(data), false});
  }
}

NSArray* typesIn(const pasteboard::Item& item) {
  NSMutableArray* types = [NSMutableArray array];
  for (const auto& each : item) [types addObject:string(each.type)];
  return types;
}

}  // namespace

@interface NSPasteboardItem () {
 @public
  pasteboard::Item own_;
  // Where an item that was read belongs: its place, and the contents that it was a part of.
  std::optional<std::size_t> place_;
  std::int64_t ofChange_;
  BOOL wasWritten_;
}
@end

@implementation NSPasteboardItem
/// The representations of the item; nothing when it was read from contents that have been replaced since.
static pasteboard::Item* contentsOf(NSPasteboardItem* item) {
  if (!item->place_) return &item->own_;
  if (item->ofChange_ != state().changeCount || *item->place_ >= state().items.size()) return nullptr;
  return &state().items[*item->place_];
}
- (NSArray*)types {
  pasteboard::Item* item = contentsOf(self);
  return item == nullptr ? [NSArray array] : typesIn(*item);
}
- (NSData*)dataForType:(NSPasteboardType)type {
  requireNonnull((void*)type);
  record(utf8(type));
  pasteboard::Item* item = contentsOf(self);
  return item == nullptr ? nil : dataIn(*item, utf8(type));
}
- (BOOL)setData:(NSData*)data forType:(NSPasteboardType)type {
  requireKind(data, [NSData class]);
  requireKind(type, [NSString class]);
  record(std::to_string(data.length) + " bytes, " + utf8(type));
  if (place_ || wasWritten_) die("-[NSPasteboardItem setData:forType:] on an item that a pasteboard holds");
  setDataIn(own_, utf8(type), data);
  return YES;
}
@end

@implementation NSPasteboard
+ (NSPasteboard*)generalPasteboard {
  requireMainThread();
  static NSPasteboard* the = keptForever([[NSPasteboard alloc] init]);
  return the;
}
- (BOOL)respondsToSelector:(SEL)selector {
  if (selector == NSSelectorFromString(@"accessBehavior")) return state().accessBehavior.has_value();
  return [super respondsToSelector:selector];
}
- (NSInteger)accessBehavior {
  if (!state().accessBehavior) die("-[NSPasteboard accessBehavior] before macOS 15.4");
  return *state().accessBehavior;
}
- (NSInteger)changeCount {
  record();
  return state().changeCount;
}
- (NSArray*)pasteboardItems {
  record();
  if (state().areItemsAbsent) return nil;
  NSMutableArray* items = [NSMutableArray array];
  for (std::size_t i = 0; i < state().items.size(); ++i) {
    NSPasteboardItem* item = [[NSPasteboardItem alloc] init];
    item->place_ = i;
    item->ofChange_ = state().changeCount;
    [items addObject:item];
    [item release];
  }
  return items;
}
- (NSInteger)clearContents {
  called();
  state().items.clear();
  state().isOwnedHere = true;
  return ++state().changeCount;
}
- (BOOL)writeObjects:(NSArray*)objects {
  requireMainThread();
  requireKind(objects, [NSArray class]);
  record(std::to_string(objects.count));
  if (objects.count == 0) die("-[NSPasteboard writeObjects:] with nothing to write");
  for (NSPasteboardItem* item in objects) {
    requireKind(item, [NSPasteboardItem class]);
    if (item->place_ || item->wasWritten_) {
      die("-[NSPasteboard writeObjects:]: an item that already belongs to a pasteboard");
    }
    item->wasWritten_ = YES;
    if (!state().isOwnedHere) continue;
    state().items.push_back(item->own_);
  }
  return state().isOwnedHere;
}
- (NSString*)stringForType:(NSPasteboardType)type {
  requireNonnull((void*)type);
  record(utf8(type));
  for (auto& item : state().items) {
    if (NSData* data = dataIn(item, utf8(type))) {
      return [[[NSString alloc] initWithData:data encoding:NSUTF8StringEncoding] autorelease];
    }
  }
  return nil;
}
- (BOOL)setString:(NSString*)text forType:(NSPasteboardType)type {
  requireMainThread();
  requireKind(text, [NSString class]);
  requireKind(type, [NSString class]);
  record(utf8(type));
  return [self setData:[text dataUsingEncoding:NSUTF8StringEncoding allowLossyConversion:YES] forType:type];
}
- (BOOL)setData:(NSData*)data forType:(NSPasteboardType)type {
  if (!state().isOwnedHere) return NO;
  if (state().items.empty()) state().items.emplace_back();
  setDataIn(state().items.front(), utf8(type), data);
  return YES;
}
@end

namespace lexwend::doubles::pasteboard {

void otherAppCopies(const std::vector<Item>& items) {
  state().items = items;
  state().isOwnedHere = false;
  ++state().changeCount;
}
void otherAppCopiesText(const std::string& text) {
  otherAppCopies({{{"public.utf8-plain-text", bytesOf(text), false}}});
}
void itemsAreAbsent(bool absent) { state().areItemsAbsent = absent; }
std::vector<Item> contents() { return state().items; }
std::int64_t changeCount() { return state().changeCount; }
void setAccessBehavior(long behavior) { state().accessBehavior = behavior; }
void refuseReading(bool refused) { state().isReadingRefused = refused; }
void askBeforeReading(std::chrono::microseconds answerAfter, bool isAllowed) {
  state().question = {answerAfter, isAllowed};
}
int promisesKept() { return state().promisesKept; }

}  // namespace lexwend::doubles::pasteboard
