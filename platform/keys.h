// SPDX-License-Identifier: MIT
#pragma once

#include <concepts>
#include <cstdint>
#include <type_traits>

namespace lexwend::platform {

/// A macOS virtual key code (Carbon, Events.h). It names the place of a key, not what the key types. It has
/// 32 bits, like hot keys and the stored setting. Keys that type have codes of 16 bits.
enum class KeyCode : std::uint32_t {};

/// The modifiers of a hot key, a Carbon mask (Events.h). A mask may hold other bits than the four below.
enum class Modifiers : std::uint32_t {};

/// The modifiers of a keyboard event, Quartz event flags (CGEventTypes.h). Not the bits of Modifiers:
/// modifiersOf() and eventFlagsOf() convert.
enum class EventFlags : std::uint64_t {};

inline constexpr Modifiers kNoModifiers{0};
inline constexpr Modifiers kCmdKey{0x0100};
inline constexpr Modifiers kShiftKey{0x0200};
inline constexpr Modifiers kOptionKey{0x0800};
inline constexpr Modifiers kControlKey{0x1000};

inline constexpr EventFlags kNoEventFlags{0};
inline constexpr EventFlags kEventFlagCapsLock{0x10000};
inline constexpr EventFlags kEventFlagShift{0x20000};
inline constexpr EventFlags kEventFlagControl{0x40000};
inline constexpr EventFlags kEventFlagOption{0x80000};
inline constexpr EventFlags kEventFlagCommand{0x100000};
inline constexpr EventFlags kEventFlagSecondaryFn{0x800000};

// Named by what they type on the ANSI layout.
inline constexpr KeyCode kKeyA{0};
inline constexpr KeyCode kKeyC{8};
inline constexpr KeyCode kKeyV{9};
inline constexpr KeyCode kKeyReturn{36};
inline constexpr KeyCode kKeyTab{48};
inline constexpr KeyCode kKeySpace{49};
inline constexpr KeyCode kKeyDelete{51};
inline constexpr KeyCode kKeyEscape{53};
inline constexpr KeyCode kKeyF1{122};
inline constexpr KeyCode kKeyF2{120};
inline constexpr KeyCode kKeyF3{99};
inline constexpr KeyCode kKeyF4{118};
inline constexpr KeyCode kKeyF5{96};
inline constexpr KeyCode kKeyF6{97};
inline constexpr KeyCode kKeyF7{98};
inline constexpr KeyCode kKeyF8{100};
inline constexpr KeyCode kKeyF9{101};
inline constexpr KeyCode kKeyF10{109};
inline constexpr KeyCode kKeyF11{103};
inline constexpr KeyCode kKeyF12{111};
inline constexpr KeyCode kKeyF13{105};
inline constexpr KeyCode kKeyF14{107};
inline constexpr KeyCode kKeyF15{113};
inline constexpr KeyCode kKeyF16{106};
inline constexpr KeyCode kKeyF17{64};
inline constexpr KeyCode kKeyF18{79};
inline constexpr KeyCode kKeyF19{80};

template <typename T>
concept KeyValue = std::same_as<T, KeyCode> || std::same_as<T, Modifiers> || std::same_as<T, EventFlags>;
template <typename T>
concept KeyMask = std::same_as<T, Modifiers> || std::same_as<T, EventFlags>;

/// The plain number, for a store, a system call or a message.
template <KeyValue T>
constexpr std::underlying_type_t<T> number(T value) {
  return static_cast<std::underlying_type_t<T>>(value);
}

template <KeyMask T>
constexpr T operator|(T a, T b) {
  return T{number(a) | number(b)};
}
template <KeyMask T>
constexpr T operator&(T a, T b) {
  return T{number(a) & number(b)};
}
template <KeyMask T>
constexpr T operator~(T mask) {
  return T{~number(mask)};
}
template <KeyMask T>
constexpr T& operator|=(T& a, T b) {
  return a = a | b;
}
/// Whether two masks share a bit.
template <KeyMask T>
constexpr bool overlap(T a, T b) {
  return number(a & b) != 0;
}

/// The four modifiers of a hot key among the flags of an event. Every other flag is dropped.
constexpr Modifiers modifiersOf(EventFlags flags) {
  Modifiers modifiers = kNoModifiers;
  if (overlap(flags, kEventFlagCommand)) modifiers |= kCmdKey;
  if (overlap(flags, kEventFlagShift)) modifiers |= kShiftKey;
  if (overlap(flags, kEventFlagOption)) modifiers |= kOptionKey;
  if (overlap(flags, kEventFlagControl)) modifiers |= kControlKey;
  return modifiers;
}

/// The flags of the four modifiers. Every other bit of the mask is dropped.
constexpr EventFlags eventFlagsOf(Modifiers modifiers) {
  EventFlags flags = kNoEventFlags;
  if (overlap(modifiers, kCmdKey)) flags |= kEventFlagCommand;
  if (overlap(modifiers, kShiftKey)) flags |= kEventFlagShift;
  if (overlap(modifiers, kOptionKey)) flags |= kEventFlagOption;
  if (overlap(modifiers, kControlKey)) flags |= kEventFlagControl;
  return flags;
}

}  // namespace lexwend::platform
