// SPDX-License-Identifier: MIT
// The host of a program that may get by without one: the desktop's libraries are loaded for the first service
// that needs them.
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <utility>

#include <dlfcn.h>

#include "platform/host.h"
#include "platform/input_sources.h"
#include "platform/pasteboard.h"

namespace lexwend::platform {
namespace {

std::unique_ptr<Host> load() {
  // It stays loaded until the process ends.
  void* const module = dlopen("lexwend-host.so", RTLD_LAZY | RTLD_LOCAL);
  void* const maker = module != nullptr ? dlsym(module, "lexwendMakeHost") : nullptr;
  if (maker == nullptr) {
    std::fprintf(stderr, "lexwend: the part for this desktop cannot be loaded: %s\n", dlerror());
    std::fflush(stdout);
    std::_Exit(EXIT_FAILURE);  // the destructors of static objects would ask for the host again
  }
  return std::unique_ptr<Host>(reinterpret_cast<Host* (*)()>(maker)());
}

// The environment names an X server, or a compositor that tells its layouts.
bool desktopIsNamed() {
  const auto isSet = [](const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr && *value != '\0';
  };
  return isSet("DISPLAY") || isSet("WAYLAND_DISPLAY") || isSet("SWAYSOCK");
}

/// The layouts where no desktop is named: there are none. It answers as the loaded host would, which reaches
/// no desktop either then, and spares the self-test the desktop's libraries.
class NoInputSources : public InputSourceService {
 public:
  std::optional<std::vector<InputSourceRef>> createInputSourceList(const InputSourceFilter& /*filter*/,
                                                                   bool /*includeAllInstalled*/) override {
    return std::nullopt;
  }
  InputSourceValue property(const InputSourceRef& /*source*/, InputSourceProperty /*key*/) override {
    return {};
  }
  InputSourceRef copyCurrentKeyboardLayoutInputSource() override { return nullptr; }
  void select(const InputSourceRef& /*source*/) override {}
  std::uint32_t keyboardType() override { return 0; }
  std::optional<std::u16string> translate(const KeyLayoutData& /*data*/,
                                          const KeyTranslation& /*translation*/,
                                          std::uint32_t& /*deadKeyState*/) override {
    return std::nullopt;
  }
  Registration observeEnabledLayoutsChanged(std::function<void()> /*handler*/) override { return {}; }
};

class HostOfPrograms : public Host {
 public:
  InputSourceService& inputSourceService() override {
    return desktopIsNamed() ? loaded().inputSourceService() : noInputSources_;
  }
  Accessibility& accessibility() override { return loaded().accessibility(); }
  SecureInput& secureInput() override { return loaded().secureInput(); }
  KeyEvents& keyEvents() override { return loaded().keyEvents(); }
  HotKeyService& hotKeyService() override { return loaded().hotKeyService(); }
  StatusBar& statusBar() override { return loaded().statusBar(); }
  RecorderWindows& recorderWindows() override { return loaded().recorderWindows(); }
  KeyMonitor& keyMonitor() override { return loaded().keyMonitor(); }
  Alerts& alerts() override { return loaded().alerts(); }
  Workspace& workspace() override { return loaded().workspace(); }
  RunningApplications& runningApplications() override { return loaded().runningApplications(); }
  RunningInstance& runningInstance() override { return loaded().runningInstance(); }
  UserDefaults& standardUserDefaults() override { return loaded().standardUserDefaults(); }
  LoginItem& loginItem() override { return loaded().loginItem(); }
  RunLoop& runLoop() override { return loaded().runLoop(); }
  Application& application() override { return loaded().application(); }
  Files& files() override { return loaded().files(); }
  DateFormatters& dateFormatters() override { return loaded().dateFormatters(); }
  std::shared_ptr<Pasteboard> generalPasteboard() override { return loaded().generalPasteboard(); }
  Diagnosis& diagnosis() override { return loaded().diagnosis(); }

 private:
  Host& loaded() {
    std::call_once(loading_, [this] { loaded_ = load(); });  // any thread may be the first to ask
    return *loaded_;
  }

  std::once_flag loading_;
  std::unique_ptr<Host> loaded_;
  NoInputSources noInputSources_;
};

}  // namespace

std::unique_ptr<Host> makeHost() {
  return std::make_unique<HostOfPrograms>();
}

}  // namespace lexwend::platform
