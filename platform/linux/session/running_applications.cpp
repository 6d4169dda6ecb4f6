// SPDX-License-Identifier: MIT
#include "platform/linux/session/running_applications.h"

#include <memory>

#include <fcntl.h>
#include <unistd.h>

#include "platform/linux/session/buses.h"
#include "platform/linux/session/user_folders.h"

namespace lexwend::platform {
namespace {

constexpr guint32 kDoNotQueue = 4;
/// Replies to RequestName (D-Bus specification, message bus messages).
constexpr guint32 kPrimaryOwner = 1;
constexpr guint32 kAlreadyOwner = 4;

using Variant = std::unique_ptr<GVariant, decltype(&g_variant_unref)>;

Variant askBus(GDBusConnection* bus, const char* method, GVariant* arguments, const char* replyType) {
  return {g_dbus_connection_call_sync(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                      "org.freedesktop.DBus", method, arguments, G_VARIANT_TYPE(replyType),
                                      G_DBUS_CALL_FLAGS_NONE, kBusCallTimeout, nullptr, nullptr),
          &g_variant_unref};
}

std::optional<guint32> numberFromBus(GDBusConnection* bus, const char* method, GVariant* arguments) {
  const auto reply = askBus(bus, method, arguments, "(u)");
  if (reply == nullptr) return std::nullopt;
  guint32 number = 0;
  g_variant_get(reply.get(), "(u)", &number);
  return number;
}

}  // namespace

std::vector<ProcessIdentifier> LinuxRunningApplications::withBundleIdentifier(std::string_view identifier) {
  const std::string name(identifier);
  auto holder = holderOnBus(name);
  if (!holder) holder = holderOfLock(name);
  return {holder.value_or(ownProcessIdentifier())};
}

ProcessIdentifier LinuxRunningApplications::ownProcessIdentifier() {
  return ::getpid();
}

std::optional<ProcessIdentifier> LinuxRunningApplications::holderOnBus(const std::string& identifier) {
  GDBusConnection* bus = sessionBus();
  if (bus == nullptr || g_dbus_is_name(identifier.c_str()) == FALSE) return std::nullopt;
  const auto reply =
      numberFromBus(bus, "RequestName", g_variant_new("(su)", identifier.c_str(), kDoNotQueue));
  if (!reply) return std::nullopt;
  if (*reply == kPrimaryOwner || *reply == kAlreadyOwner) return ownProcessIdentifier();
  const auto holder =
      numberFromBus(bus, "GetConnectionUnixProcessID", g_variant_new("(s)", identifier.c_str()));
  if (!holder) return std::nullopt;
  return *holder;
}

std::optional<ProcessIdentifier> LinuxRunningApplications::holderOfLock(const std::string& identifier) {
  if (locks_.count(identifier) != 0) return ownProcessIdentifier();
  const auto folder = user_folders::runtimeFolder();
  if (folder.empty() || identifier.find('/') != std::string::npos) return std::nullopt;
  constexpr mode_t kPrivate = 0600;
  const auto path = folder + "/" + identifier + ".lock";
  const int descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, kPrivate);
  if (descriptor < 0) return std::nullopt;
  struct flock lock {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  if (::fcntl(descriptor, F_SETLK, &lock) == 0) {
    locks_.emplace(identifier, descriptor);  // closing the file would give the lock up
    return ownProcessIdentifier();
  }
  const bool told = ::fcntl(descriptor, F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
  ::close(descriptor);
  if (!told) return std::nullopt;
  return lock.l_pid;
}

}  // namespace lexwend::platform
