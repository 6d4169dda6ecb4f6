// SPDX-License-Identifier: MIT
// Fonts, colours, images, views, labels and buttons.
#include "tests/mac/doubles/system_objects.h"
#include "tests/mac/doubles/user_interface.h"
#include "tests/mac/runtime/runtime.h"

using namespace lexwend;
using namespace lexwend::doubles;

// The weights are fractions between -1 and 1 on the real system too.
const NSFontWeight NSFontWeightRegular = 0.0;
const NSFontWeight NSFontWeightMedium = 0.23;
const NSFontWeight NSFontWeightSemibold = 0.3;
const NSFontWeight NSFontWeightBold = 0.4;

@interface NSFont () {
 @public
  CGFloat size_;
  NSFontWeight weight_;
}
@end
@implementation NSFont
+ (NSFont*)systemFontOfSize:(CGFloat)size {
  return [self systemFontOfSize:size weight:NSFontWeightRegular];
}
+ (NSFont*)systemFontOfSize:(CGFloat)size weight:(NSFontWeight)weight {
  NSFont* made = [[self alloc] init];
  made->size_ = size;
  made->weight_ = weight;
  return [made autorelease];
}
- (CGFloat)pointSize {
  return size_;
}
- (id)copyWithZone:(struct _NSZone*)zone {
  return [self retain];
}
@end

namespace {
struct AppearanceState {
  bool isDark = false;
  // What a colour is resolved for; outside of drawing the system gives no promise, the doubles the wrong one.
  int drawing = 0;
};
AppearanceState& appearanceState() {
  static auto* the = new AppearanceState;
  return *the;
}
const ResetHook kResetAppearance([] { appearanceState() = AppearanceState{}; });
}  // namespace
namespace lexwend::doubles::app {
void setDark(bool dark) {
  appearanceState().isDark = dark;
  appearanceChanged();
}
}  // namespace lexwend::doubles::app

@implementation NSAppearance
- (void)performAsCurrentDrawingAppearance:(__attribute__((noescape))void (^)(void))block {
  ++appearanceState().drawing;
  block();
  --appearanceState().drawing;
}
@end

@implementation LXWColorValue
@end
@interface NSColor () {
 @public
  std::string name_;
}
@end
@implementation NSColor
+ (NSColor*)makeNamed:(const char*)name {
  NSColor* made = [[self alloc] init];
  made->name_ = name;
  return [made autorelease];
}
+ (NSColor*)labelColor {
  return [self makeNamed:"labelColor"];
}
+ (NSColor*)secondaryLabelColor {
  return [self makeNamed:"secondaryLabelColor"];
}
+ (NSColor*)quaternaryLabelColor {
  return [self makeNamed:"quaternaryLabelColor"];
}
+ (NSColor*)systemRedColor {
  return [self makeNamed:"systemRedColor"];
}
- (CGColorRef)CGColor {
  LXWColorValue* value = [[[LXWColorValue alloc] init] autorelease];
  const bool isDark = appearanceState().drawing > 0 && appearanceState().isDark;
  value->name = name_ + (isDark ? " (dark)" : "");
  return (CGColorRef)value;
}
- (id)copyWithZone:(struct _NSZone*)zone {
  return [self retain];
}
@end

namespace {
struct ImageState {
  std::vector<std::string> unknownSymbols;
};
ImageState& imageState() {
  static auto* the = new ImageState;
  return *the;
}
const ResetHook kResetImages([] { imageState() = ImageState{}; });
}  // namespace
namespace lexwend::doubles::status_bar {
void symbolIsUnknown(const std::string& name) { imageState().unknownSymbols.push_back(name); }
}  // namespace lexwend::doubles::status_bar

@implementation NSImage
+ (instancetype)imageWithSystemSymbolName:(NSString*)name accessibilityDescription:(NSString*)description {
  requireMainThread();
  requireKind(name, [NSString class]);
  record(utf8(name) + ", " + utf8(description));
  if (takeFailure()) return nil;
  for (const std::string& unknown : imageState().unknownSymbols) {
    if (unknown == utf8(name)) return nil;
  }
  NSImage* made = [[self alloc] init];
  made->symbol_ = utf8(name);
  made->description_ = [description copy];
  return [made autorelease];
}
- (void)dealloc {
  [description_ release];
  [super dealloc];
}
- (void)setTemplate:(BOOL)isTemplate {
  record(truth(isTemplate));
  isTemplate_ = isTemplate;
}
@end

@interface CALayer () {
  CGColorRef background_;
}
@end
@implementation CALayer
@synthesize cornerRadius, masksToBounds;
- (void)dealloc {
  CGColorRelease(background_);
  [super dealloc];
}
- (CGColorRef)backgroundColor {
  return background_;
}
- (void)setBackgroundColor:(CGColorRef)color {
  if (color != nullptr) requireKind(color, [LXWColorValue class]);
  CGColorRetain(color);
  CGColorRelease(background_);
  background_ = color;
}
@end

@implementation NSResponder
- (instancetype)init {
  return [super init];
}
@end

@implementation NSView
@synthesize hidden, needsDisplay;
- (instancetype)init {
  return [self initWithFrame:NSZeroRect];
}
- (instancetype)initWithFrame:(NSRect)frame {
  requireApplication();
  self = [super init];
  frame_ = frame;
  subviews_ = [[NSMutableArray alloc] init];
  return self;
}
- (void)dealloc {
  for (NSView* view in subviews_) view->superview_ = nil;
  [subviews_ release];
  [layer_ release];
  [super dealloc];
}
- (NSRect)frame {
  return frame_;
}
- (void)setFrame:(NSRect)frame {
  requireMainThread();
  frame_ = frame;
}
- (void)addSubview:(NSView*)view {
  requireMainThread();
  requireKind(view, [NSView class]);
  [view retain];
  [view removeFromSuperview];
  [subviews_ addObject:view];
  view->superview_ = self;
  [view release];
}
- (void)removeFromSuperview {
  if (superview_ == nil) return;
  NSView* former = superview_;
  superview_ = nil;
  [former->subviews_ removeObject:self];
}
- (NSArray*)subviews {
  return [[subviews_ copy] autorelease];
}
// The layer exists once it was asked for, not earlier.
- (void)setWantsLayer:(BOOL)wantsLayer {
  wantsLayer_ = wantsLayer;
  if (wantsLayer && layer_ == nil) layer_ = [[CALayer alloc] init];
}
- (CALayer*)layer {
  return layer_;
}
- (NSAppearance*)effectiveAppearance {
  return [[[NSAppearance alloc] init] autorelease];
}
- (void)viewDidChangeEffectiveAppearance {
  knowsAppearance_ = YES;
  for (NSView* view in subviews_) {
    view->knowsAppearance_ = NO;
    [view viewDidChangeEffectiveAppearance];
    if (!view->knowsAppearance_) die("-[NSView viewDidChangeEffectiveAppearance] without the call of super");
  }
}
@end

extern "C" id objc_loadWeakRetained(id* location);

@interface NSControl () {
 @public
  __weak id target_;
  BOOL isDisabled_, isInAction_;
  NSString* text_;
  NSFont* font_;
}
@end
@implementation NSControl
@synthesize tag, action, alignment, baseWritingDirection, usesSingleLineMode;
- (instancetype)initWithFrame:(NSRect)frame {
  self = [super initWithFrame:frame];
  text_ = @"";
  alignment = NSTextAlignmentNatural;
  return self;
}
- (void)dealloc {
  if (isInAction_) {
    die("a control went during its own action: whoever ends its owner must keep it until the next event");
  }
  [text_ release];
  [font_ release];
  [super dealloc];
}
- (void)setTarget:(id)target {
  target_ = target;
}
- (BOOL)isEnabled {
  return !isDisabled_;
}
- (void)setEnabled:(BOOL)enabled {
  called(truth(enabled));
  isDisabled_ = !enabled;
}
- (NSString*)stringValue {
  return text_;
}
- (void)setStringValue:(NSString*)text {
  requireMainThread();
  requireKind(text, [NSString class]);
  record(utf8(text));
  NSString* copy = [text copy];
  [text_ release];
  text_ = copy;
}
- (NSFont*)font {
  return font_;
}
- (void)setFont:(NSFont*)font {
  if (font != nil) requireKind(font, [NSFont class]);
  NSFont* copy = [font copy];
  [font_ release];
  font_ = copy;
}
- (void)performClick:(id)sender {
  requireMainThread();
  if (!self.isEnabled) return;
  isInAction_ = YES;
  sendAction(action, unowned(&target_), self);
  isInAction_ = NO;
}
@end

@interface NSTextField () {
 @public
  BOOL wraps_;
  NSColor* textColor_;
}
@end
@implementation NSTextField
@synthesize backgroundColor, drawsBackground, bordered, bezeled, editable, selectable, maximumNumberOfLines;
+ (instancetype)makeWithString:(NSString*)text wraps:(BOOL)wraps {
  requireKind(text, [NSString class], "+[NSTextField labelWithString:]");
  NSTextField* made = [[[self alloc] initWithFrame:NSZeroRect] autorelease];
  made->text_ = [text copy];
  made->wraps_ = wraps;
  made.selectable = wraps;  // of the two kinds of label, only this one lets its text be selected
  made->font_ = [[NSFont systemFontOfSize:13] retain];
  made->textColor_ = [[NSColor labelColor] retain];
  return made;
}
+ (instancetype)labelWithString:(NSString*)text {
  return [self makeWithString:text wraps:NO];
}
+ (instancetype)wrappingLabelWithString:(NSString*)text {
  return [self makeWithString:text wraps:YES];
}
- (void)dealloc {
  [textColor_ release];
  [backgroundColor release];
  [super dealloc];
}
- (void)setTextColor:(NSColor*)color {
  requireMainThread();
  if (color != nil) requireKind(color, [NSColor class]);
  NSColor* copy = [color copy];
  [textColor_ release];
  textColor_ = copy;
}
@end

@interface NSButton () {
 @public
  NSString* title_;
  NSImage* image_;
}
@end
@implementation NSButton
@synthesize bezelStyle, state, keyEquivalent;
+ (instancetype)buttonWithTitle:(NSString*)title target:(id)target action:(SEL)action {
  requireKind(title, [NSString class]);
  record(utf8(title));
  NSButton* made = [[[self alloc] initWithFrame:NSZeroRect] autorelease];
  made.title = title;
  made.target = target;
  made.action = action;
  made.bezelStyle = NSBezelStyleRounded;
  made.font = [NSFont systemFontOfSize:13];
  return made;
}
- (NSString*)keyEquivalent {
  return keyEquivalent == nil ? @"" : keyEquivalent;
}
- (void)dealloc {
  [title_ release];
  [image_ release];
  [keyEquivalent release];
  [super dealloc];
}
- (NSString*)title {
  return title_ == nil ? @"Button" : title_;
}
- (void)setTitle:(NSString*)title {
  NSString* copy = [title copy];
  [title_ release];
  title_ = copy;
}
- (NSImage*)image {
  return image_;
}
- (void)setImage:(NSImage*)image {
  requireMainThread();
  if (image != nil) requireKind(image, [NSImage class]);
  record(image == nil ? "nil" : image->symbol_);
  [image retain];
  [image_ release];
  image_ = image;
}
@end

namespace lexwend::doubles {

Rect rectOf(NSRect rect) { return {rect.origin.x, rect.origin.y, rect.size.width, rect.size.height}; }

id unowned(__weak id* reference) {
  const id object = objc_loadWeakRetained((id*)(void*)reference);
  [object release];
  return object;
}

void sendAction(SEL action, id target, id sender) {
  if (action == nullptr || target == nil) return;
  [target performSelector:action withObject:sender];
}

windows::Control controlOf(NSView* view) {
  windows::Control seen;
  seen.frame = rectOf(view.frame);
  seen.hasLayer = view.layer != nil;
  if (view.layer != nil) {
    seen.cornerRadius = view.layer.cornerRadius;
    if (CGColorRef color = view.layer.backgroundColor) seen.layerBackground = ((LXWColorValue*)color)->name;
  }
  if (![view isKindOfClass:[NSControl class]]) {
    seen.kind = "view";
    return seen;
  }
  auto* control = (NSControl*)view;
  seen.isEnabled = control.isEnabled;
  seen.alignment = control.alignment;
  if (control.font != nil) {
    seen.fontSize = control.font->size_;
    seen.fontWeight = control.font->weight_;
  }
  if ([view isKindOfClass:[NSTextField class]]) {
    auto* field = (NSTextField*)view;
    seen.kind = field->wraps_ ? "wrapping label" : "label";
    seen.text = utf8(field.stringValue);
    seen.color = field->textColor_ == nil ? "" : field->textColor_->name_;
  } else if ([view isKindOfClass:[NSButton class]]) {
    auto* button = (NSButton*)view;
    seen.kind = "button";
    seen.text = utf8(button.title);
    seen.bezelStyle = button.bezelStyle;
  }
  return seen;
}

}  // namespace lexwend::doubles
