// SPDX-License-Identifier: MIT
// The figures that are taken inside one process, one per line, for bench/compare.
//
//   bench_figures text TEXT BYTES               writes a text to standard output
//   bench_figures throughput TEXT BYTES VECTORS  bytes per second of convert() and of memcpy, both warm
//   bench_figures selection                     nanoseconds for 16 bytes, and allocations
//   bench_figures memory COMMAND...              the peak of a program's resident memory, in bytes
//   bench_figures vectors                        the kinds of vectors that this processor has
#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <limits>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include <malloc.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "bench/texts.h"
#include "core/converter.h"
#include "core/simd/block_converter.h"

namespace {

std::size_t allocations = 0;

}  // namespace

void* operator new(std::size_t size) {
  ++allocations;
  if (void* const place = std::malloc(size)) return place;
  throw std::bad_alloc();
}
void operator delete(void* place) noexcept {
  std::free(place);
}
void operator delete(void* place, std::size_t /*size*/) noexcept {
  std::free(place);
}

namespace lexwend {
namespace {

// Keeps the compiler from leaving out what nobody reads.
void keep(const void* value) {
  asm volatile("" : : "g"(value) : "memory");
}

// Processor time: what else the machine does counts less.
template <typename Work>
double secondsOf(Work work) {
  const auto now = [] {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
  };
  const double begin = now();
  work();
  return now() - begin;
}

int throughput(const std::string& textKind, std::size_t bytes, const std::string& kind) {
  if (!simd::useVectors(kind)) return EXIT_FAILURE;
  // Memory that was freed is kept for the next round, as the target of the copy is.
  mallopt(M_MMAP_THRESHOLD, 1 << 30);
  mallopt(M_TRIM_THRESHOLD, INT_MAX);
  const std::string text = textOf(textKind, bytes);
  const Converter converter(LayoutMap::fallback());
  std::string copy(text.size(), ' ');
  double converting = std::numeric_limits<double>::max();
  double copying = converting;
  constexpr int kRounds = 16;  // the first warms up; the best counts
  for (int round = 0; round < kRounds; ++round) {
    converting = std::min(converting, secondsOf([&] { keep(converter.convert(text, true).text.data()); }));
    copying = std::min(copying, secondsOf([&] { keep(std::memcpy(copy.data(), text.data(), text.size())); }));
  }
  const auto size = static_cast<double>(text.size());
  std::printf("%.0f %.0f\n", size / converting, size / copying);
  return EXIT_SUCCESS;
}

int selection() {
  constexpr int kRounds = 5'000;
  const std::string selected = "akuo nv akunl he";
  const LayoutMap map = LayoutMap::fallback();
  const Converter converter(map);
  keep(converter.convert(selected, false).text.data());
  double alone = std::numeric_limits<double>::max();
  double afresh = alone;
  for (int turn = 0; turn < 20; ++turn) {
    alone = std::min(alone, secondsOf([&] {
                       for (int round = 0; round < kRounds; ++round) {
                         keep(converter.convert(selected, false).text.data());
                       }
                     }));
    afresh = std::min(afresh, secondsOf([&] {
                        for (int round = 0; round < kRounds; ++round) {
                          keep(Converter(map).convert(selected, false).text.data());
                        }
                      }));
  }
  std::size_t most = 0;
  for (const std::string& kind : textKinds()) {
    for (const std::size_t bytes : {std::size_t{16}, std::size_t{1000}, std::size_t{4'000'000}}) {
      const std::string text = textOf(kind, bytes);
      const std::size_t before = allocations;
      keep(converter.convert(text, true).text.data());
      most = std::max(most, allocations - before);
    }
  }
  std::printf("%.1f %.1f %zu\n", alone / kRounds * 1e9, afresh / kRounds * 1e9, most);
  return EXIT_SUCCESS;
}

// A child's peak counts from the memory of the process that it was forked from, so that must be small.
int memory(const std::vector<std::string>& command) {
  const pid_t child = fork();
  if (child == 0) {
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string& argument : command) arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    execv(arguments[0], arguments.data());
    _exit(EXIT_FAILURE);
  }
  int status = 0;
  rusage usage{};
  if (wait4(child, &status, 0, &usage) != child || status != 0) return EXIT_FAILURE;
  std::fprintf(stderr, "%ld\n", usage.ru_maxrss * 1024);
  return EXIT_SUCCESS;
}

int run(const std::vector<std::string>& arguments) {
  if (arguments.size() == 3 && arguments[0] == "text") {
    const std::string text = textOf(arguments[1], std::stoul(arguments[2]));
    return std::fwrite(text.data(), 1, text.size(), stdout) == text.size() ? EXIT_SUCCESS : EXIT_FAILURE;
  }
  if (arguments.size() == 4 && arguments[0] == "throughput") {
    return throughput(arguments[1], std::stoul(arguments[2]), arguments[3]);
  }
  if (arguments.size() >= 2 && arguments[0] == "memory") {
    return memory({arguments.begin() + 1, arguments.end()});
  }
  if (arguments == std::vector<std::string>{"selection"}) return selection();
  if (arguments == std::vector<std::string>{"vectors"}) {
    for (const std::string_view kind : simd::vectorKinds()) std::printf("%s\n", std::string(kind).c_str());
    return EXIT_SUCCESS;
  }
  return EXIT_FAILURE;
}

}  // namespace
}  // namespace lexwend

int main(int argc, char** argv) {
  return lexwend::run(std::vector<std::string>(argv + 1, argv + argc));
}
