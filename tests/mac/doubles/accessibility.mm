// SPDX-License-Identifier: MIT
// The Accessibility interface: trust, the prompt, and one focused element with scripted attributes.
#import <ApplicationServices/ApplicationServices.h>

#include "tests/mac/doubles/support.h"
#include "tests/mac/doubles/system_objects.h"

using namespace lexwend::doubles;

@implementation LXWAccessibilityElement
@end

namespace {

struct State {
  bool isTrusted = true;
  int prompts = 0;
  accessibility::Reply focused{kAXErrorNoValue, {}, false};
  std::map<std::string, accessibility::Attribute> attributes;
  accessibility::Answers answers;
};
State& state() {
  static auto* the = new State;
  return *the;
}
const ResetHook kReset([] { state() = State{}; });

LXWAccessibilityElement* makeElement(bool isSystemWide) {
  LXWAccessibilityElement* element = [[LXWAccessibilityElement alloc] init];
  element->isSystemWide = isSystemWide;
  return element;
}

LXWAccessibilityElement* checked(AXUIElementRef element, CFStringRef attribute, const char* what) {
  requireKind(element, [LXWAccessibilityElement class], what);
  requireKind(attribute, [NSString class], what);
  return (LXWAccessibilityElement*)element;
}

std::string callText(LXWAccessibilityElement* element, CFStringRef attribute) {
  return std::string(element->isSystemWide ? "system" : "focused") + ", " + utf8((NSString*)attribute);
}

accessibility::Attribute* attributeOf(LXWAccessibilityElement* element, CFStringRef name) {
  if (element->isSystemWide) return nullptr;
  const auto found = state().attributes.find(utf8((NSString*)name));
  return found == state().attributes.end() ? nullptr : &found->second;
}

AXError answer(const accessibility::Reply& reply, CFTypeRef* value) {
  // What a test gives together with an error comes out too, and must not be taken for an answer.
  *value = reply.isElement ? (CFTypeRef)makeElement(false) : (CFTypeRef)[objectOf(reply.value) retain];
  return static_cast<AXError>(reply.error);
}

AXError answer(const accessibility::Answers::Read& read, CFTypeRef* value) {
  const AXError error = answer(static_cast<const accessibility::Reply&>(read), value);
  if (read.isElement) ((LXWAccessibilityElement*)*value)->identity = read.element;
  return error;
}

}  // namespace

namespace lexwend::doubles::accessibility {
void setTrusted(bool trusted) { state().isTrusted = trusted; }
int promptsShown() { return state().prompts; }
void setFocused(const Reply& reply) { state().focused = reply; }
void setAttribute(const std::string& name, const Attribute& attribute) {
  state().attributes[name] = attribute;
}
void answerWith(Answers answers) { state().answers = std::move(answers); }
}  // namespace lexwend::doubles::accessibility

extern "C" {

CFStringRef kAXTrustedCheckOptionPrompt = CFSTR("AXTrustedCheckOptionPrompt");

Boolean AXIsProcessTrusted() {
  record();
  return state().isTrusted;
}
Boolean AXIsProcessTrustedWithOptions(CFDictionaryRef options) {
  record(options == nullptr ? "null" : utf8([(id)options description]));
  if (options != nullptr) {
    requireKind(options, [NSDictionary class]);
    const id prompt = [(NSDictionary*)options objectForKey:(id)kAXTrustedCheckOptionPrompt];
    if (prompt != nil && CFGetTypeID(prompt) != CFBooleanGetTypeID()) {
      die("AXIsProcessTrustedWithOptions: the prompt option is no truth value");
    }
    if ((CFTypeRef)prompt == kCFBooleanTrue && !state().isTrusted) ++state().prompts;
  }
  return state().isTrusted;
}

AXUIElementRef AXUIElementCreateSystemWide() {
  record();
  return (AXUIElementRef)makeElement(true);
}
AXUIElementRef AXUIElementCreateApplication(pid_t) { die("AXUIElementCreateApplication is not offered"); }

AXError AXUIElementCopyAttributeValue(AXUIElementRef element, CFStringRef attribute, CFTypeRef* value) {
  auto* target = checked(element, attribute, "AXUIElementCopyAttributeValue");
  requireNonnull(value, "AXUIElementCopyAttributeValue: the value");
  record(callText(target, attribute));
  if (state().answers.read) {
    return answer(state().answers.read(target->identity, utf8((NSString*)attribute)), value);
  }
  if (target->isSystemWide) {
    if (utf8((NSString*)attribute) != "AXFocusedUIElement") return kAXErrorAttributeUnsupported;
    return answer(state().focused, value);
  }
  accessibility::Attribute* known = attributeOf(target, attribute);
  if (known == nullptr || known->replies.empty()) return kAXErrorAttributeUnsupported;
  const accessibility::Reply reply = known->replies.front();
  if (known->replies.size() > 1) known->replies.erase(known->replies.begin());
  return answer(reply, value);
}
AXError AXUIElementIsAttributeSettable(AXUIElementRef element, CFStringRef attribute, Boolean* settable) {
  auto* target = checked(element, attribute, "AXUIElementIsAttributeSettable");
  requireNonnull(settable, "AXUIElementIsAttributeSettable: the answer");
  record(callText(target, attribute));
  if (state().answers.settable) {
    const auto answered = state().answers.settable(target->identity, utf8((NSString*)attribute));
    if (answered.error == kAXErrorSuccess) *settable = answered.isSettable;
    return static_cast<AXError>(answered.error);
  }
  const accessibility::Attribute* known = attributeOf(target, attribute);
  if (known == nullptr) return kAXErrorAttributeUnsupported;
  if (known->settableError != kAXErrorSuccess) return static_cast<AXError>(known->settableError);
  *settable = known->isSettable;
  return kAXErrorSuccess;
}
AXError AXUIElementSetAttributeValue(AXUIElementRef element, CFStringRef attribute, CFTypeRef value) {
  auto* target = checked(element, attribute, "AXUIElementSetAttributeValue");
  requireKind(value, [NSString class], "AXUIElementSetAttributeValue: the value");
  record(callText(target, attribute) + ", " + describe((id)value));
  if (state().answers.write) {
    return static_cast<AXError>(
        state().answers.write(target->identity, utf8((NSString*)attribute), utf8((NSString*)value)));
  }
  const accessibility::Attribute* known = attributeOf(target, attribute);
  if (known == nullptr) return kAXErrorAttributeUnsupported;
  if (known->setError != kAXErrorSuccess) return static_cast<AXError>(known->setError);
  // A copy: what the test does may replace the attribute.
  const auto onSet = known->onSet;
  if (onSet) onSet(utf8((NSString*)value));
  return kAXErrorSuccess;
}
}
