// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

#include "platform/input_sources.h"

namespace lexwend::platform::mac {

/// The keyboard layouts of Text Input Sources. Main thread only.
class MacInputSourceService : public InputSourceService {
 public:
  std::optional<std::vector<InputSourceRef>> createInputSourceList(const InputSourceFilter& filter,
                                                                   bool includeAllInstalled) override;
  InputSourceValue property(const InputSourceRef& source, InputSourceProperty key) override;
  InputSourceRef copyCurrentKeyboardLayoutInputSource() override;
  void select(const InputSourceRef& source) override;
  std::uint32_t keyboardType() override;
  std::optional<std::u16string> translate(const KeyLayoutData& data, const KeyTranslation& translation,
                                          std::uint32_t& deadKeyState) override;
  Registration observeEnabledLayoutsChanged(std::function<void()> handler) override;

 private:
  std::vector<Registration> observers_;  // of the system's notifications
};

}  // namespace lexwend::platform::mac
