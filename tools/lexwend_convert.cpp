// SPDX-License-Identifier: MIT
// lexwend-convert: the conversion as a filter for pipes, editors and scripts.
//
// Several files are read as one, as cat would give them. A failure ends the run; what was converted by then
// is written. A text is converted once its direction is known. Where that takes all of it, a file is read
// twice, and what else it is, a pipe for example, kept in memory until then.
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <variant>
#include <vector>

#include "core/converter.h"
#include "tools/byte_buffer.h"
#include "tools/byte_stream.h"
#include "tools/convert_options.h"
#include "tools/input.h"
#include "tools/progress.h"
#include "tools/record_splitter.h"
#include "tools/system_layout_map.h"

namespace lexwend {
namespace {

constexpr int kSuccess = 0;
constexpr int kFailure = 1;
constexpr int kWrongArguments = 2;

void complain(const std::string& message) {
  std::fprintf(stderr, "lexwend-convert: %s\n", message.c_str());
}

// Hands converted text on as it comes, so that it is never whole in memory.
class WrittenOutput : public TextOutput {
 public:
  explicit WrittenOutput(ByteWriter& writer) : writer_(writer) {}
  void take(std::string_view piece) override { writer_.write(piece); }

 private:
  ByteWriter& writer_;
};

// Converts texts one after the other and writes what they become.
class Filter {
 public:
  Filter(Converter converter, const ConvertOptions& options)
      : converter_(std::move(converter)), options_(options) {}

  void run() {
    switch (options_.records) {
      case ConvertOptions::Records::wholeInput:
        runOverWholeInput();
        break;
      case ConvertOptions::Records::lines:
        runOverRecords('\n');
        break;
      case ConvertOptions::Records::nulSeparated:
        runOverRecords('\0');
        break;
    }
    output_.finish();
    report_.flush();
  }

  // Writes what is converted.
  void flush() {
    output_.flush();
    report_.flush();
  }

 private:
  bool read() {
    const std::size_t before = text_.bytes().size();
    const bool isMore = input_.read(text_);
    progress_.add(text_.bytes().size() - before);
    return isMore;
  }

  void runOverWholeInput() {
    const Direction direction = findDirection();
    bool changed = false;
    if (input_.canBeReadAgain()) {
      text_.drop(text_.bytes().size());
      input_.readAgain();
    }
    std::size_t searched = 0;
    do {
      const std::size_t cut = converter_.lastCut(text_.bytes(), searched, !direction.isUniform);
      changed |= convertPart(cut, direction);
      searched = text_.bytes().size();
    } while (read());
    changed |= convertPart(text_.bytes().size(), direction);
    report(direction, changed);
  }

  // Reads as far as that takes. What was read is kept, except where it can be read again.
  Direction findDirection() {
    Letters letters;
    std::size_t seen = 0;
    std::size_t searched = 0;
    while (!letters.both() && read()) {
      const std::size_t cut = std::max(seen, converter_.lastCut(text_.bytes(), searched, false));
      converter_.findLetters(text_.bytes().substr(seen, cut - seen), letters);
      seen = cut;
      if (input_.canBeReadAgain()) text_.drop(std::exchange(seen, 0));
      searched = text_.bytes().size();
    }
    if (!letters.both()) converter_.findLetters(text_.bytes().substr(seen), letters);
    return directionOf(letters, options_.currentLayoutIsHebrew);
  }

  bool convertPart(std::size_t size, Direction direction) {
    const bool changed = converter_.convertPart(converted_, text_.bytes().substr(0, size), direction);
    text_.drop(size);
    return changed;
  }

  void runOverRecords(char separator) {
    RecordSplitter splitter(separator);
    while (read()) {
      splitter.feed(text_.bytes(), [&](std::string_view record) {
        convert(record);
        output_.write({&separator, 1});
      });
      text_.drop(text_.bytes().size());
      flush();  // the reader of these records must not wait for more input
    }
    if (!splitter.unfinished().empty()) convert(splitter.unfinished());
  }

  void convert(std::string_view text) {
    Letters letters;
    converter_.findLetters(text, letters);
    const Direction direction = directionOf(letters, options_.currentLayoutIsHebrew);
    report(direction, converter_.convertPart(converted_, text, direction));
  }

  void report(Direction direction, bool changed) {
    if (!options_.report) return;
    report_.write(direction.sourceIsHebrew ? "target=en" : "target=he");
    report_.write(changed ? " changed=true\n" : " changed=false\n");
  }

  Converter converter_;
  const ConvertOptions& options_;
  Input input_{options_.files};
  Progress progress_;
  ByteBuffer text_;  // what was read and is not converted yet
  ByteWriter output_{ByteWriter::Target::standardOutput};
  WrittenOutput converted_{output_};
  ByteWriter report_{ByteWriter::Target::standardError};
};

std::optional<LayoutMap> chosenMap(ConvertOptions::Map map) {
  switch (map) {
    case ConvertOptions::Map::builtIn:
      return LayoutMap::fallback();
    case ConvertOptions::Map::system:
      return systemLayoutMap();
  }
  return std::nullopt;
}

int convertInput(const ConvertOptions& options) {
  std::optional<LayoutMap> map = chosenMap(options.map);
  if (!map) {
    complain("no enabled Hebrew and English layouts found");
    return kFailure;
  }
  Filter filter(Converter(*map), options);
  try {
    filter.run();
  } catch (const ReadError& error) {
    filter.flush();
    complain(error.file + ": " + error.reason);
    return kFailure;
  }
  return kSuccess;
}

int print(std::string_view text) {
  ByteWriter output(ByteWriter::Target::standardOutput);
  output.write(text);
  output.finish();
  return kSuccess;
}

int run(const std::vector<std::string>& arguments) {
  const auto parsed = parseConvertArguments(arguments);
  if (const auto* error = std::get_if<ConvertUsageError>(&parsed)) {
    complain(error->message);
    std::fputs(convertUsage(), stderr);
    return kWrongArguments;
  }
  try {
    if (const auto* notice = std::get_if<ConvertNotice>(&parsed)) {
      switch (*notice) {
        case ConvertNotice::help:
          return print(convertUsage());
        case ConvertNotice::version:
          return print("lexwend-convert " LEXWEND_VERSION "\n");
      }
    }
    return convertInput(std::get<ConvertOptions>(parsed));
  } catch (const std::system_error& error) {
    // Only a failed write gets here. A closed pipe is no failure: its reader has seen what it wanted.
    if (error.code() != std::errc::broken_pipe) complain("write error: " + error.code().message());
    return kFailure;
  } catch (const std::bad_alloc&) {
    complain("out of memory");
    return kFailure;
  }
}

}  // namespace
}  // namespace lexwend

int main(int argc, char** argv) {
  std::signal(SIGPIPE, SIG_IGN);  // write() then reports a closed pipe as an error
  return lexwend::run(std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc));
}
