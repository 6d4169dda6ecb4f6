// SPDX-License-Identifier: MIT
#include "platform/linux/kwin/hot_key_service.h"

#include <cerrno>
#include <string>
#include <string_view>

#include <xkbcommon/xkbcommon.h>

#include "platform/linux/kwin/qt_keys.h"

namespace lexwend::platform {
namespace {

constexpr BusObject kShortcuts = {"org.kde.kglobalaccel", "/kglobalaccel", "org.kde.KGlobalAccel"};
constexpr const char* kComponentInterface = "org.kde.kglobalaccel.Component";
// Of this program: another one, which only looks whether a key is free, must not take the agent's.
const char* const kComponent = program_invocation_short_name;

// Flags of setShortcut: the shortcut is there now, and not the one that the settings have kept from before.
constexpr guint32 kSetPresent = 2;
constexpr guint32 kNoAutoloading = 4;

/// The name of a shortcut in its component.
std::string actionOf(std::uint64_t number) {
  return "fix " + std::to_string(number);
}

/// What identifies a shortcut: the names of its component and of itself, and both for a person.
GVariant* identityOf(std::uint64_t number) {
  const std::string action = actionOf(number);
  const char* texts[] = {kComponent, action.c_str(), "Lexwend", "תיקון הטקסט המסומן"};
  return g_variant_new_strv(texts, std::size(texts));
}

GVariant* numbers(const std::vector<std::int32_t>& list) {
  return g_variant_new_fixed_array(G_VARIANT_TYPE_INT32, list.data(), list.size(), sizeof(std::int32_t));
}

}  // namespace

KWinHotKeyService::KWinHotKeyService(std::shared_ptr<KWin> kwin) : kwin_(std::move(kwin)) {
  keymapObservation_ = kwin_->observeKeymap([this] {
    for (const auto& hotKey : hotKeys()) take(*hotKey);
  });
  busObservation_ = observeSessionBus([this](GDBusConnection* bus) { listenOn(bus); });
}

KWinHotKeyService::~KWinHotKeyService() {
  stop();
  listenOn(nullptr);
}

OSStatus KWinHotKeyService::take(const HotKey& hotKey) {
  const auto keys = qtCombinations(hotKey.keyCode, hotKey.modifiers, kwin_->keymap().get());
  if (keys.empty()) return kHotKeyInvalidErr;
  kwin_->call(kShortcuts, "doRegister", g_variant_new("(@as)", identityOf(hotKey.number)), "()");
  const auto answer = kwin_->call(
      kShortcuts, "setShortcut",
      g_variant_new("(@as@aiu)", identityOf(hotKey.number), numbers(keys), kSetPresent | kNoAutoloading),
      "(ai)");
  if (!answer) return kHotKeyInvalidErr;
  const GVariantRef list(g_variant_get_child_value(answer.get(), 0));
  gint32 first = 0;
  if (g_variant_n_children(list.get()) > 0) g_variant_get_child(list.get(), 0, "i", &first);
  if (first == keys.front()) return kNoErr;
  giveBack(hotKey);
  return kHotKeyExistsErr;
}

void KWinHotKeyService::giveBack(const HotKey& hotKey) {
  kwin_->call(kShortcuts, "unRegister", g_variant_new("(@as)", identityOf(hotKey.number)), "()");
}

void KWinHotKeyService::markEndOfPause() {
  if (!bus_) return;
  ++*pausesEnding_;
  g_dbus_connection_call(
      bus_.get(), kShortcuts.name, kShortcuts.path, kShortcuts.interface, "getComponent",
      g_variant_new("(s)", kComponent), nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START, kBusCallTimeout, nullptr,
      [](GObject* bus, GAsyncResult* result, gpointer pausesEnding) {
        const GVariantRef answer(g_dbus_connection_call_finish(G_DBUS_CONNECTION(bus), result, nullptr));
        const std::unique_ptr<std::shared_ptr<int>> counter(static_cast<std::shared_ptr<int>*>(pausesEnding));
        --**counter;
      },
      new std::shared_ptr<int>(pausesEnding_));
}

void KWinHotKeyService::listenOn(GDBusConnection* bus) {
  if (subscription_ != 0) g_dbus_connection_signal_unsubscribe(bus_.get(), subscription_);
  subscription_ = 0;
  bus_.reset();
  if (bus == nullptr) return;
  bus_.reset(G_DBUS_CONNECTION(g_object_ref(bus)));
  subscription_ = g_dbus_connection_signal_subscribe(bus, kShortcuts.name, kComponentInterface, nullptr,
                                                     nullptr, kComponent, G_DBUS_SIGNAL_FLAGS_NONE,
                                                     &KWinHotKeyService::heard, this, nullptr);
}

void KWinHotKeyService::heard(GDBusConnection*, const char*, const char*, const char*, const char* signal,
                              GVariant* arguments, void* self) {
  if (!g_variant_is_of_type(arguments, G_VARIANT_TYPE("(ssx)"))) return;
  const char* action = "";
  g_variant_get_child(arguments, 1, "&s", &action);
  auto& service = *static_cast<KWinHotKeyService*>(self);
  for (const auto& hotKey : service.hotKeys()) {
    if (actionOf(hotKey->number) != action) continue;
    if (std::string_view(signal) == "globalShortcutReleased") release(*hotKey);
    if (std::string_view(signal) == "globalShortcutPressed") {
      service.press(*hotKey, *service.pausesEnding_ > 0);
    }
  }
}

}  // namespace lexwend::platform
