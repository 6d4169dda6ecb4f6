// SPDX-License-Identifier: MIT
#include "platform/mac/status_item.h"

#import <AppKit/AppKit.h>
#import <Carbon/Carbon.h>

#include <limits>
#include <utility>
#include <vector>

#include "platform/mac/callback.h"
#include "platform/mac/cf_text.h"
#include "platform/mac/own_menu.h"

/// What a chosen menu item sends its action to. The item holds it weakly.
@interface LXWMenuItemTarget : NSObject {
 @public
  std::shared_ptr<std::function<void()>> action;
}
- (void)choose:(id)sender;
@end

@implementation LXWMenuItemTarget

- (void)choose:(id)sender {
  // The action may replace this very target.
  const auto running = action;
  lexwend::platform::mac::guarded(*running);
}

@end

namespace lexwend::platform::mac {
namespace {

/// When the agent's menu was last opened and closed, in seconds since the system started. An open one closes
/// at the end of time.
struct MenuTimes {
  double opened, closed;
};
MenuTimes& menuTimes() {
  static MenuTimes times{};
  return times;
}

}  // namespace

bool wasOwnMenuOpenAt(double secondsSinceStartup) {
  return menuTimes().opened <= secondsSinceStartup && secondsSinceStartup < menuTimes().closed;
}

}  // namespace lexwend::platform::mac

/// Notes when the menu is open. The menu holds it weakly.
@interface LXWMenuWatcher : NSObject <NSMenuDelegate>
@end

@implementation LXWMenuWatcher

- (void)menuWillOpen:(NSMenu*)menu {
  lexwend::platform::mac::menuTimes() = {.opened = GetCurrentEventTime(),
                                         .closed = std::numeric_limits<double>::infinity()};
}

- (void)menuDidClose:(NSMenu*)menu {
  lexwend::platform::mac::menuTimes().closed = GetCurrentEventTime();
}

@end

namespace lexwend::platform::mac {
namespace {

class MacSymbolImage : public SymbolImage {
 public:
  explicit MacSymbolImage(NSImage* image) : image_(image) {}
  void setTemplate(bool isTemplate) override { [image_ setTemplate:isTemplate]; }
  NSImage* get() const { return image_; }

 private:
  NSImage* image_;
};

class MacMenuItem : public MenuItem {
 public:
  void setTitle(std::string_view title) override {
    item_.title = (__bridge NSString*)cfTextOrEmpty(title).get();
  }
  void setAction(std::function<void()> action) override {
    target_ = [[LXWMenuItemTarget alloc] init];
    target_->action = shared(std::move(action));
    item_.target = target_;
    item_.action = @selector(choose:);
  }
  void setTerminatesApplication() override {
    target_ = nil;
    item_.target = NSApp;
    item_.action = @selector(terminate:);
  }
  void setKeyEquivalent(std::string_view key) override {
    item_.keyEquivalent = (__bridge NSString*)cfTextOrEmpty(key).get();
  }
  void setChecked(bool checked) override {
    item_.state = checked ? NSControlStateValueOn : NSControlStateValueOff;
  }
  void setHidden(bool hidden) override { item_.hidden = hidden; }
  void setEnabled(bool enabled) override { item_.enabled = enabled; }
  NSMenuItem* get() const { return item_; }

 private:
  NSMenuItem* item_ = [[NSMenuItem alloc] initWithTitle:@"" action:nil keyEquivalent:@""];
  LXWMenuItemTarget* target_ = nil;
};

class MacMenu : public Menu {
 public:
  MacMenu() {
    // Its entries are Hebrew, whatever the language of the system is.
    menu_.userInterfaceLayoutDirection = NSUserInterfaceLayoutDirectionRightToLeft;
    menu_.delegate = watcher_;
  }
  /// One that goes while it is open is not told that it closes.
  ~MacMenu() override { menuTimes() = {}; }
  MacMenu(const MacMenu&) = delete;
  MacMenu& operator=(const MacMenu&) = delete;
  void setAutoenablesItems(bool autoenables) override { menu_.autoenablesItems = autoenables; }
  void addItem(const MenuItemRef& item) override {
    [menu_ addItem:static_cast<const MacMenuItem&>(*item).get()];
    items_.push_back(item);
  }
  void addSeparator() override { [menu_ addItem:[NSMenuItem separatorItem]]; }
  NSMenu* get() const { return menu_; }

 private:
  NSMenu* menu_ = [[NSMenu alloc] initWithTitle:@""];
  LXWMenuWatcher* watcher_ = [[LXWMenuWatcher alloc] init];
  std::vector<MenuItemRef> items_;  ///< they own the targets that the system's items hold weakly
};

class MacStatusItem : public StatusItem {
 public:
  explicit MacStatusItem(NSStatusItem* item) : item_(item) {}
  ~MacStatusItem() override { [[NSStatusBar systemStatusBar] removeStatusItem:item_]; }
  MacStatusItem(const MacStatusItem&) = delete;
  MacStatusItem& operator=(const MacStatusItem&) = delete;

  void setImage(const SymbolImageRef& image) override {
    item_.button.image = image == nullptr ? nil : static_cast<const MacSymbolImage&>(*image).get();
  }
  void setMenu(const MenuRef& menu) override {
    item_.menu = menu == nullptr ? nil : static_cast<const MacMenu&>(*menu).get();
    menu_ = menu;
  }

 private:
  NSStatusItem* item_;
  MenuRef menu_;
};

}  // namespace

StatusItemRef MacStatusBar::statusItem(double length) {
  return std::make_shared<MacStatusItem>([[NSStatusBar systemStatusBar] statusItemWithLength:length]);
}

MenuRef MacStatusBar::makeMenu() { return std::make_shared<MacMenu>(); }

MenuItemRef MacStatusBar::makeMenuItem() { return std::make_shared<MacMenuItem>(); }

SymbolImageRef MacStatusBar::symbolImage(std::string_view name, std::string_view accessibilityDescription) {
  NSString* description = (__bridge NSString*)cfTextOrEmpty(accessibilityDescription).get();
  NSImage* image = [NSImage imageWithSystemSymbolName:(__bridge NSString*)cfTextOrEmpty(name).get()
                             accessibilityDescription:description];
  if (image == nil) return nullptr;
  return std::make_shared<MacSymbolImage>(image);
}

}  // namespace lexwend::platform::mac
