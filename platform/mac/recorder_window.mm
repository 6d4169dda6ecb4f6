// SPDX-License-Identifier: MIT
#include "platform/mac/recorder_window.h"

#import <AppKit/AppKit.h>
#import <QuartzCore/QuartzCore.h>

#include <memory>
#include <utility>

#include "platform/mac/callback.h"
#include "platform/mac/cf_text.h"
#include "platform/mac/own_windows.h"

namespace lexwend::platform::mac {
namespace {

NSString* nsText(std::string_view text) { return (__bridge NSString*)cfTextOrEmpty(text).get(); }

NSRect nsRect(const Frame& frame) { return NSMakeRect(frame.x, frame.y, frame.width, frame.height); }

NSColor* nsColor(ColorRole role) {
  switch (role) {
    case ColorRole::label:
      return [NSColor labelColor];
    case ColorRole::secondaryLabel:
      return [NSColor secondaryLabelColor];
    case ColorRole::quaternaryLabel:
      return [NSColor quaternaryLabelColor];
    case ColorRole::systemRed:
      return [NSColor systemRedColor];
  }
  return nil;
}

NSTextAlignment nsAlignment(TextAlignment alignment) {
  switch (alignment) {
    case TextAlignment::natural:
      break;
    case TextAlignment::right:
      return NSTextAlignmentRight;
    case TextAlignment::center:
      return NSTextAlignmentCenter;
  }
  return NSTextAlignmentNatural;
}

NSFontWeight nsWeight(FontWeight weight) {
  switch (weight) {
    case FontWeight::regular:
      break;
    case FontWeight::medium:
      return NSFontWeightMedium;
    case FontWeight::semibold:
      return NSFontWeightSemibold;
  }
  return NSFontWeightRegular;
}

NSBezelStyle nsBezel(BezelStyle bezel) {
  switch (bezel) {
    case BezelStyle::rounded:
      break;
  }
  return NSBezelStyleRounded;
}

NSWindowStyleMask styleMask(const RecorderWindowLook& look) {
  NSWindowStyleMask mask = NSWindowStyleMaskBorderless;
  if (look.titled) mask |= NSWindowStyleMaskTitled;
  if (look.closable) mask |= NSWindowStyleMaskClosable;
  if (look.resizable) mask |= NSWindowStyleMaskResizable;
  if (look.miniaturizable) mask |= NSWindowStyleMaskMiniaturizable;
  return mask;
}

NSWindow* makeWindow(const RecorderWindowLook& look) {
  NSWindow* window = [[NSWindow alloc] initWithContentRect:nsRect(look.contentRect)
                                                 styleMask:styleMask(look)
                                                   backing:NSBackingStoreBuffered
                                                     defer:look.deferred];
  window.title = nsText(look.title);
  window.level = look.level;
  window.releasedWhenClosed = look.releasedWhenClosed;
  if (look.centered) [window center];
  return window;
}

}  // namespace
}  // namespace lexwend::platform::mac

/// A label on a layer. A layer's colour is that of the moment when it was set, so it is set anew when the
/// appearance changes between light and dark.
@interface LXWLayerLabel : NSTextField
- (void)setLayerColor:(NSColor*)color cornerRadius:(CGFloat)cornerRadius;
@end

@implementation LXWLayerLabel {
  NSColor* layerColor_;
}

- (void)setLayerColor:(NSColor*)color cornerRadius:(CGFloat)cornerRadius {
  layerColor_ = color;
  self.wantsLayer = YES;
  self.layer.cornerRadius = cornerRadius;
  [self resolveLayerColor];
}

- (void)resolveLayerColor {
  [self.effectiveAppearance performAsCurrentDrawingAppearance:^{
    self.layer.backgroundColor = self->layerColor_.CGColor;
  }];
}

- (void)viewDidChangeEffectiveAppearance {
  [super viewDidChangeEffectiveAppearance];
  [self resolveLayerColor];
}

@end

namespace lexwend::platform::mac {
namespace {

NSTextField* makeLabel(const LabelLook& look) {
  Class kind = look.background ? [LXWLayerLabel class] : [NSTextField class];
  NSTextField* label = look.wraps ? [kind wrappingLabelWithString:nsText(look.text)]
                                  : [kind labelWithString:nsText(look.text)];
  label.frame = nsRect(look.frame);
  label.alignment = nsAlignment(look.alignment);
  label.font = [NSFont systemFontOfSize:look.fontSize weight:nsWeight(look.fontWeight)];
  label.textColor = nsColor(look.color);
  if (look.background) {
    [(LXWLayerLabel*)label setLayerColor:nsColor(*look.background) cornerRadius:look.cornerRadius];
  }
  return label;
}

NSButton* makeButton(const ButtonLook& look, id target, SEL action) {
  NSButton* button = [NSButton buttonWithTitle:nsText(look.title) target:target action:action];
  button.frame = nsRect(look.frame);
  button.bezelStyle = nsBezel(look.bezel);
  button.enabled = look.enabled;
  return button;
}

}  // namespace
}  // namespace lexwend::platform::mac

/// Controls the recorder's window, is its delegate and receives its buttons' actions.
@interface LXWRecorderWindowController : NSWindowController <NSWindowDelegate>
@property(nonatomic, readonly) NSTextField* combination;
@property(nonatomic, readonly) NSTextField* message;
@property(nonatomic, readonly) NSButton* saveButton;
- (instancetype)initWithLook:(const lexwend::platform::RecorderWindowLook&)look
                      events:(lexwend::platform::RecorderWindowEvents)events;
- (void)showAndMakeKey;
- (void)closeWindow;
- (void)abandonWindow;
- (void)save:(id)sender;
- (void)cancel:(id)sender;
@end

@implementation LXWRecorderWindowController {
  lexwend::platform::RecorderWindowEvents events_;
  std::unique_ptr<lexwend::platform::mac::ShownWindow> shown_;
  BOOL closed_;
}

- (instancetype)initWithLook:(const lexwend::platform::RecorderWindowLook&)look
                      events:(lexwend::platform::RecorderWindowEvents)events {
  using namespace lexwend::platform::mac;
  self = [super initWithWindow:makeWindow(look)];
  self.window.delegate = self;
  events_ = std::move(events);

  NSView* content = self.window.contentView;
  [content addSubview:makeLabel(look.prompt)];
  _combination = makeLabel(look.combination);
  [content addSubview:_combination];
  _message = makeLabel(look.message);
  [content addSubview:_message];
  _saveButton = makeButton(look.save, self, @selector(save:));
  [content addSubview:_saveButton];
  [content addSubview:makeButton(look.cancel, self, @selector(cancel:))];
  return self;
}

- (void)showAndMakeKey {
  if (shown_ == nullptr) shown_ = std::make_unique<lexwend::platform::mac::ShownWindow>();
  [self showWindow:nil];
  [self.window makeKeyAndOrderFront:nil];
  // The system may refuse to bring the agent to the front (macOS 14 and later). The window is seen all the
  // same, and a click into it makes the agent active.
  [self.window orderFrontRegardless];
}

/// Closing tells the delegate, which may close again: that second time there is nothing left to close.
- (void)closeWindow {
  if (!closed_) [self.window close];
}

/// The owner is gone and must not be called again; what is still on the screen goes too.
- (void)abandonWindow {
  self.window.delegate = nil;
  [self closeWindow];
}

/// An event may end this controller, its window and the button that sent it, but the system works with them
/// until it is done with the event.
- (void)outliveThisEvent {
  CFAutorelease((__bridge_retained CFTypeRef)self);
}

- (void)save:(id)sender {
  [self outliveThisEvent];
  lexwend::platform::mac::guarded(events_.save);
}

- (void)cancel:(id)sender {
  [self outliveThisEvent];
  lexwend::platform::mac::guarded(events_.cancel);
}

- (void)windowWillClose:(NSNotification*)notification {
  closed_ = YES;
  shown_ = nullptr;
  [self outliveThisEvent];
  lexwend::platform::mac::guarded(events_.willClose);
}

@end

namespace lexwend::platform::mac {
namespace {

class MacRecorderWindow : public RecorderWindow {
 public:
  MacRecorderWindow(const RecorderWindowLook& look, RecorderWindowEvents events)
      : controller_([[LXWRecorderWindowController alloc] initWithLook:look events:std::move(events)]) {}
  ~MacRecorderWindow() override { [controller_ abandonWindow]; }
  MacRecorderWindow(const MacRecorderWindow&) = delete;
  MacRecorderWindow& operator=(const MacRecorderWindow&) = delete;

  void setCombination(std::string_view text) override { controller_.combination.stringValue = nsText(text); }
  void setMessage(std::string_view text, ColorRole color) override {
    controller_.message.stringValue = nsText(text);
    controller_.message.textColor = nsColor(color);
  }
  void setSaveEnabled(bool enabled) override { controller_.saveButton.enabled = enabled; }
  void showAndMakeKey() override { [controller_ showAndMakeKey]; }
  void close() override {
    // The last thing that happens may be this object's own destruction.
    LXWRecorderWindowController* controller = controller_;
    [controller closeWindow];
  }

 private:
  LXWRecorderWindowController* controller_;
};

}  // namespace

std::unique_ptr<RecorderWindow> MacRecorderWindows::create(const RecorderWindowLook& look,
                                                           RecorderWindowEvents events) {
  return std::make_unique<MacRecorderWindow>(look, std::move(events));
}

}  // namespace lexwend::platform::mac
