// SPDX-License-Identifier: MIT
#include "platform/linux/selection/targets.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "platform/linux/display/latin1.h"

namespace lexwend::platform {
namespace {

constexpr char kSeparator = '\t';

constexpr std::array<std::string_view, 14> kProtocolTargets = {
    "TARGETS", "TIMESTAMP", "MULTIPLE", "SAVE_TARGETS", "DELETE",     "INSERT_SELECTION", "INSERT_PROPERTY",
    "PIXMAP",  "DRAWABLE",  "BITMAP",   "COLORMAP",     "FOREGROUND", "BACKGROUND",       "CLIENT_WINDOW"};

std::string_view impliedPropertyType(std::string_view target) {
  return target == "TEXT" ? std::string_view("UTF8_STRING") : target;
}

// In the order in which they are asked for: what most programs understand comes first.
constexpr std::array<std::string_view, 8> kLossless = {"image/png",   "image/tiff",     "image/bmp",
                                                       "image/x-bmp", "image/x-MS-bmp", "image/qoi",
                                                       "image/x-tga", "image/x-xpixmap"};

bool startsWith(std::string_view text, std::string_view start) {
  return text.substr(0, start.size()) == start;
}

Bytes bytesOfText(std::string_view text) {
  const auto* first = reinterpret_cast<const std::byte*>(text.data());
  return {first, first + text.size()};
}

}  // namespace

std::string encodedTypeName(const ClipboardTarget& target) {
  const bool looksEncoded = target.name.find(kSeparator) != std::string::npos;
  if (!looksEncoded && target.format == 8 && target.propertyType == impliedPropertyType(target.name)) {
    return target.name;
  }
  return target.name + kSeparator + target.propertyType + kSeparator + std::to_string(target.format);
}

bool canBeNamed(const ClipboardTarget& target) {
  return target.propertyType.find(kSeparator) == std::string::npos;
}

ClipboardTarget targetOfTypeName(std::string_view typeName) {
  ClipboardTarget target;
  const std::size_t last = typeName.rfind(kSeparator);
  const std::size_t first =
      last == std::string_view::npos || last == 0 ? last : typeName.rfind(kSeparator, last - 1);
  int format = 0;
  if (first != std::string_view::npos && first != last) {
    const std::string_view digits = typeName.substr(last + 1);
    std::from_chars(digits.data(), digits.data() + digits.size(), format);
  }
  if (format == 8 || format == 16 || format == 32) {
    target.name = typeName.substr(0, first);
    target.propertyType = typeName.substr(first + 1, last - first - 1);
    target.format = static_cast<std::uint8_t>(format);
  } else {
    target.name = typeName;
    target.propertyType = impliedPropertyType(typeName);
  }
  return target;
}

bool isProtocolTarget(std::string_view target) {
  return std::find(kProtocolTargets.begin(), kProtocolTargets.end(), target) != kProtocolTargets.end();
}

bool isTextTarget(std::string_view target) {
  constexpr std::array<std::string_view, 5> kTexts = {"UTF8_STRING", "text/plain;charset=utf-8", "text/plain",
                                                      "TEXT", "STRING"};
  return std::find(kTexts.begin(), kTexts.end(), target) != kTexts.end();
}

bool isPicture(std::string_view target) {
  // Drawings are no encodings of dots.
  return (startsWith(target, "image/") && !startsWith(target, "image/svg")) ||
         target == "application/x-qt-image";
}

std::optional<int> losslessRank(std::string_view target) {
  const auto found = std::find(kLossless.begin(), kLossless.end(), target);
  return found == kLossless.end() ? std::nullopt : std::optional(static_cast<int>(found - kLossless.begin()));
}

bool isOfFiles(std::string_view target) {
  return target == "text/uri-list" || startsWith(target, "x-special/");
}

ClipboardContents passingTextContents(std::string_view utf8) {
  const Bytes bytes = bytesOfText(utf8);
  ClipboardContents contents = {{"UTF8_STRING", "UTF8_STRING", 8, bytes},
                                {"text/plain;charset=utf-8", "text/plain;charset=utf-8", 8, bytes},
                                {"text/plain", "text/plain", 8, bytes},
                                {"TEXT", "UTF8_STRING", 8, bytes}};
  if (const auto latin1 = latin1FromUtf8(utf8)) {
    contents.push_back({"STRING", "STRING", 8, bytesOfText(*latin1)});
  }
  contents.push_back(nothingForHistories().front());
  return contents;
}

ClipboardContents nothingForHistories() {
  return {{"x-kde-passwordManagerHint", "x-kde-passwordManagerHint", 8, bytesOfText("secret")}};
}

}  // namespace lexwend::platform
