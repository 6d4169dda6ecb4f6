// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/fake/fake_layouts.h"
#include "platform/fake/fake_system.h"
#include "platform/input_sources.h"

namespace lexwend::platform {

/// Keyboard layouts in memory. At the start US and Hebrew are enabled, and US is in use.
class FakeInputSources : public InputSourceService {
 public:
  explicit FakeInputSources(FakeSystem& system);

  std::optional<std::vector<InputSourceRef>> createInputSourceList(const InputSourceFilter& filter,
                                                                   bool includeAllInstalled) override;
  InputSourceValue property(const InputSourceRef& source, InputSourceProperty key) override;
  InputSourceRef copyCurrentKeyboardLayoutInputSource() override;
  void select(const InputSourceRef& source) override;
  std::uint32_t keyboardType() override;
  std::optional<std::u16string> translate(const KeyLayoutData& data, const KeyTranslation& translation,
                                          std::uint32_t& deadKeyState) override;
  Registration observeEnabledLayoutsChanged(std::function<void()> handler) override;

  // Controls of a test.
  /// Replaces all layouts, in this order, without notice to observers. The layout in use stays in use if it
  /// is still there; else the first enabled one is used.
  void setLayouts(std::vector<FakeLayout> layouts);
  /// The same, with notice to the observers.
  void changeLayouts(std::vector<FakeLayout> layouts);
  /// The user switches to the layout of that identifier; false when there is none.
  bool use(std::string_view id);
  /// No layout is in use.
  void useNone() { current_ = nullptr; }
  /// The identifier of the layout in use; empty when there is none.
  std::string currentId() const;
  /// What a key types in the layout in use.
  std::string typed(int keyCode, bool shifted) const;
  /// Identifiers that the program selected, in order.
  const std::vector<std::string>& selections() const { return selections_; }
  /// The system forgets everything about this process.
  void processEnds() { observers_.clear(); }
  std::size_t observerCount() const { return observers_.count(); }
  /// Translations that the program asked for, in order.
  const std::vector<KeyTranslation>& translations() const { return translations_; }
  void setKeyboardType(std::uint32_t type) { keyboardType_ = type; }

 private:
  FakeSystem& system_;
  std::vector<InputSourceRef> sources_;
  InputSourceRef current_;
  Handlers<std::function<void()>> observers_;
  std::vector<std::string> selections_;
  std::vector<KeyTranslation> translations_;
  std::uint32_t keyboardType_ = 40;  // an ANSI keyboard
};

}  // namespace lexwend::platform
