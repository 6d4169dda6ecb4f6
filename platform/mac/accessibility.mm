// SPDX-License-Identifier: MIT
#include "platform/accessibility.h"

#import <ApplicationServices/ApplicationServices.h>

#include <utility>

#include "platform/mac/cf_ref.h"
#include "platform/mac/cf_text.h"
#include "platform/mac/mac_services.h"

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

/// No messaging time-out is set: the system's own applies.
class MacAccessibility : public Accessibility {
 public:
  bool isProcessTrusted() override { return AXIsProcessTrusted(); }

  bool isProcessTrustedWithPrompt() override {
    const void* key = kAXTrustedCheckOptionPrompt;
    const void* value = kCFBooleanTrue;
    const auto options = CFRef<CFDictionaryRef>::adopt(CFDictionaryCreate(kCFAllocatorDefault, &key, &value,
                                                                          1, &kCFTypeDictionaryKeyCallBacks,
                                                                          &kCFTypeDictionaryValueCallBacks));
    return AXIsProcessTrustedWithOptions(options.get());
  }

  AccessibilityElementRef createSystemWideElement() override {
    return std::make_shared<MacAccessibilityElement>(
        CFRef<AXUIElementRef>::adopt(AXUIElementCreateSystemWide()));
  }

  AttributeResult copyAttributeValue(const AccessibilityElementRef& element,
                                     std::string_view attribute) override {
    CFTypeRef copied = nullptr;
    const AXError error =
        AXUIElementCopyAttributeValue(axElement(element), cfTextOrEmpty(attribute).get(), &copied);
    const auto value = CFRef<CFTypeRef>::adopt(copied);
    AttributeResult result{.error = error, .value = {}};
    if (error == kAXErrorSuccess) result.value = accessibilityValue(value.get());
    return result;
  }

  SettableResult isAttributeSettable(const AccessibilityElementRef& element,
                                     std::string_view attribute) override {
    Boolean settable = false;
    const AXError error =
        AXUIElementIsAttributeSettable(axElement(element), cfTextOrEmpty(attribute).get(), &settable);
    return {.error = error, .settable = settable != 0};
  }

  AccessibilityError setAttributeValue(const AccessibilityElementRef& element, std::string_view attribute,
                                       std::string_view value) override {
    const CFRef<CFStringRef> text = cfText(value);
    if (!text) return kAXErrorIllegalArgument;
    return AXUIElementSetAttributeValue(axElement(element), cfTextOrEmpty(attribute).get(), text.get());
  }
};

}  // namespace

std::unique_ptr<Accessibility> makeAccessibility() { return std::make_unique<MacAccessibility>(); }

}  // namespace lexwend::platform::mac
