// SPDX-License-Identifier: MIT
// How fast text is converted. "bytes_per_second" counts the bytes of the input.
//
//     cmake --preset bench && cmake --build --preset bench && build/bench/bench/bench_convert
#include <string>

#include <benchmark/benchmark.h>

#include "core/characters.h"
#include "core/converter.h"

namespace lexwend {
namespace {

constexpr std::size_t kMegabyte = 1'000'000;

std::string repeated(const std::string& part, std::size_t bytes) {
  std::string text;
  while (text.size() < bytes) text += part;
  return text;
}

std::string hebrew() {
  return repeated("יקךךםת ׳םרךגץ שלום מה שלומך\n", kMegabyte);
}
std::string english() {
  return repeated("akuo nv akunl, Hello world. 123\n", kMegabyte);
}
std::string mixed() {
  return repeated("היי akuo nv (שלום) aשb 123 .\n", kMegabyte);
}
std::string niqqud() {
  return repeated("בְּרֵאשִׁית בָּרָא אֱלֹהִים\n", kMegabyte);
}
std::string emoji() {
  return repeated("👩\u200D👩\u200D👧 🇮🇱🇺🇸 👍🏽 akuo ❤️\n", kMegabyte);
}
std::string chinese() {
  return repeated("中文字符测试，", kMegabyte);
}
std::string oneCluster() {
  return repeated("\u0301\u0323", kMegabyte);
}
std::string illFormed() {
  return repeated("\xFF\xE2\x82\x80", kMegabyte);
}

void convert(benchmark::State& state, const std::string& text) {
  const Converter converter(LayoutMap::fallback());
  for (auto _ : state) benchmark::DoNotOptimize(converter.convert(text, true));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

// The comparison at its worst: the first character changes its bytes but not its meaning, so all the rest is
// compared.
void convertEquivalently(benchmark::State& state, const std::string& text) {
  LayoutMap map;
  map.toHebrew["\u2126"] = "\u03A9";
  const Converter converter(map);
  std::string input = "\u2126 ";
  input += text;
  for (auto _ : state) benchmark::DoNotOptimize(converter.convert(input, false));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(input.size()));
}

// A whole fix: the converter is made afresh from the current map.
void makeConverterAndConvert(benchmark::State& state) {
  const LayoutMap map = LayoutMap::fallback();
  const std::string selection = "akuo nv akunl he";
  for (auto _ : state) benchmark::DoNotOptimize(Converter(map).convert(selection, false));
}

void countCharacters(benchmark::State& state, const std::string& text) {
  for (auto _ : state) benchmark::DoNotOptimize(characterCount(text));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

BENCHMARK_CAPTURE(convert, hebrew, hebrew());
BENCHMARK_CAPTURE(convert, english, english());
BENCHMARK_CAPTURE(convert, mixed, mixed());
BENCHMARK_CAPTURE(convert, niqqud, niqqud());
BENCHMARK_CAPTURE(convert, emoji, emoji());
BENCHMARK_CAPTURE(convert, chinese, chinese());
BENCHMARK_CAPTURE(convert, oneClusterOfAMegabyte, oneCluster());
BENCHMARK_CAPTURE(convert, illFormed, illFormed());
BENCHMARK_CAPTURE(convert, selectionOf16Bytes, std::string("akuo nv akunl he"));
BENCHMARK_CAPTURE(convertEquivalently, hebrew, hebrew());
BENCHMARK_CAPTURE(convertEquivalently, oneClusterOfAMegabyte, oneCluster());
BENCHMARK(makeConverterAndConvert);
BENCHMARK_CAPTURE(countCharacters, hebrew, hebrew());
BENCHMARK_CAPTURE(countCharacters, emoji, emoji());

}  // namespace
}  // namespace lexwend

BENCHMARK_MAIN();
