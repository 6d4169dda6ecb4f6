// SPDX-License-Identifier: MIT
// lexwend-convert as a process: what it reads, writes, reports and exits with.
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/tools/child_process.h"
#include "tools/convert_options.h"

namespace lexwend {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

Outcome run(const std::vector<std::string>& arguments, const std::string& input = "",
            const ChildProcess::Streams& streams = {}) {
  return runProgram(LEXWEND_CONVERT, arguments, input, streams);
}

void expectSuccess(const Outcome& outcome, const std::string& output) {
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.output, output);
  EXPECT_EQ(outcome.errors, "");
}

// A directory of files that goes away with the test.
struct Files {
  std::filesystem::path directory;

  Files() {
    std::string name = (std::filesystem::temp_directory_path() / "lexwend-convert-XXXXXX").string();
    directory = mkdtemp(name.data());
  }
  ~Files() { std::filesystem::remove_all(directory); }
  Files(const Files&) = delete;
  Files& operator=(const Files&) = delete;

  std::string path(const std::string& name) const { return (directory / name).string(); }

  std::string add(const std::string& name, const std::string& content) const {
    std::ofstream(path(name), std::ios::binary) << content;
    return path(name);
  }
};

std::string repeated(const std::string& part, std::size_t count) {
  std::string text;
  for (; count > 0; --count) text += part;
  return text;
}

TEST(LexwendConvert, convertsStandardInputAsOneText) {
  expectSuccess(run({}, "akuo nv akunl"), "שלום מה שלומך");
}

TEST(LexwendConvert, addsAndDropsNoLineFeed) {
  expectSuccess(run({}, "akuo\n"), "שלום\n");
  expectSuccess(run({}, "akuo\r\n\nnv"), "שלום\r\n\nמה");
}

TEST(LexwendConvert, takesMixedTextByTheGivenLayout) {
  expectSuccess(run({"--layout", "en"}, "היי akuo"), "היי שלום");
  expectSuccess(run({"--layout", "he"}, "היי akuo"), "vhh akuo");
}

TEST(LexwendConvert, keepsNulsAndIllFormedBytesOfOneText) {
  const std::string input("a\0\xFF\xD7 b", 6);
  expectSuccess(run({}, input), std::string("ש\0\xFF\xD7 נ", 8));
}

TEST(LexwendConvert, writesNothingForAnEmptyInput) {
  for (const std::vector<std::string>& arguments : {std::vector<std::string>{}, {"--lines"}, {"--null"}}) {
    expectSuccess(run(arguments, ""), "");
  }
}

TEST(LexwendConvert, convertsEachLineByItself) {
  expectSuccess(run({"--lines"}, "akuo\nיקךךם\n"), "שלום\nhello\n");
  expectSuccess(run({}, "akuo\nיקךךם\n"), "שלום\nיקךךם\n");
}

TEST(LexwendConvert, keepsALastLineWithoutLineFeedSo) {
  expectSuccess(run({"--lines"}, "akuo\nnv"), "שלום\nמה");
}

TEST(LexwendConvert, keepsEmptyLinesAndCarriageReturns) {
  expectSuccess(run({"--lines"}, "\n\nakuo\r\n\r\nnv\r\n"), "\n\nשלום\r\n\r\nמה\r\n");
}

TEST(LexwendConvert, convertsEachNulSeparatedRecordByItself) {
  expectSuccess(run({"--null"}, std::string("akuo\nnv\0יקךךם\0", 19)), std::string("שלום\nמה\0hello\0", 20));
}

TEST(LexwendConvert, keepsALastRecordWithoutNulSo) {
  expectSuccess(run({"--null"}, std::string("nv\0nv", 5)), std::string("מה\0מה", 9));
  expectSuccess(run({"--null"}, std::string("\0\0", 2)), std::string("\0\0", 2));
}

TEST(LexwendConvert, reportsOneLinePerText) {
  const Outcome outcome = run({"--report"}, "akuo");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.output, "שלום");
  EXPECT_EQ(outcome.errors, "target=he changed=true\n");
  EXPECT_EQ(run({"--report", "--layout", "he"}, "?").errors, "target=en changed=false\n");
  EXPECT_EQ(run({"--report"}, "").errors, "target=he changed=false\n");
}

TEST(LexwendConvert, reportsEveryLineAndRecord) {
  const std::string report = "target=he changed=true\ntarget=he changed=false\ntarget=en changed=true\n";
  EXPECT_EQ(run({"--report", "--lines"}, "nv\n\nשל").errors, report);
  EXPECT_EQ(run({"--report", "--lines"}, "nv\n\nשל\n").errors, report);
  EXPECT_EQ(run({"--report", "--null"}, std::string("nv\0\0של\0", 9)).errors, report);
  EXPECT_EQ(run({"--report", "--lines"}, "").errors, "");
}

TEST(LexwendConvert, readsFilesAsIfTheyWereOne) {
  const Files files;
  const std::string first = files.add("first", "akuo\nn");
  const std::string second = files.add("second", "v\nש");
  expectSuccess(run({first, second}), "שלום\nמה\nש");
  expectSuccess(run({"--lines", first, second}), "שלום\nמה\na");
  expectSuccess(run({"--lines", first, "-", second}, "u\n"), "שלום\nמו\nה\na");
  EXPECT_EQ(run({"--lines", "--report", first, second}).errors,
            "target=he changed=true\ntarget=he changed=true\ntarget=en changed=true\n");
}

TEST(LexwendConvert, readsAFileWhoseNameLooksLikeAnOption) {
  const Files files;
  files.add("--lines", "nv");
  const auto here = std::filesystem::current_path();
  std::filesystem::current_path(files.directory);
  const Outcome outcome = run({"--", "--lines"});
  std::filesystem::current_path(here);
  expectSuccess(outcome, "מה");
}

TEST(LexwendConvert, convertsAHugeInputWhole) {
  const std::string input = repeated("akuo nv akunl\n", 100'000);
  const std::string expected = repeated("שלום מה שלומך\n", 100'000);
  for (const std::vector<std::string>& arguments : {std::vector<std::string>{}, {"--lines"}}) {
    const Outcome outcome = run(arguments, input);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_TRUE(outcome.output == expected) << outcome.output.size() << " bytes";
  }
}

TEST(LexwendConvert, convertsOneHugeLineWhole) {
  const Outcome outcome = run({"--lines"}, repeated("akuo ", 1'000'000));
  EXPECT_EQ(outcome.status, 0);
  EXPECT_TRUE(outcome.output == repeated("שלום ", 1'000'000)) << outcome.output.size() << " bytes";
}

TEST(LexwendConvert, losesNothingOnShortReadsAndWrites) {
  // The program's ends do not block: the system takes and gives what fits, down to nothing at all.
  ChildProcess::Streams streams;
  streams.nonBlocking = true;
  ChildProcess child(LEXWEND_CONVERT, {"--lines"}, streams);
  constexpr std::size_t kLines = 60'000;
  std::thread writer([&] {
    for (std::size_t line = 0; line < kLines; line += 1000) {
      child.write(repeated("akuo\n", 1000));
      if (line % 20'000 == 0) std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    child.closeInput();
  });
  std::string output;
  for (std::string bytes = child.readOutput(1777); !bytes.empty(); bytes = child.readOutput(1777)) {
    output += bytes;
    if (output.size() < 40'000) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));  // a slow reader: the pipe fills
    }
  }
  writer.join();
  EXPECT_EQ(child.wait(), 0);
  EXPECT_TRUE(output == repeated("שלום\n", kLines)) << output.size() << " bytes";
}

TEST(LexwendConvert, streamsLinesAsTheyArrive) {
  ChildProcess child(LEXWEND_CONVERT, {"--lines"}, {});
  ASSERT_TRUE(child.write("akuo\nn"));
  EXPECT_EQ(child.readOutput(100), "שלום\n");  // while the input is still open
  ASSERT_TRUE(child.write("v\n"));
  EXPECT_EQ(child.readOutput(100), "מה\n");
  child.closeInput();
  EXPECT_EQ(child.readAllOutput(), "");
  EXPECT_EQ(child.wait(), 0);
}

TEST(LexwendConvert, streamsATextOnceItsDirectionIsKnown) {
  ChildProcess child(LEXWEND_CONVERT, {}, {});
  ASSERT_TRUE(child.write("היי "));
  const std::string words = repeated("akuo nv\n", 20'000);
  std::thread writer([&] { child.write(words); });
  const std::string begin = "היי שלום מה\n";
  std::string output;
  while (output.size() < begin.size()) output += child.readOutput(100);  // while the input is still open
  EXPECT_EQ(output.substr(0, begin.size()), begin);
  std::string rest = "-";
  while (output.size() + 100'000 < words.size() && !rest.empty()) output += rest = child.readOutput(10'000);
  writer.join();
  child.closeInput();
  EXPECT_EQ(output + child.readAllOutput(), "היי " + repeated("שלום מה\n", 20'000));
  EXPECT_EQ(child.wait(), 0);
}

TEST(LexwendConvert, endsQuietlyWhenItsReaderGoesAway) {
  ChildProcess child(LEXWEND_CONVERT, {"--lines"}, {});
  child.closeOutput();
  child.write("akuo\n");
  EXPECT_EQ(child.readAllErrors(), "");
  EXPECT_EQ(child.wait(), 1);
}

TEST(LexwendConvert, failsWithAMessageWhenStandardOutputIsNotOpen) {
  ChildProcess::Streams streams;
  streams.closedOutput = true;
  const Outcome outcome = run({}, "akuo", streams);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.errors, StartsWith("lexwend-convert: write error: "));
}

TEST(LexwendConvert, failsWithAMessageOnAMissingFile) {
  const Files files;
  const std::string there = files.add("there", "akuo\nnv");
  const Outcome whole = run({there, files.path("missing")});
  EXPECT_EQ(whole.status, 1);
  EXPECT_EQ(whole.output, "") << "half a text was converted";
  EXPECT_EQ(whole.errors, "lexwend-convert: " + files.path("missing") + ": No such file or directory\n");
}

TEST(LexwendConvert, writesTheWholeLinesThatCameBeforeAMissingFile) {
  const Files files;
  const std::string there = files.add("there", "akuo\nnv");
  const Outcome lines = run({"--lines", "--report", there, files.path("missing"), there});
  EXPECT_EQ(lines.status, 1);
  EXPECT_EQ(lines.output, "שלום\n");
  EXPECT_EQ(lines.errors, "target=he changed=true\nlexwend-convert: " + files.path("missing") +
                              ": No such file or directory\n");
}

TEST(LexwendConvert, writesTheWordsThatCameBeforeAMissingFileOnceTheDirectionIsKnown) {
  const Files files;
  const std::string there = files.add("there", "היי akuo nv");
  const Outcome mixed = run({there, files.path("missing")});
  EXPECT_EQ(mixed.status, 1);
  EXPECT_EQ(mixed.output, "היי שלום ");
  EXPECT_EQ(mixed.errors, "lexwend-convert: " + files.path("missing") + ": No such file or directory\n");
}

TEST(LexwendConvert, readsAFileThatIsItsStandardInputFromWhereItStands) {
  const Files files;
  const std::string file = files.add("file", "akuo\nnv");
  const std::string script = "exec < \"$1\"; read -r line; echo \"$line\"; exec \"$2\" - -";
  expectSuccess(runProgram("/bin/sh", {"-c", script, "sh", file, LEXWEND_CONVERT}, ""), "akuo\nמה");
}

TEST(LexwendConvert, failsWithAMessageOnADirectory) {
  const Files files;
  const Outcome outcome = run({files.directory.string()});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.errors, "lexwend-convert: " + files.directory.string() + ": Is a directory\n");
}

TEST(LexwendConvert, showsTheUsageForWrongArguments) {
  for (const std::vector<std::string>& arguments : {std::vector<std::string>{"--layout"},
                                                    {"--layout", "fr"},
                                                    {"--map", "mine"},
                                                    {"--lines", "--null"},
                                                    {"-x"},
                                                    {"--nonsense", "file"}}) {
    const Outcome outcome = run(arguments, "akuo");
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.output, "");
    EXPECT_THAT(outcome.errors, StartsWith("lexwend-convert: "));
    EXPECT_THAT(outcome.errors, HasSubstr(convertUsage()));
  }
}

TEST(LexwendConvert, printsHelpAndVersion) {
  expectSuccess(run({"--help"}), convertUsage());
  expectSuccess(run({"--version"}), std::string("lexwend-convert ") + LEXWEND_VERSION + "\n");
}

}  // namespace
}  // namespace lexwend
