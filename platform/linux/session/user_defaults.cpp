// SPDX-License-Identifier: MIT
#include "platform/linux/session/user_defaults.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <locale>
#include <sstream>

#include <sys/stat.h>

#include "platform/linux/session/user_folders.h"

namespace lexwend::platform {
namespace {

constexpr std::string_view kHeading = "# Lexwend settings";
constexpr std::string_view kEnd = "end";

std::string quoted(std::string_view text) {
  std::string result = "\"";
  for (const char c : text) {
    if (c == '\n') {
      result += "\\n";
    } else {
      if (c == '\\' || c == '"') result += '\\';
      result += c;
    }
  }
  return result + '"';
}

std::optional<std::string> unquoted(std::string_view text) {
  if (text.size() < 2 || text.front() != '"' || text.back() != '"') return std::nullopt;
  text = text.substr(1, text.size() - 2);
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '"') return std::nullopt;
    if (text[i] != '\\') {
      result += text[i];
      continue;
    }
    if (++i == text.size()) return std::nullopt;
    result += text[i] == 'n' ? '\n' : text[i];
  }
  return result;
}

/// Written and read in the C locale, whatever the user's decimal point is.
std::string realText(double value) {
  std::ostringstream stream;
  stream.imbue(std::locale::classic());
  stream.precision(17);
  stream << value;
  return stream.str();
}

std::optional<double> realValue(std::string_view text) {
  std::istringstream stream{std::string(text)};
  stream.imbue(std::locale::classic());
  double value = 0;
  if (!(stream >> value) || !(stream >> std::ws).eof()) return std::nullopt;
  return value;
}

std::optional<std::int64_t> integerValue(std::string_view text) {
  std::int64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

std::string typedText(const DefaultsValue& value) {
  if (const auto* flag = std::get_if<bool>(&value)) return *flag ? "boolean true" : "boolean false";
  if (const auto* number = std::get_if<std::int64_t>(&value)) return "integer " + std::to_string(*number);
  if (const auto* real = std::get_if<double>(&value)) return "real " + realText(*real);
  if (const auto* text = std::get_if<std::string>(&value)) return "string " + quoted(*text);
  return "other";
}

std::optional<DefaultsValue> typedValue(std::string_view text) {
  const auto blank = text.find(' ');
  const auto type = text.substr(0, blank);
  const auto value = blank == std::string_view::npos ? std::string_view() : text.substr(blank + 1);
  if (type == "boolean" && (value == "true" || value == "false")) return value == "true";
  if (type == "integer") {
    if (const auto number = integerValue(value)) return *number;
  }
  if (type == "real") {
    if (const auto real = realValue(value)) return defaultsNumber(*real);
  }
  if (type == "string") {
    if (auto string = unquoted(value)) return std::move(*string);
  }
  if (type == "other") return OtherDefaultsValue{};
  return std::nullopt;
}

}  // namespace

std::string defaultsText(const DefaultsTable& table) {
  std::string text(kHeading);
  text += '\n';
  for (const auto& [key, value] : table) text += key + " = " + typedText(value) + '\n';
  return text.append(kEnd) + '\n';
}

std::optional<DefaultsTable> parseDefaults(std::string_view text) {
  DefaultsTable table;
  bool headed = false;
  while (!text.empty()) {
    const auto lineEnd = text.find('\n');
    auto line = text.substr(0, lineEnd);
    text = lineEnd == std::string_view::npos ? std::string_view() : text.substr(lineEnd + 1);
    if (!headed) {
      if (line != kHeading) return std::nullopt;
      headed = true;
    } else if (line == kEnd) {
      return table;
    } else if (!line.empty() && line.front() != '#') {
      constexpr std::string_view kSeparator = " = ";
      const auto separator = line.find(kSeparator);
      if (separator == std::string_view::npos || separator == 0) return std::nullopt;
      auto value = typedValue(line.substr(separator + kSeparator.size()));
      if (!value) return std::nullopt;
      table.insert_or_assign(std::string(line.substr(0, separator)), std::move(*value));
    }
  }
  return std::nullopt;
}

LinuxUserDefaults::LinuxUserDefaults(std::string path) : path_(std::move(path)) {}

std::string LinuxUserDefaults::standardPath() {
  const auto folder = user_folders::configFolder();
  return folder.empty() ? "" : folder + "/lexwend/settings";
}

std::optional<DefaultsValue> LinuxUserDefaults::objectForKey(std::string_view key) {
  const std::lock_guard lock(mutex_);
  refresh();
  const auto entry = table_.find(key);
  if (entry == table_.end()) return std::nullopt;
  return entry->second;
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
  const bool mayReplace = refresh();
  table_.insert_or_assign(std::string(key), std::move(value));
  if (path_.empty() || !mayReplace) return;
  const auto folder = path_.substr(0, path_.rfind('/'));
  if (user_folders::makeFolders(folder)) user_folders::replaceFile(path_, defaultsText(table_));
  read_ = versionOnDisk();
}

bool LinuxUserDefaults::refresh() {
  const auto version = versionOnDisk();
  if (read_ == version) return true;
  const auto text = version.exists ? user_folders::readFile(path_) : "";
  if (!text) {
    read_.reset();  // the reason may pass: the next access looks again
    return false;
  }
  table_.clear();
  read_ = version;
  if (!version.exists) return true;
  if (auto table = parseDefaults(*text)) {
    table_ = std::move(*table);
  } else {
    keepAside();
    read_ = versionOnDisk();
  }
  return true;
}

void LinuxUserDefaults::keepAside() const {
  const auto aside = path_ + ".damaged";
  const bool kept = std::rename(path_.c_str(), aside.c_str()) == 0;
  std::fprintf(stderr, "lexwend: the settings file is damaged%s; the default settings apply\n",
               kept ? " and was kept aside" : "");
}

LinuxUserDefaults::Version LinuxUserDefaults::versionOnDisk() const {
  struct stat state {};
  if (path_.empty() || ::stat(path_.c_str(), &state) != 0) return {};
  return {true, state.st_dev, state.st_ino, state.st_size, state.st_mtim.tv_sec, state.st_mtim.tv_nsec};
}

}  // namespace lexwend::platform
