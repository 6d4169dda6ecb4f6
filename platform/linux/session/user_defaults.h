// SPDX-License-Identifier: MIT
#pragma once

#include <ctime>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include <sys/types.h>

#include "platform/user_defaults.h"

namespace lexwend::platform {

using DefaultsTable = std::map<std::string, DefaultsValue, std::less<>>;

/// The text form of a table: a heading, one `key = type value` line per entry in the order of the keys, and a
/// last line "end", by which a file that was cut off is told from a whole one. Types: boolean, integer, real,
/// string (in quotation marks, with \\ \" \n), and other, whose value is lost.
std::string defaultsText(const DefaultsTable& table);
/// Nothing when the text is damaged: no heading, no end, or a line that is no entry. Empty lines and lines
/// that begin with # are passed over.
std::optional<DefaultsTable> parseDefaults(std::string_view text);

/// User defaults in a small text file, made when something is first written. A damaged file is kept aside
/// under its name with ".damaged" and the defaults apply. Where the file cannot be written, values last as
/// long as the process; one that is there but cannot be read is never written over. A file that the user
/// changed by hand is read anew at the next access.
class LinuxUserDefaults : public UserDefaults {
 public:
  /// The file's absolute path; empty: nothing is kept on disk.
  explicit LinuxUserDefaults(std::string path);
  /// $XDG_CONFIG_HOME/lexwend/settings.
  static std::string standardPath();

  std::optional<DefaultsValue> objectForKey(std::string_view key) override;
  bool boolForKey(std::string_view key) override;
  void setInteger(std::int64_t value, std::string_view key) override;
  void setBool(bool value, std::string_view key) override;

 private:
  struct Version {
    bool exists = false;
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    std::time_t seconds = 0;
    long nanoseconds = 0;
    bool operator==(const Version&) const = default;
  };
  Version versionOnDisk() const;
  /// Brings the table up to date. False when the file is there and cannot be read: then the table stays.
  bool refresh();
  void keepAside() const;
  void set(std::string_view key, DefaultsValue value);

  std::string path_;
  std::mutex mutex_;
  DefaultsTable table_;
  std::optional<Version> read_;  ///< the version that the table came from; nothing before the first look
};

}  // namespace lexwend::platform
