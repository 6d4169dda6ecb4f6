// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/pasteboard.h"

namespace lexwend::platform {

/// One target of a selection with its answer: the name of the property's type, its format (8, 16 or 32 bits a
/// unit) and its bytes as they stand on the wire.
struct ClipboardTarget {
  std::string name;
  std::string propertyType;
  std::uint8_t format = 8;
  Bytes bytes;

  bool operator==(const ClipboardTarget&) const = default;
};

/// All targets of a selection in their order.
using ClipboardContents = std::vector<ClipboardTarget>;

/// The type name under which a target is shown as a pasteboard type. It is the target's own name where the
/// answer has the type that the name implies (the target itself; UTF8_STRING for TEXT) and format 8.
/// Otherwise the name is followed by a tab, the property type, a tab and the format:
/// "TEXT\tCOMPOUND_TEXT\t8".
std::string encodedTypeName(const ClipboardTarget& target);
/// False for the answer of a property type that such a name cannot carry, because it has a tab in it.
bool canBeNamed(const ClipboardTarget& target);
/// The reverse, without bytes.
ClipboardTarget targetOfTypeName(std::string_view typeName);

/// True for targets that are part of the protocol or stand for resources, not for contents.
bool isProtocolTarget(std::string_view target);

/// Whether a target is plain text.
bool isTextTarget(std::string_view target);

/// Whether a target is one of the encodings in which a picture is offered, each made from the same picture.
bool isPicture(std::string_view target);
/// Of encodings that lose nothing, the better the smaller the number; nothing for the others.
std::optional<int> losslessRank(std::string_view target);
/// True for the targets by which file managers tell that files were copied, not text.
bool isOfFiles(std::string_view target);

/// The contents that stand for plain text that only passes through: the usual text targets and the mark by
/// which clipboard histories leave it out.
ClipboardContents passingTextContents(std::string_view utf8);
/// Contents without anything to paste, for a clipboard that a history would fill if it were empty.
ClipboardContents nothingForHistories();

}  // namespace lexwend::platform
