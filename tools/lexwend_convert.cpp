// SPDX-License-Identifier: MIT
// lexwend-convert: the conversion as a filter for pipes, editors and scripts.
//
// Several files are read as one, as cat would give them. A failure ends the run. Lines and records that were
// complete by then are written. A text that could not be read to its end is not.
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
#include "tools/byte_stream.h"
#include "tools/convert_options.h"
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

// A file that could not be read, by its name.
struct ReadError {
  std::string file;
  std::string reason;
};

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

 private:
  void runOverWholeInput() {
    std::string text;
    readInput([&](std::string_view chunk) { text += chunk; });
    convert(text);
  }

  void runOverRecords(char separator) {
    RecordSplitter splitter(separator);
    readInput([&](std::string_view chunk) {
      splitter.feed(chunk, [&](std::string_view record) {
        convert(record);
        output_.write({&separator, 1});
      });
      flush();  // the reader of these records must not wait for more input
    });
    if (!splitter.unfinished().empty()) convert(splitter.unfinished());
  }

  template <typename OnChunk>
  void readInput(OnChunk onChunk) {
    static const std::vector<std::string> kStandardInput{"-"};
    std::string chunk;
    Progress progress;
    for (const std::string& file : options_.files.empty() ? kStandardInput : options_.files) {
      std::optional<ByteReader> reader;
      const auto next = [&] {
        try {
          if (!reader) reader.emplace(file);
          return reader->read(chunk);
        } catch (const std::system_error& error) {
          throw ReadError{file == "-" ? "standard input" : file, error.code().message()};
        }
      };
      while (next()) {
        progress.add(chunk.size());
        onChunk(chunk);
      }
    }
  }

  void convert(std::string_view text) {
    const Converter::Result result = converter_.convertTo(converted_, text, options_.currentLayoutIsHebrew);
    if (options_.report) {
      report_.write(result.targetIsHebrew ? "target=he" : "target=en");
      report_.write(result.changed ? " changed=true\n" : " changed=false\n");
    }
  }

  void flush() {
    output_.flush();
    report_.flush();
  }

  Converter converter_;
  const ConvertOptions& options_;
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
