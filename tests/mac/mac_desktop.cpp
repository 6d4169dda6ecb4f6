// SPDX-License-Identifier: MIT
#include "tests/mac/mac_desktop.h"

#include <utility>

#include <unicode/unistr.h>

namespace lexwend::doubles {
namespace {

constexpr std::uint64_t kExactlyCommand = 0x100000;
constexpr std::uint16_t kCopyKey = 8;
constexpr std::uint16_t kPasteKey = 9;
constexpr std::uint32_t kPlain = 0;
constexpr std::uint32_t kWithShift = 2;
constexpr std::int32_t kParameterError = -50;
constexpr std::int32_t kCannotComplete = -25204;
constexpr std::chrono::seconds kSystemsPatience{6};
constexpr const char* kPlainText = "public.utf8-plain-text";

std::u16string utf16(const std::string& text) {
  const auto units = icu::UnicodeString::fromUTF8(text);
  return std::u16string(units.getBuffer(), static_cast<std::size_t>(units.length()));
}

}  // namespace

MacDesktop::MacDesktop() {
  installLayouts({platform::usLayout(), platform::hebrewLayout()});
  accessibility::setTrusted(true);
}

MacDesktop::~MacDesktop() {
  key_events::onPost({});
}

Bytes MacDesktop::layoutData(const platform::FakeLayout& layout) {
  input_sources::KeyOutputs outputs;
  const auto add = [&](std::uint16_t keyCode, bool isShifted, const std::string& text) {
    const std::pair<int, bool> place{keyCode, isShifted};
    outputs[{keyCode, isShifted ? kWithShift : kPlain}] = {
        .text = utf16(text),
        .isDead = layout.deadKeys.contains(place),
        .error = layout.brokenKeys.contains(place) ? kParameterError : 0};
  };
  for (const auto& [code, key] : layout.keys) {
    add(static_cast<std::uint16_t>(code), false, key.plain);
    add(static_cast<std::uint16_t>(code), true, key.shifted);
  }
  return input_sources::layoutData(outputs);
}

void MacDesktop::installLayouts(const std::vector<platform::FakeLayout>& layouts) {
  input_sources::clear();
  for (const platform::FakeLayout& layout : layouts) {
    input_sources::install({.id = std::get<std::string>(layout.id),
                            .languages = std::get<std::vector<std::string>>(layout.languages),
                            .unicodeKeyLayoutData = layoutData(layout)});
  }
  input_sources::setCurrentLayout(0);
}

void MacDesktop::openEditor(const std::string& text) {
  open({.text = text});
}
void MacDesktop::open(Editor editor) {
  editor_ = std::make_shared<Editor>(std::move(editor));
  workspace::setFrontmost(workspace::Running{"org.lexwend.Editor", 77});
  secure_input::setEnabled(false);
  publish(editor_);
  key_events::onPost([weak = std::weak_ptr<Editor>(editor_)](const key_events::Posted& posted) {
    if (!posted.isDown || posted.flags != kExactlyCommand) return;
    time::later(kReaction, [weak, key = posted.keyCode] {
      const auto focused = weak.lock();
      if (focused == nullptr) return;
      if (key == kCopyKey) pasteboard::otherAppCopiesText(focused->text);
      if (key == kPasteKey) {
        focused->text = pasteboardText().value_or(focused->text);
        publish(focused);
      }
    });
  });
}

/// Tells the system what the field answers now.
void MacDesktop::publish(const std::shared_ptr<Editor>& editor) {
  accessibility::setFocused({.error = 0, .value = {}, .isElement = true});
  accessibility::Attribute role;
  role.replies = {{.error = 0, .value = std::string("AXTextArea")}};
  accessibility::setAttribute("AXRole", role);
  accessibility::Attribute value;
  value.replies = {{.error = 0, .value = editor->text}};
  accessibility::setAttribute("AXValue", value);
  accessibility::Attribute selection;
  selection.replies = value.replies;
  selection.isSettable = true;
  selection.onSet = [weak = std::weak_ptr<Editor>(editor)](const std::string& text) {
    const auto focused = weak.lock();
    if (focused == nullptr) return;
    focused->text = text;
    publish(focused);
  };
  accessibility::setAttribute("AXSelectedText", selection);
}

void MacDesktop::pressKeyInEditor(std::uint16_t keyCode) {
  const auto layout = platform::usLayout();
  const auto key = layout.keys.find(keyCode);
  if (editor_ == nullptr || key == layout.keys.end()) return;
  editor_->text = key->second.plain;
  publish(editor_);
}

void MacDesktop::editorHangs() {
  const auto giveUp = [] {
    time::block(kSystemsPatience);
    return kCannotComplete;
  };
  accessibility::Answers answers;
  answers.read = [giveUp](const auto&, const auto&) {
    accessibility::Answers::Read read;
    read.error = giveUp();
    return read;
  };
  answers.settable = [giveUp](const auto&, const auto&) {
    return accessibility::Answers::Settable{.error = giveUp()};
  };
  answers.write = [giveUp](const auto&, const auto&, const auto&) { return giveUp(); };
  accessibility::answerWith(std::move(answers));
}

void MacDesktop::focusPasswordField() {
  editor_ = nullptr;
  workspace::setFrontmost(workspace::Running{"org.lexwend.Login", 78});
  secure_input::setEnabled(true);
}

std::optional<std::string> MacDesktop::pasteboardText() {
  for (const pasteboard::Item& item : pasteboard::contents()) {
    for (const pasteboard::Representation& representation : item) {
      if (representation.type == kPlainText && representation.data) {
        return std::string(reinterpret_cast<const char*>(representation.data->data()),
                           representation.data->size());
      }
    }
  }
  return std::nullopt;
}

}  // namespace lexwend::doubles
