// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <ctime>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include <sys/types.h>

#include "platform/linux/session/glib_ref.h"
#include "platform/user_defaults.h"

namespace lexwend::platform {

/// User defaults in a key file (GLib's GKeyFile), group "Settings", made when something is first written and
/// readable by the user alone. What a value is shows in its form: true or false, a number, a list (";" at its
/// end, which counts as a value of another kind), else text. A file that was changed by somebody else is read
/// anew at the next access; comments and unknown entries in it are kept.
///
/// A file that is empty or no key file may be one that an editor is just writing: what was read before stays
/// in force until the file has not changed for kSettling. Then the defaults apply, and a file that is no key
/// file is damaged: it is kept aside under its name with ".damaged". A file that cannot be read, or is no
/// small regular file, is never written over; values that are set then last until they can be written, or
/// until the process ends.
class LinuxUserDefaults : public UserDefaults {
 public:
  static constexpr std::chrono::milliseconds kSettling{2000};

  /// The file's absolute path; empty: nothing is kept on disk.
  explicit LinuxUserDefaults(std::string path, std::chrono::milliseconds settling = kSettling);
  /// $XDG_CONFIG_HOME/lexwend/settings.
  static std::string standardPath();

  std::optional<DefaultsValue> objectForKey(std::string_view key) override;
  bool boolForKey(std::string_view key) override;
  void setInteger(std::int64_t value, std::string_view key) override;
  void setBool(bool value, std::string_view key) override;

 private:
  /// What a look at the file without opening it tells.
  struct Version {
    bool exists = false;
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    std::time_t seconds = 0;
    long nanoseconds = 0;
    bool operator==(const Version&) const = default;
  };
  struct Unsettled {
    Version version;
    std::chrono::steady_clock::time_point since;
  };
  Version versionOnDisk() const;
  void set(std::string_view key, DefaultsValue value);
  /// Brings `file_` up to date, as far as the file can be read.
  void refresh();
  bool hasSettled(const Version& version);
  void keepAside() const;
  void writeUnwritten();

  std::string path_;
  std::chrono::milliseconds settling_;
  std::mutex mutex_;
  GKeyFileRef file_;             ///< as it was last read whole
  std::optional<Version> read_;  ///< the version that `file_` came from; nothing: it must not be replaced
  std::optional<Unsettled> unsettled_;  ///< the version that is empty or no key file, and since when
  std::map<std::string, DefaultsValue, std::less<>> unwritten_;  ///< set here and not in the file
};

}  // namespace lexwend::platform
