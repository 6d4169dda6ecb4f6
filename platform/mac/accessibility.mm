// SPDX-License-Identifier: MIT
#include "platform/mac/accessibility.h"

#import <ApplicationServices/ApplicationServices.h>

#include <utility>

#include "platform/mac/cf_ref.h"
#include "platform/mac/cf_text.h"

namespace lexwend::platform::mac {
namespace {

class MacAccessibilityElement : public AccessibilityElement {
 public:
  explicit MacAccessibilityElement(CFRef<AXUIElementRef> element) : element_(std::move(element)) {}
  AXUIElementRef get() const { return element_.get(); }

 private:
  CFRef<AXUIElementRef> element_;
};

AXUIElementRef axElement(const AccessibilityElementRef& element) {
  return static_cast<const MacAccessibilityElement&>(*element).get();
}

AccessibilityValue accessibilityValue(CFTypeRef value) {
  if (value == nullptr) return std::monostate{};
  const CFTypeID type = CFGetTypeID(value);
  if (type == CFStringGetTypeID()) return utf8(static_cast<CFStringRef>(value));
  if (type == AXUIElementGetTypeID()) {
    return std::make_shared<MacAccessibilityElement>(
        CFRef<AXUIElementRef>::share(static_cast<AXUIElementRef>(value)));
  }
  return OtherAccessibilityValue{};
}

}  // namespace

bool MacAccessibility::isProcessTrusted() { return AXIsProcessTrusted(); }

bool MacAccessibility::isProcessTrustedWithPrompt() {
  const void* key = kAXTrustedCheckOptionPrompt;
  const void* value = kCFBooleanTrue;
  const auto options = CFRef<CFDictionaryRef>::adopt(CFDictionaryCreate(kCFAllocatorDefault, &key, &value, 1,
                                                                        &kCFTypeDictionaryKeyCallBacks,
                                                                        &kCFTypeDictionaryValueCallBacks));
  return AXIsProcessTrustedWithOptions(options.get());
}

AccessibilityElementRef MacAccessibility::createSystemWideElement() {
  return std::make_shared<MacAccessibilityElement>(
      CFRef<AXUIElementRef>::adopt(AXUIElementCreateSystemWide()));
}

AttributeResult MacAccessibility::copyAttributeValue(const AccessibilityElementRef& element,
                                                     std::string_view attribute) {
  CFTypeRef copied = nullptr;
  const AXError error =
      AXUIElementCopyAttributeValue(axElement(element), cfTextOrEmpty(attribute).get(), &copied);
  const auto value = CFRef<CFTypeRef>::adopt(copied);
  AttributeResult result{.error = error, .value = {}};
  if (error == kAXErrorSuccess) result.value = accessibilityValue(value.get());
  return result;
}

SettableResult MacAccessibility::isAttributeSettable(const AccessibilityElementRef& element,
                                                     std::string_view attribute) {
  Boolean settable = false;
  const AXError error =
      AXUIElementIsAttributeSettable(axElement(element), cfTextOrEmpty(attribute).get(), &settable);
  return {.error = error, .settable = settable != 0};
}

AccessibilityError MacAccessibility::setAttributeValue(const AccessibilityElementRef& element,
                                                       std::string_view attribute, std::string_view value) {
  const CFRef<CFStringRef> text = cfText(value);
  if (!text) return kAXErrorIllegalArgument;
  return AXUIElementSetAttributeValue(axElement(element), cfTextOrEmpty(attribute).get(), text.get());
}

}  // namespace lexwend::platform::mac
