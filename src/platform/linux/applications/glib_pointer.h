#pragma once

#include <QByteArrayView>

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

struct GTextsRelease
{
    void operator()(char **texts) const { g_strfreev(texts); }
};

using GTexts = std::unique_ptr<char *, GTextsRelease>;

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

// Null, with the error filled in, for what is no key file.
inline GKeyFilePointer parseKeyFile(QByteArrayView content, GError **error)
{
    GKeyFilePointer file(g_key_file_new());
    // Null stands for nothing at all elsewhere, but not there.
    const char *bytes = content.isEmpty() ? "" : content.data();
    if (!g_key_file_load_from_data(file.get(), bytes, static_cast<gsize>(content.size()),
                                   G_KEY_FILE_NONE, error))
        return nullptr;
    return file;
}

} // namespace tovel
