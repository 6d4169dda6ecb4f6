// SPDX-License-Identifier: MIT
#pragma once

#include <utility>

#include <CoreFoundation/CoreFoundation.h>

namespace lexwend::platform::mac {

/// Owns one reference to a Core Foundation object, or nothing. Any thread on which the object may be
/// released.
template <typename T>
class CFRef {
 public:
  CFRef() = default;
  /// Takes over the reference that a function named Create or Copy returned. May be null.
  static CFRef adopt(T created) { return CFRef(created); }
  /// Adds a reference of its own to what a function named Get returned. May be null.
  static CFRef share(T borrowed) {
    if (borrowed != nullptr) CFRetain(borrowed);
    return CFRef(borrowed);
  }

  CFRef(const CFRef& other) : CFRef(share(other.object_)) {}
  CFRef(CFRef&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  CFRef& operator=(CFRef other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~CFRef() {
    if (object_ != nullptr) CFRelease(object_);
  }

  T get() const { return object_; }
  explicit operator bool() const { return object_ != nullptr; }

 private:
  explicit CFRef(T object) : object_(object) {}
  T object_ = nullptr;
};

}  // namespace lexwend::platform::mac
