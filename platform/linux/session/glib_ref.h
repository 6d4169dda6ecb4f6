// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

#include <gio/gio.h>

namespace lexwend::platform {

struct GVariantUnref {
  void operator()(GVariant* value) const { g_variant_unref(value); }
};
/// Owns one reference to a variant.
using GVariantRef = std::unique_ptr<GVariant, GVariantUnref>;

struct GObjectUnref {
  void operator()(gpointer object) const { g_object_unref(object); }
};
/// Owns one reference to a GObject.
template <class T>
using GObjectRef = std::unique_ptr<T, GObjectUnref>;

struct GErrorFree {
  void operator()(GError* error) const { g_error_free(error); }
};
using GErrorRef = std::unique_ptr<GError, GErrorFree>;

}  // namespace lexwend::platform
