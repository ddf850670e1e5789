#pragma once

#include <gio/gio.h>

#include <memory>

namespace tovel {

// Owners of what GLib hands out. For sources alone: GLib's headers stay out of this room's headers.

struct GObjectRelease
{
    void operator()(void *object) const { g_object_unref(object); }
};

template <typename Object>
using GObjectPointer = std::unique_ptr<Object, GObjectRelease>;

struct GMemoryRelease
{
    void operator()(void *memory) const { g_free(memory); }
};

using GText = std::unique_ptr<char, GMemoryRelease>;

struct GErrorRelease
{
    void operator()(GError *error) const { g_error_free(error); }
};

using GErrorPointer = std::unique_ptr<GError, GErrorRelease>;

struct GKeyFileRelease
{
    void operator()(GKeyFile *keyFile) const { g_key_file_unref(keyFile); }
};

using GKeyFilePointer = std::unique_ptr<GKeyFile, GKeyFileRelease>;

} // namespace tovel
