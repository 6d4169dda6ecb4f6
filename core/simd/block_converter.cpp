// SPDX-License-Identifier: MIT
#include "core/simd/block_converter.h"

#include <atomic>
#include <bit>

// This file is compiled once for every kind of vectors; the best that the processor has is called.
#undef HWY_TARGET_INCLUDE
#undef HWY_DISABLED_TARGETS
#define HWY_DISABLED_TARGETS (HWY_SSSE3 | HWY_AVX3_DL)  // they bring nothing that is used here
#define HWY_TARGET_INCLUDE "core/simd/block_converter.cpp"
#include <hwy/foreach_target.h>
//
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace lexwend::simd::HWY_NAMESPACE {
#if HWY_TARGET != HWY_SCALAR

namespace hn = hwy::HWY_NAMESPACE;

using Tag = hn::CappedTag<std::uint8_t, kBlock>;
using Vector = hn::Vec<Tag>;
using Bits = std::uint64_t;  // one for each byte of a block; the first byte has the lowest

constexpr std::uint8_t kLetterLead = 0xD7;  // of U+05C0 to U+05FF: letters, and points 81, 82, 84, 85, 87
constexpr std::uint8_t kPointLead = 0xD6;   // of U+0580 to U+05BF: points and accents 91 to BF, except BE

/// For eight bytes, the places of those whose bit is set.
using Shrink = std::array<std::uint8_t, 8>;
alignas(64) constexpr auto kShrinks = [] {
  std::array<Shrink, 256> shrinks{};
  for (std::size_t kept = 0; kept < shrinks.size(); ++kept) {
    std::size_t place = 0;
    for (std::size_t byte = 0; byte < 8; ++byte) {
      if ((kept >> byte & 1) != 0) shrinks[kept][place++] = static_cast<std::uint8_t>(byte);
    }
  }
  return shrinks;
}();

/// For eight bytes, each with the lead of Hebrew letters before it, the places of those that are put out: all
/// bytes, and the leads before those whose bit is set.
using Growth = std::array<std::uint8_t, 16>;
alignas(64) constexpr auto kGrowths = [] {
  std::array<Growth, 256> growths{};
  for (std::size_t grown = 0; grown < growths.size(); ++grown) {
    std::size_t place = 0;
    for (std::size_t byte = 0; byte < 8; ++byte) {
      if ((grown >> byte & 1) != 0) growths[grown][place++] = static_cast<std::uint8_t>(2 * byte);
      growths[grown][place++] = static_cast<std::uint8_t>(2 * byte + 1);
    }
  }
  return growths;
}();

HWY_INLINE constexpr Bits bitsBelow(std::size_t place) {
  return place >= kBlock ? ~Bits{0} : (Bits{1} << place) - 1;
}

struct Block {
  alignas(kBlock) std::array<std::uint8_t, kBlock> bytes;
  alignas(kBlock) std::array<std::uint8_t, kBlock> mapped;  // with every entry of the table applied
  std::size_t lastCharacter;                                // where the last one that is there whole begins
};

/// What is to be done with a block.
struct Decision {
  std::size_t settled = 0;  // how many bytes from the start can be put out now
  Bits converted = 0;       // of them, those that give way to their entries
  Bits dropped = 0;         // of them, the first bytes of pairs that become one byte
};

/// The truth of a question about each byte of a block.
template <typename Question, typename... Bytes>
HWY_INLINE Bits bitsWhere(Question question, const Bytes&... bytes) {
  const Tag d;
  Bits bits = 0;
  for (std::size_t place = 0; place < kBlock; place += hn::Lanes(d)) {
    Bits part = 0;
    hn::StoreMaskBits(d, question(hn::Load(d, bytes.data() + place)...),
                      reinterpret_cast<std::uint8_t*>(&part));
    bits |= part << place;
  }
  return bits;
}

HWY_INLINE auto is(Vector bytes, std::uint8_t byte) {
  return hn::Eq(bytes, hn::Set(Tag(), byte));
}

// Bytes of 80 and more are negative as signed ones, which every processor compares.
HWY_INLINE auto isLess(Vector bytes, std::int8_t bound) {
  const hn::RebindToSigned<Tag> d;
  return hn::RebindMask(Tag(), hn::Lt(hn::BitCast(d, bytes), hn::Set(d, bound)));
}

HWY_INLINE auto isNotAscii(Vector bytes) {
  return isLess(bytes, 0);
}

HWY_INLINE auto isTrail(Vector bytes) {
  return isLess(bytes, -64);  // 80 to BF
}

HWY_INLINE auto isBetween(Vector bytes, std::uint8_t lowest, std::uint8_t highest) {
  const Tag d;
  const Vector above = hn::Sub(bytes, hn::Set(d, lowest));
  return hn::Eq(above, hn::Min(above, hn::Set(d, static_cast<std::uint8_t>(highest - lowest))));
}

HWY_INLINE auto isLatin(Vector bytes) {
  return isBetween(hn::Or(bytes, hn::Set(Tag(), std::uint8_t{0x20})), 'a', 'z');
}

HWY_INLINE Vector applied(const ByteTable& table, Vector bytes) {
  const Tag d;
  const Vector high = hn::ShiftRight<4>(bytes);
  const Vector low = hn::And(bytes, hn::Set(d, std::uint8_t{15}));
  Vector difference = hn::Zero(d);
  for (const ByteTable::Row& row : table) {
    const Vector entries = hn::TableLookupBytes(hn::LoadDup128(d, row.differences.data()), low);
    difference = hn::Or(difference, hn::IfThenElseZero(is(high, row.high), entries));
  }
  return hn::Xor(bytes, difference);
}

/// The words, runs of `inWords`, that hold a marked byte. Each must end within the block.
HWY_INLINE Bits wordsWith(Bits marked, Bits inWords) {
  // The sum carries from the first mark to behind the end of its word; from there the marks spread back.
  Bits found = marked | (inWords & ~(inWords + marked));
  for (unsigned step = 1; step < kBlock; step *= 2) {
    found |= inWords & (found >> step);
    inWords &= inWords >> step;
  }
  return found;
}

/// Which bytes of a block are what, where it holds more than ASCII.
struct Pairs {
  Bits letterTrails = 0;  // the second bytes of U+05C0 to U+05FF
  Bits trails = 0;        // these, and the second bytes of points and accents
  Bits joiningLeads = 0;  // the first bytes of points and accents
  Bits unknown = 0;       // all that is neither ASCII nor one of these
};

HWY_INLINE Pairs pairsOf(const Block& block, Bits notAscii) {
  Pairs pairs;
  const Bits letterLeads = bitsWhere([](Vector v) { return is(v, kLetterLead); }, block.bytes);
  const Bits pointLeads = bitsWhere([](Vector v) { return is(v, kPointLead); }, block.bytes);
  const Bits trails = bitsWhere([](Vector v) { return isTrail(v); }, block.bytes);
  pairs.letterTrails = letterLeads << 1 & trails;
  pairs.trails = pairs.letterTrails;
  const Bits lowTrails =
      pairs.letterTrails & bitsWhere([](Vector v) { return isLess(v, -128 + 8); }, block.bytes);
  if ((pointLeads | lowTrails) != 0) {
    const auto isPoint = [](Vector v) { return hn::AndNot(is(v, 0xBE), isBetween(v, 0x91, 0xBF)); };
    const auto isSign = [](Vector v) { return hn::Or(hn::Or(is(v, 0x80), is(v, 0x83)), is(v, 0x86)); };
    const Bits points = pointLeads << 1 & bitsWhere(isPoint, block.bytes);
    pairs.trails |= points;
    pairs.joiningLeads = (points | (lowTrails & ~bitsWhere(isSign, block.bytes))) >> 1;
  }
  const Bits parted = (letterLeads | pointLeads) & ~bitsBelow(kBlock - 1);  // the last byte, never put out
  pairs.unknown = notAscii & ~(pairs.trails | pairs.trails >> 1 | parted);
  return pairs;
}

/// Where the last whole character begins in bytes that end in ASCII or in pairs.
HWY_INLINE std::size_t lastCharacter(std::string_view bytes) {
  const auto isTrail = [&](std::size_t place) { return (bytes[place] & 0xC0) == 0x80; };
  const auto isLead = [&](std::size_t place) { return (bytes[place] & 0xC0) == 0xC0; };
  const std::size_t last = bytes.size() - (isLead(bytes.size() - 1) ? 2 : 1);
  return isTrail(last) ? last - 1 : last;
}

/// How much can be put out of what stands before the first strange byte.
HWY_INLINE std::size_t settledBefore(Bits strange, Bits trails) {
  const auto known = static_cast<std::size_t>(std::countr_zero(strange));
  if (known == 0) return 0;
  const std::size_t settled = known - 1;
  return settled != 0 && (trails >> settled & 1) != 0 ? settled - 1 : settled;
}

HWY_INLINE Decision decide(const ByteTable& table, Words words, const Block& block) {
  const Bits notAscii = bitsWhere([](Vector v) { return isNotAscii(v); }, block.bytes);
  const Pairs pairs = notAscii != 0 ? pairsOf(block, notAscii) : Pairs();
  const Bits characters = ~notAscii | pairs.letterTrails;  // the last bytes of what may be converted
  const Bits alone = ~(pairs.joiningLeads >> 1);
  const Bits excepted =
      characters & bitsWhere([](Vector v) { return is(v, ByteTable::kNotInBlocks); }, block.mapped);
  const Bits strange = pairs.unknown | excepted | (excepted & pairs.letterTrails) >> 1;

  // Where the next block begins hangs on as little as it can: that is what the processor waits for.
  Decision decision;
  Bits selected = ~Bits{0};
  if (words == Words::every) {
    // The last known character may go with what follows it.
    decision.settled = block.lastCharacter;
    if (HWY_UNLIKELY(strange != 0)) decision.settled = settledBefore(strange, pairs.trails);
  } else {
    const auto isSpace = [](Vector v) { return hn::Or(is(v, ' '), isBetween(v, '\t', '\r')); };
    const auto isAlefToTav = [](Vector v) { return isBetween(v, 0x90, 0xAA); };
    Bits spaces = bitsWhere(isSpace, block.bytes);
    if (HWY_UNLIKELY(strange != 0)) spaces &= bitsBelow(static_cast<std::size_t>(std::countr_zero(strange)));
    decision.settled = kBlock - static_cast<std::size_t>(std::countl_zero(spaces));
    const Bits inWords = ~spaces & bitsBelow(decision.settled);
    const Bits latin = bitsWhere([](Vector v) { return isLatin(v); }, block.bytes) & alone & inWords;
    const Bits hebrew = bitsWhere(isAlefToTav, block.bytes) & pairs.letterTrails & inWords;
    const Bits source = table.sourceIsHebrew() ? hebrew : latin;
    const Bits other = table.sourceIsHebrew() ? latin : hebrew;
    selected = wordsWith(source, inWords) & (source | ~wordsWith(other, inWords));
  }
  const Bits different =
      ~bitsWhere([](Vector v, Vector mapped) { return hn::Eq(v, mapped); }, block.bytes, block.mapped);
  decision.converted = different & characters & alone & selected & bitsBelow(decision.settled);
  decision.dropped = (decision.converted & pairs.letterTrails) >> 1;
  return decision;
}

HWY_INLINE const std::uint8_t* bytesOf(const Bits& bits) {
  return reinterpret_cast<const std::uint8_t*>(&bits);
}

/// What a part of the block becomes, byte for byte.
template <typename D>
HWY_INLINE hn::Vec<D> converted(D d, const Block& block, Bits converted, std::size_t place) {
  const Bits part = converted >> place;
  return hn::IfThenElse(hn::LoadMaskBits(d, bytesOf(part)), hn::Load(d, block.mapped.data() + place),
                        hn::Load(d, block.bytes.data() + place));
}

/// Puts out a block none of whose bytes becomes two. Writes up to a block more than it answers.
HWY_INLINE std::size_t writeShrunk(const Block& block, const Decision& decision, std::uint8_t* output) {
  const Tag d;
  alignas(kBlock) std::array<std::uint8_t, kBlock> bytes;
  std::uint8_t* const whole = decision.dropped == 0 ? output : bytes.data();
  for (std::size_t place = 0; place < kBlock; place += hn::Lanes(d)) {
    hn::StoreU(converted(d, block, decision.converted, place), d, whole + place);
  }
  if (decision.dropped == 0) return decision.settled;
  const Bits kept = bitsBelow(decision.settled) & ~decision.dropped;
  const hn::FixedTag<std::uint8_t, 8> eight;
  std::size_t written = 0;
  for (std::size_t place = 0; place < kBlock; place += 8) {
    const auto keptHere = static_cast<std::uint8_t>(kept >> place);
    const auto places = hn::Load(eight, kShrinks[keptHere].data());
    hn::StoreU(hn::TableLookupBytes(hn::Load(eight, bytes.data() + place), places), eight, output + written);
    written += static_cast<std::size_t>(std::popcount(keptHere));
  }
  return written;
}

/// Puts out a block of which the bytes of `grown` become the last ones of Hebrew characters: before each of
/// them comes the first one. Writes up to sixteen bytes more than it answers.
HWY_INLINE std::size_t writeGrown(const Block& block, const Decision& decision, Bits grown,
                                  std::uint8_t* output) {
  const hn::FixedTag<std::uint8_t, 16> d;
  const auto leads = hn::Set(d, kLetterLead);
  std::size_t written = 0;
  for (std::size_t place = 0; place < decision.settled; place += 16) {
    const auto bytes = converted(d, block, decision.converted, place);
    auto pairs = hn::InterleaveLower(d, leads, bytes);
    for (const std::size_t half : {place, place + 8}) {
      const auto grownHere = static_cast<std::uint8_t>(grown >> half);
      hn::StoreU(hn::TableLookupBytes(pairs, hn::Load(d, kGrowths[grownHere].data())), d, output + written);
      written += 8U + static_cast<std::size_t>(std::popcount(grownHere));
      pairs = hn::InterleaveUpper(d, leads, bytes);
    }
  }
  // What stands behind the settled bytes was put out too.
  const std::size_t put = (decision.settled + 15) / 16 * 16;
  return written - (put - decision.settled);
}

BlockProgress convertBlocks(const ByteTable& table, Words words, std::string_view text, char* output,
                            std::size_t room) {
  BlockProgress progress;
  const Tag d;
  auto* const out = reinterpret_cast<std::uint8_t*>(output);
  while (text.size() - progress.read >= kBlock && room - progress.written >= kRoomOfBlock) {
    Block block;
    block.lastCharacter = lastCharacter(text.substr(progress.read, kBlock));
    for (std::size_t place = 0; place < kBlock; place += hn::Lanes(d)) {
      const Vector bytes =
          hn::LoadU(d, reinterpret_cast<const std::uint8_t*>(text.data()) + progress.read + place);
      hn::Store(bytes, d, block.bytes.data() + place);
      hn::Store(applied(table, bytes), d, block.mapped.data() + place);
    }
    const Decision decision = decide(table, words, block);
    if (decision.settled == 0) break;
    const Bits grown = decision.converted & bitsWhere([](Vector v) { return isNotAscii(v); }, block.mapped);
    progress.written += grown == 0 ? writeShrunk(block, decision, out + progress.written)
                                   : writeGrown(block, decision, grown, out + progress.written);
    progress.read += decision.settled;
    progress.changed = progress.changed || decision.converted != 0;
  }
  return progress;
}

std::size_t skipToLatin(std::string_view text, std::size_t from) {
  const Tag d;
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  for (; from + kBlock <= text.size(); from += kBlock) {
    auto found = isLatin(hn::LoadU(d, bytes + from));
    for (std::size_t place = hn::Lanes(d); place < kBlock; place += hn::Lanes(d)) {
      found = hn::Or(found, isLatin(hn::LoadU(d, bytes + from + place)));
    }
    if (!hn::AllFalse(d, found)) break;
  }
  return from;
}

#endif

}  // namespace lexwend::simd::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace lexwend::simd {
namespace {

struct Kind {
  std::string_view name;
  decltype(&convertBlocks) convert;
  decltype(&skipToLatin) skip;
};

constexpr Kind kNone{
    "none", [](const ByteTable&, Words, std::string_view, char*, std::size_t) { return BlockProgress(); },
    [](std::string_view, std::size_t from) { return from; }};

// Highway's own choice is not used: its library takes five milliseconds to load, since it measures a timer
// then.
std::vector<const Kind*> findKinds() {
  std::vector<const Kind*> kinds;
#if HWY_TARGETS & (HWY_AVX3 | HWY_AVX2 | HWY_SSE4)
  const bool hasSse4 =
      __builtin_cpu_supports("sse4.2") && __builtin_cpu_supports("pclmul") && __builtin_cpu_supports("aes");
  const bool hasAvx2 = hasSse4 && __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") &&
                       __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2");
  const bool hasAvx512 = hasAvx2 && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vl") &&
                         __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512dq") &&
                         __builtin_cpu_supports("avx512cd");
  static constexpr Kind kAvx512{"AVX-512", &N_AVX3::convertBlocks, &N_AVX3::skipToLatin};
  static constexpr Kind kAvx2{"AVX2", &N_AVX2::convertBlocks, &N_AVX2::skipToLatin};
  static constexpr Kind kSse4{"SSE4", &N_SSE4::convertBlocks, &N_SSE4::skipToLatin};
  if (hasAvx512) kinds.push_back(&kAvx512);
  if (hasAvx2) kinds.push_back(&kAvx2);
  if (hasSse4) kinds.push_back(&kSse4);
#elif HWY_TARGETS & HWY_NEON
  static constexpr Kind kNeon{"NEON", &N_NEON::convertBlocks, &N_NEON::skipToLatin};
  kinds.push_back(&kNeon);
#endif
  kinds.push_back(&kNone);
  return kinds;
}

const std::vector<const Kind*>& kinds() {
  static const std::vector<const Kind*> kKinds = findKinds();
  return kKinds;
}

std::atomic<const Kind*> used = nullptr;

const Kind& kindInUse() {
  const Kind* kind = used.load(std::memory_order_relaxed);
  if (kind == nullptr) used.store(kind = kinds().front(), std::memory_order_relaxed);
  return *kind;
}

}  // namespace

std::vector<std::string_view> vectorKinds() {
  std::vector<std::string_view> names;
  for (const Kind* const kind : kinds()) names.push_back(kind->name);
  return names;
}

bool useVectors(std::string_view name) {
  for (const Kind* const kind : kinds()) {
    if (kind->name == name) {
      used.store(kind, std::memory_order_relaxed);
      return true;
    }
  }
  return false;
}

BlockProgress convertBlocks(const ByteTable& table, Words words, std::string_view text, char* output,
                            std::size_t room) {
  return kindInUse().convert(table, words, text, output, room);
}

std::size_t skipToLatin(std::string_view text, std::size_t from) {
  return kindInUse().skip(text, from);
}

}  // namespace lexwend::simd
#endif
