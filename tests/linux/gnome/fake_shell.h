// SPDX-License-Identifier: MIT
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "tests/linux/testing/private_bus.h"

namespace lexwend::platform {

/// The extension of GNOME Shell on a private bus, with layouts us, an input method, il.
class FakeShell {
 public:
  FakeShell() {
    peer_.answer([this](const std::string& method, GVariant* arguments) { return reply(method, arguments); });
  }
  void appear() { peer_.ownName("org.lexwend.Shell"); }
  void go() { peer_.releaseName("org.lexwend.Shell"); }
  void tell(const char* signal, GVariant* arguments) {
    peer_.emit("/org/lexwend/Shell", "org.lexwend.Shell", signal, arguments);
  }
  void press(unsigned key) { tell("KeyPressed", g_variant_new("(u)", key)); }
  /// From now on somebody else has every key.
  void refuseKeys() {
    const std::lock_guard<std::mutex> lock(mutex_);
    refuses_ = true;
  }
  /// The calls so far, with their argument if they have one.
  std::vector<std::string> calls() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return calls_;
  }

 private:
  /// On the thread of the bus.
  GVariant* reply(const std::string& method, GVariant* arguments) {
    const std::lock_guard<std::mutex> lock(mutex_);
    guint32 number = 0;
    if (method == "Layouts") {
      GVariantBuilder sources;
      g_variant_builder_init(&sources, G_VARIANT_TYPE("a(ss)"));
      g_variant_builder_add(&sources, "(ss)", "xkb", "us+dvorak");
      g_variant_builder_add(&sources, "(ss)", "ibus", "anthy");
      g_variant_builder_add(&sources, "(ss)", "xkb", "il");
      return g_variant_new("(a(ss)u)", &sources, active_);
    }
    if (method == "FrontWindow") return g_variant_new("(tus)", guint64{7}, 42U, "org.gnome.TextEditor");
    if (method == "SelectLayout") {
      g_variant_get(arguments, "(u)", &active_);
      calls_.push_back("select " + std::to_string(active_));
    } else if (method == "BindKey") {
      const char* accelerator = nullptr;
      g_variant_get(arguments, "(&s)", &accelerator);
      calls_.push_back("bind " + std::string(accelerator));
      return g_variant_new("(u)", refuses_ ? 0U : ++lastKey_);
    } else if (method == "UnbindKey") {
      g_variant_get(arguments, "(u)", &number);
      if (number != 0) calls_.push_back("unbind " + std::to_string(number));
    } else {
      return nullptr;
    }
    return g_variant_new("()");
  }

  BusPeer peer_;
  std::mutex mutex_;
  std::vector<std::string> calls_;
  bool refuses_ = false;
  guint32 lastKey_ = 100;
  guint32 active_ = 0;
};

}  // namespace lexwend::platform
