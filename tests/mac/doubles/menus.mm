// SPDX-License-Identifier: MIT
// Menus and the status bar.
#include <algorithm>

#include "tests/mac/doubles/user_interface.h"
#include "tests/mac/runtime/runtime.h"

using namespace lexwend;
using namespace lexwend::doubles;

@interface NSMenuItem () {
 @public
  __weak id target_;
  BOOL isDisabled_;
  BOOL isHidden_;
  BOOL isSeparator_;
}
@end
@implementation NSMenuItem
@synthesize title, action, keyEquivalent, state, tag, image, representedObject, menu;
+ (NSMenuItem*)separatorItem {
  NSMenuItem* made = [[[self alloc] initWithTitle:@"" action:nullptr keyEquivalent:@""] autorelease];
  made->isSeparator_ = YES;
  return made;
}
- (instancetype)initWithTitle:(NSString*)itemTitle action:(SEL)itemAction keyEquivalent:(NSString*)key {
  requireApplication();
  requireKind(itemTitle, [NSString class]);
  requireKind(key, [NSString class]);
  self = [super init];
  title = [itemTitle copy];
  action = itemAction;
  keyEquivalent = [key copy];
  return self;
}
- (void)dealloc {
  [title release];
  [keyEquivalent release];
  [image release];
  [representedObject release];
  [super dealloc];
}
- (void)setTitle:(NSString*)text {
  requireMainThread();
  requireKind(text, [NSString class]);
  record(utf8(text));
  NSString* copy = [text copy];
  [title release];
  title = copy;
}
- (void)setState:(NSControlStateValue)value {
  requireMainThread();
  state = value;
}
- (void)setTarget:(id)target {
  record(target == nil ? "nil" : target == NSApp ? "the application" : "an object");
  target_ = target;
}
- (BOOL)isEnabled {
  // With automatic enabling, the menu decides by whether somebody answers to the action.
  if (menu == nil || !menu.autoenablesItems) return !isDisabled_;
  const id target = self.target;
  return action != nullptr &&
         (target != nil ? [target respondsToSelector:action] : [NSApp respondsToSelector:action]);
}
- (void)setEnabled:(BOOL)enabled {
  requireMainThread();
  isDisabled_ = !enabled;
}
- (BOOL)isHidden {
  return isHidden_;
}
- (void)setHidden:(BOOL)hidden {
  requireMainThread();
  isHidden_ = hidden;
}
- (BOOL)isSeparatorItem {
  return isSeparator_;
}
@end

@interface NSMenu () {
  NSMutableArray* items_;
  BOOL keepsOwnEnabling_;
}
@end
@implementation NSMenu
@synthesize title, userInterfaceLayoutDirection, delegate;
- (instancetype)initWithTitle:(NSString*)menuTitle {
  requireApplication();
  self = [super init];
  title = [menuTitle copy];
  items_ = [[NSMutableArray alloc] init];
  return self;
}
- (void)dealloc {
  for (NSMenuItem* item in items_) item.menu = nil;
  [items_ release];
  [title release];
  [super dealloc];
}
- (void)addItem:(NSMenuItem*)item {
  requireMainThread();
  requireKind(item, [NSMenuItem class]);
  if (item.menu != nil) die("-[NSMenu addItem:]: the item is already in a menu");
  record(item.isSeparatorItem ? "separator" : utf8(item.title));
  [items_ addObject:item];
  item.menu = self;
}
- (NSMenuItem*)itemAtIndex:(NSInteger)index {
  return [items_ objectAtIndex:(NSUInteger)index];
}
- (NSInteger)numberOfItems {
  return (NSInteger)items_.count;
}
- (NSArray*)itemArray {
  return [[items_ copy] autorelease];
}
- (BOOL)autoenablesItems {
  return !keepsOwnEnabling_;
}
- (void)setAutoenablesItems:(BOOL)autoenables {
  record(truth(autoenables));
  keepsOwnEnabling_ = !autoenables;
}
- (void)performActionForItemAtIndex:(NSInteger)index {
  NSMenuItem* item = [self itemAtIndex:index];
  // An item without a target looks for one from the application on. Nothing keeps the target meanwhile.
  const id target = unowned(&item->target_);
  sendAction(item.action, target != nil ? target : NSApp, item);
}
@end

namespace {
struct State {
  // Not retained: an item that nobody keeps leaves the bar.
  std::vector<NSStatusItem*> items;
  bool isNextWithoutButton = false;
  bool isMenuOpen = false;
};
State& state() {
  static auto* the = new State;
  return *the;
}
const ResetHook kReset([] { state().isNextWithoutButton = state().isMenuOpen = false; });
const ProcessEndHook kProcessEnd([] { state().isMenuOpen = false; });
}  // namespace

@implementation NSStatusBarButton
@end

@interface NSStatusItem () {
 @public
  NSStatusBarButton* button_;
}
@end
@implementation NSStatusItem
@synthesize length, menu;
- (void)dealloc {
  std::erase(state().items, self);
  [button_ release];
  [menu release];
  [super dealloc];
}
- (NSStatusBarButton*)button {
  requireMainThread();
  return button_;
}
- (void)setMenu:(NSMenu*)value {
  requireMainThread();
  if (value != nil) requireKind(value, [NSMenu class]);
  record();
  [value retain];
  [menu release];
  menu = value;
}
@end

@implementation NSStatusBar
+ (NSStatusBar*)systemStatusBar {
  requireApplication();
  record();
  static NSStatusBar* the = keptForever([[NSStatusBar alloc] init]);
  return the;
}
- (NSStatusItem*)statusItemWithLength:(CGFloat)length {
  record(decimal(length));
  NSStatusItem* made = [[NSStatusItem alloc] init];
  made.length = length;
  if (!std::exchange(state().isNextWithoutButton, false)) made->button_ = [[NSStatusBarButton alloc] init];
  state().items.push_back(made);
  return [made autorelease];
}
- (void)removeStatusItem:(NSStatusItem*)item {
  record();
  if (std::erase(state().items, item) == 0) die("-[NSStatusBar removeStatusItem:]: no such item");
  state().isMenuOpen = false;  // its menu goes with it, without a word to the delegate
}
@end

namespace lexwend::doubles::status_bar {

void nextItemHasNoButton() { state().isNextWithoutButton = true; }

std::vector<Item> items() {
  std::vector<Item> seen;
  @autoreleasepool {
    for (NSStatusItem* statusItem : state().items) {
      Item item;
      item.length = statusItem.length;
      item.hasButton = statusItem->button_ != nil;
      if (NSImage* image = statusItem->button_.image) {
        item.image = Image{image->symbol_, utf8(image->description_), (bool)image->isTemplate_};
      }
      if (NSMenu* menu = statusItem.menu) {
        item.menuAutoenables = menu.autoenablesItems;
        item.menuReadsRightToLeft =
            menu.userInterfaceLayoutDirection == NSUserInterfaceLayoutDirectionRightToLeft;
        item.menu.emplace();
        for (NSMenuItem* each in menu.itemArray) {
          item.menu->push_back({utf8(each.title), utf8(each.keyEquivalent),
                                each.action == nullptr ? "" : utf8(NSStringFromSelector(each.action)),
                                (bool)each.isSeparatorItem, (bool)each.isEnabled, (bool)each.isHidden,
                                each.state});
        }
      }
      seen.push_back(std::move(item));
    }
  }
  return seen;
}

void openMenu() {
  if (state().items.empty() || state().items.front().menu == nil)
    die("a test opens a menu that is not there");
  state().isMenuOpen = true;
  @autoreleasepool {
    NSMenu* menu = state().items.front().menu;
    if ([menu.delegate respondsToSelector:@selector(menuWillOpen:)]) [menu.delegate menuWillOpen:menu];
  }
}
void closeMenu() {
  if (!isMenuOpen()) die("a test closes a menu that is not open");
  @autoreleasepool {
    NSMenu* menu = state().items.front().menu;
    if ([menu.delegate respondsToSelector:@selector(menuDidClose:)]) [menu.delegate menuDidClose:menu];
  }
  state().isMenuOpen = false;
  wakeRunLoop();  // it goes on in its default mode
  deliverQueuedPresses();
}

void choose(const std::string& title) {
  openMenu();
  closeMenu();
  @autoreleasepool {
    NSMenu* menu = state().items.front().menu;
    for (NSInteger i = 0; i < menu.numberOfItems; ++i) {
      NSMenuItem* item = [menu itemAtIndex:i];
      if (utf8(item.title) != title) continue;
      if (item.isHidden || !item.isEnabled) {
        die("a test chooses a menu item that is hidden or disabled: " + title);
      }
      [menu performActionForItemAtIndex:i];
      return;
    }
  }
  die("a test chooses a menu item that is not there: " + title);
}

}  // namespace lexwend::doubles::status_bar

bool lexwend::doubles::isMenuOpen() { return state().isMenuOpen; }
