// SPDX-License-Identifier: MIT
#include "platform/fake/fake_workspace.h"

#include <algorithm>
#include <utility>

namespace lexwend::platform {
namespace {

class FakeUrl : public Url {
 public:
  explicit FakeUrl(std::string_view urlText) : text(urlText) {}
  const std::string text;
};

/// RFC 3986: a scheme, a colon, and no spaces. A scheme begins with a letter and consists of letters, digits,
/// plus, minus and dot.
bool isUrl(std::string_view text) {
  const auto colon = text.find(':');
  if (colon == std::string_view::npos || colon == 0) return false;
  const auto letter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
  const auto inScheme = [&](char c) {
    return letter(c) || (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.';
  };
  const auto scheme = text.substr(0, colon);
  return letter(scheme.front()) && std::all_of(scheme.begin(), scheme.end(), inScheme) &&
         std::none_of(text.begin(), text.end(), [](char c) { return c <= ' ' || c == '\x7F'; });
}

}  // namespace

std::optional<FrontApplication> FakeWorkspace::frontmostApplication() {
  system_.called("workspace.frontmostApplication");
  if (!apps_.front()) return std::nullopt;
  return FrontApplication{apps_.front()->bundleIdentifier};
}

UrlRef FakeWorkspace::urlFromString(std::string_view text) {
  system_.called("workspace.urlFromString");
  if (system_.failure(FakeOperation::urlFromString) || !isUrl(text)) return nullptr;
  return std::make_shared<FakeUrl>(text);
}

void FakeWorkspace::open(const UrlRef& url) {
  system_.called("workspace.open");
  if (const auto* made = dynamic_cast<const FakeUrl*>(url.get())) {
    opened_.push_back(made->text);
  } else {
    system_.complain("workspace.open of a URL that this host did not make");
  }
}

Registration FakeWorkspace::observeDidWake(std::function<void()> handler) {
  system_.called("workspace.observeDidWake");
  return observers_.add(std::move(handler));
}

void FakeWorkspace::wake() {
  for (const auto& observer : observers_.all()) (*observer)();
}

}  // namespace lexwend::platform
