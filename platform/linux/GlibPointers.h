#pragma once

#include <gio/gio.h>

#include <memory>
#include <string>

namespace letterloft {

// GLib's values, let go of as their owner goes. For the implementations only.
struct GlibRelease {
    void operator()(GVariant* variant) const { g_variant_unref(variant); }
    void operator()(GVariantIter* iterator) const { g_variant_iter_free(iterator); }
    void operator()(GError* error) const { g_error_free(error); }
    void operator()(gchar* text) const { g_free(text); }
    void operator()(gchar** texts) const { g_strfreev(texts); }
};

template <typename Value>
using GlibPointer = std::unique_ptr<Value, GlibRelease>;

struct GObjectRelease {
    void operator()(gpointer object) const { g_object_unref(object); }
};

template <typename Object>
using GObjectPointer = std::unique_ptr<Object, GObjectRelease>;

} // namespace letterloft
