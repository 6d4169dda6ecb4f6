// SPDX-License-Identifier: MIT
#include "platform/linux/session/user_defaults.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <utility>

#include <sys/stat.h>

#include "platform/linux/session/user_folders.h"

namespace lexwend::platform {
namespace {

constexpr const char* kSettingsGroup = "Settings";
constexpr auto kEverything =
    static_cast<GKeyFileFlags>(G_KEY_FILE_KEEP_COMMENTS | G_KEY_FILE_KEEP_TRANSLATIONS);

std::optional<double> realValue(const char* text) {
  char* end = nullptr;
  const double value = g_ascii_strtod(text, &end);
  if (end == text || *end != '\0') return std::nullopt;
  return value;
}

/// What an entry's value is, by its form.
DefaultsValue typedValue(GKeyFile* file, const char* key, const char* raw) {
  const std::string_view text = raw;
  if (text == "true") return true;
  if (text == "false") return false;
  std::int64_t integer = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), integer);
  if (error == std::errc() && end == text.data() + text.size()) return integer;
  if (const auto real = realValue(raw)) return defaultsNumber(*real);
  const GText string(g_key_file_get_string(file, kSettingsGroup, key, nullptr));
  if (string == nullptr || (!text.empty() && text.back() == ';')) return OtherDefaultsValue{};
  return std::string(string.get());
}

/// GLib takes away one carriage return at the end of a line with each reading: a value before several of them
/// would change with every writing.
std::string withoutCarriageReturnsAtLineEnds(std::string_view text) {
  std::string plain;
  for (const char c : text) {
    if (c == '\n') plain.erase(plain.find_last_not_of('\r') + 1);
    plain += c;
  }
  plain.erase(plain.find_last_not_of('\r') + 1);
  return plain;
}

void setValue(GKeyFile* file, const std::string& key, const DefaultsValue& value) {
  if (const auto* flag = std::get_if<bool>(&value)) {
    g_key_file_set_boolean(file, kSettingsGroup, key.c_str(), *flag ? TRUE : FALSE);
  } else if (const auto* integer = std::get_if<std::int64_t>(&value)) {
    g_key_file_set_int64(file, kSettingsGroup, key.c_str(), *integer);
  }
}

}  // namespace

LinuxUserDefaults::LinuxUserDefaults(std::string path, std::chrono::milliseconds settling)
    : path_(std::move(path)), settling_(settling), file_(g_key_file_new()) {}

std::string LinuxUserDefaults::standardPath() {
  const auto folder = user_folders::configFolder();
  return folder.empty() ? "" : folder + "/lexwend/settings";
}

std::optional<DefaultsValue> LinuxUserDefaults::objectForKey(std::string_view key) {
  const std::lock_guard lock(mutex_);
  refresh();
  if (const auto unwritten = unwritten_.find(key); unwritten != unwritten_.end()) return unwritten->second;
  const std::string name(key);
  const GText raw(g_key_file_get_value(file_.get(), kSettingsGroup, name.c_str(), nullptr));
  if (raw == nullptr) return std::nullopt;
  return typedValue(file_.get(), name.c_str(), g_strstrip(raw.get()));
}

bool LinuxUserDefaults::boolForKey(std::string_view key) {
  const auto value = objectForKey(key);
  if (!value) return false;
  if (const auto* flag = std::get_if<bool>(&*value)) return *flag;
  if (const auto* number = std::get_if<std::int64_t>(&*value)) return *number != 0;
  if (const auto* real = std::get_if<double>(&*value)) return std::fpclassify(*real) != FP_ZERO;
  return false;
}

void LinuxUserDefaults::setInteger(std::int64_t value, std::string_view key) {
  set(key, value);
}

void LinuxUserDefaults::setBool(bool value, std::string_view key) {
  set(key, value);
}

void LinuxUserDefaults::set(std::string_view key, DefaultsValue value) {
  const std::lock_guard lock(mutex_);
  refresh();
  unwritten_.insert_or_assign(std::string(key), std::move(value));
  if (read_) writeUnwritten();
}

void LinuxUserDefaults::refresh() {
  auto version = versionOnDisk();
  if (read_ == version) return;
  read_.reset();
  GKeyFileRef fresh(g_key_file_new());
  if (version.exists) {
    const auto bytes = user_folders::readSmallFile(path_);
    if (!bytes) return;  // the reason may pass: the next access looks again
    const std::string text = withoutCarriageReturnsAtLineEnds(*bytes);
    // A NUL would end a value for the reader, and what follows it would be lost with the next writing.
    const bool isText = !text.empty() && text.find('\0') == std::string::npos;
    const bool isWhole = isText && g_key_file_load_from_data(fresh.get(), text.data(), text.size(),
                                                             kEverything, nullptr) != FALSE;
    if (!isWhole && !hasSettled(version)) return;
    if (!isWhole && !text.empty()) {
      keepAside();
      version = versionOnDisk();
    }
  }
  unsettled_.reset();
  file_ = std::move(fresh);
  read_ = version;
  if (!unwritten_.empty()) writeUnwritten();
}

bool LinuxUserDefaults::hasSettled(const Version& version) {
  const auto now = std::chrono::steady_clock::now();
  if (!unsettled_ || unsettled_->version != version) unsettled_ = Unsettled{version, now};
  return now - unsettled_->since >= settling_;
}

void LinuxUserDefaults::keepAside() const {
  const auto aside = path_ + ".damaged";
  const bool kept = std::rename(path_.c_str(), aside.c_str()) == 0;
  std::fprintf(stderr, "lexwend: the settings file is damaged%s; the default settings apply\n",
               kept ? " and was kept aside" : "");
}

void LinuxUserDefaults::writeUnwritten() {
  if (path_.empty()) return;
  for (const auto& [key, value] : unwritten_) setValue(file_.get(), key, value);
  gsize length = 0;
  const GText text(g_key_file_to_data(file_.get(), &length, nullptr));
  if (user_folders::replaceFile(path_, {text.get(), length})) unwritten_.clear();
  read_ = versionOnDisk();
}

LinuxUserDefaults::Version LinuxUserDefaults::versionOnDisk() const {
  struct stat state {};
  if (path_.empty() || ::stat(path_.c_str(), &state) != 0) return {};
  return {true, state.st_dev, state.st_ino, state.st_size, state.st_mtim.tv_sec, state.st_mtim.tv_nsec};
}

}  // namespace lexwend::platform
