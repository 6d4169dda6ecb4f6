// SPDX-License-Identifier: MIT
#include "platform/fake/fake_apps.h"

#include <utility>

namespace lexwend::platform {
namespace {

const char* name(AccessOperation operation) {
  switch (operation) {
    case AccessOperation::read:
      return "read";
    case AccessOperation::settable:
      return "settable";
    case AccessOperation::write:
      return "write";
  }
  return "?";
}

}  // namespace

void FakeField::setText(std::string text) {
  text_ = std::move(text);
  selectNothing();
}

bool FakeField::select(std::string_view part) {
  const auto start = text_.find(part);
  if (start == std::string::npos) return false;
  selectionStart_ = start;
  selectionLength_ = part.size();
  return true;
}

void FakeField::selectAll() {
  selectionStart_ = 0;
  selectionLength_ = text_.size();
}

void FakeField::selectNothing() {
  selectionStart_ = text_.size();
  selectionLength_ = 0;
}

void FakeField::replaceSelection(std::string_view replacement) {
  text_.replace(selectionStart_, selectionLength_, replacement);
  selectionStart_ += replacement.size();
  selectionLength_ = 0;
}

void FakeField::answer(AccessOperation operation, std::string_view attribute, FakeAnswer answer, int after) {
  prepared_.push_back({operation, std::string(attribute), std::move(answer), after, 0});
}

std::optional<FakeAnswer> FakeField::preparedAnswer(AccessOperation operation, std::string_view attribute) {
  for (auto& prepared : prepared_) {
    if (prepared.operation != operation || prepared.attribute != attribute) continue;
    if (prepared.after > 0) {
      --prepared.after;
      return std::nullopt;
    }
    ++prepared.used;
    return prepared.answer;
  }
  return std::nullopt;
}

std::vector<std::string> FakeField::unused() const {
  std::vector<std::string> complaints;
  for (const auto& prepared : prepared_) {
    if (prepared.used > 0) continue;
    complaints.push_back("the answer prepared for " + std::string(name(prepared.operation)) + " of " +
                         prepared.attribute + " was never asked for");
  }
  return complaints;
}

FakeFieldRef FakeApp::focus() const {
  return focusedWindow < windows.size() ? windows[focusedWindow].field : nullptr;
}

FakeFieldRef FakeApp::openWindow(std::string title, std::string text) {
  windows.push_back({std::move(title), std::make_shared<FakeField>(std::move(text))});
  focusedWindow = windows.size() - 1;
  return windows.back().field;
}

void FakeApp::focusWindow(std::string_view title) {
  for (std::size_t i = 0; i < windows.size(); ++i) {
    if (windows[i].title == title) focusedWindow = i;
  }
}

FakeAppRef FakeApps::open(std::string name, std::optional<std::string> bundleIdentifier, std::string text) {
  auto app = std::make_shared<FakeApp>();
  app->name = std::move(name);
  app->bundleIdentifier = std::move(bundleIdentifier);
  app->openWindow(app->name, std::move(text));
  apps_.push_back(app);
  front_ = app;
  return app;
}

FakeAppRef FakeApps::named(std::string_view name) const {
  for (const auto& app : apps_) {
    if (app->name == name) return app;
  }
  return nullptr;
}

void FakeApps::copyInFront() {
  const FakeAppRef app = front_;
  if (!app) return;
  FakeCopy copy = app->copies;
  if (!app->nextCopies.empty()) {
    copy = app->nextCopies.front();
    app->nextCopies.pop_front();
  }
  const auto write = [&](std::vector<FakePasteboardItemContents> contents) {
    system_.clock.systemDoes(copy.delay, [this, contents = std::move(contents), owner = app->name]() mutable {
      pasteboard_.otherAppWrites(std::move(contents), std::move(owner));
    });
  };
  switch (copy.kind) {
    case FakeCopy::Kind::selection: {
      const auto field = app->focus();
      if (!field || field->password || field->selectedText().empty()) return;
      write({{FakePasteboardEntry::text(field->selectedText())}});
      return;
    }
    case FakeCopy::Kind::nothing:
      return;
    case FakeCopy::Kind::emptyText:
      write({{FakePasteboardEntry::text("")}});
      return;
    case FakeCopy::Kind::image:
      write({{FakePasteboardEntry::data("public.png", "\x89PNG")}});
      return;
    case FakeCopy::Kind::clears:
      write({});
      return;
  }
}

void FakeApps::pasteInFront() {
  const FakeAppRef app = front_;
  if (!app || app->pastes.ignored) return;
  system_.clock.systemDoes(app->pastes.delay, [this, app] {
    const auto field = app->focus();
    const auto text = pasteboard_.plainText();
    if (field && field->editable && text) field->replaceSelection(*text);
  });
}

void FakeApps::typeInFront(std::string_view text) {
  const auto field = focus();
  if (field && field->editable && !text.empty()) field->replaceSelection(text);
}

std::vector<std::string> FakeApps::unused() const {
  std::vector<std::string> complaints;
  for (const auto& app : apps_) {
    if (!app->nextCopies.empty()) {
      complaints.push_back(app->name + " was prepared for " + std::to_string(app->nextCopies.size()) +
                           " copies more than were asked of it");
    }
    for (const auto& window : app->windows) {
      if (!window.field) continue;
      for (auto& complaint : window.field->unused()) complaints.push_back(app->name + ": " + complaint);
    }
  }
  return complaints;
}

}  // namespace lexwend::platform
