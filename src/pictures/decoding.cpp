#include "pictures/decoding.h"

#include <QBuffer>
#include <QImageReader>
#include <QPainter>
#include <QSvgRenderer>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include <gio/gio.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

namespace tovel {

namespace {

constexpr qsizetype largestDrawing = 4 * 1024 * 1024; // bytes, decompressed
constexpr int largestSide = 4096;

constexpr std::uint32_t filesCalls[] = {
#ifdef __NR_open
    __NR_open,
    __NR_creat,
#endif
    __NR_openat,
    __NR_openat2,
};

// From now on, and for good, this process can open no file; those that are open stay so. Meant for
// what a picture asks its decoder to do, not for a decoder that does a stranger's bidding.
bool forbidFiles()
{
    constexpr auto number = static_cast<std::uint32_t>(offsetof(seccomp_data, nr));
    std::vector<sock_filter> filter{BPF_STMT(BPF_LD | BPF_W | BPF_ABS, number)};
    for (const std::uint32_t call : filesCalls) {
        filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, call, 0, 1));
        filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EACCES));
    }
    filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    const sock_fprog program{static_cast<unsigned short>(filter.size()), filter.data()};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0
        && ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

struct Unref
{
    void operator()(void *object) const { g_object_unref(object); }
};

bool isCompressed(QByteArrayView bytes) { return bytes.startsWith("\x1f\x8b"); }

// Nothing for what is damaged, or becomes larger than a drawing may be.
std::optional<QByteArray> decompressed(const QByteArray &bytes)
{
    const std::unique_ptr<GZlibDecompressor, Unref> decompressor(
        g_zlib_decompressor_new(G_ZLIB_COMPRESSOR_FORMAT_GZIP));
    QByteArray result(largestDrawing, Qt::Uninitialized);
    gsize read = 0;
    gsize written = 0;
    for (GConverterResult state = G_CONVERTER_CONVERTED; state != G_CONVERTER_FINISHED;) {
        gsize readNow = 0;
        gsize writtenNow = 0;
        GError *error = nullptr;
        state
            = g_converter_convert(G_CONVERTER(decompressor.get()), bytes.constData() + read,
                                  static_cast<gsize>(bytes.size()) - read, result.data() + written,
                                  static_cast<gsize>(result.size()) - written,
                                  G_CONVERTER_INPUT_AT_END, &readNow, &writtenNow, &error);
        if (state == G_CONVERTER_ERROR) {
            g_error_free(error);
            return std::nullopt;
        }
        read += readNow;
        written += writtenNow;
    }
    return result.first(static_cast<qsizetype>(written));
}

// Whether these may be the bytes of an XML document, in whichever encoding.
bool isMarkup(QByteArrayView bytes)
{
    constexpr QByteArrayView before("\xef\xbb\xbf\xff\xfe \t\r\n\0", 10);
    const auto first
        = std::ranges::find_if(bytes, [&](char byte) { return !before.contains(byte); });
    return first != bytes.end() && *first == '<';
}

QImage drawn(const QByteArray &drawing, int pixels)
{
    QSvgRenderer renderer(drawing);
    const QSize size
        = renderer.defaultSize().scaled(pixels, pixels, Qt::KeepAspectRatio).expandedTo({1, 1});
    if (!renderer.isValid() || renderer.defaultSize().isEmpty())
        return {};
    QImage image(size, QImage::Format_RGBA8888_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    renderer.render(&painter, QRectF(image.rect()));
    return image;
}

QImage fitted(const QImage &image, int pixels)
{
    if (image.isNull() || std::max(image.width(), image.height()) == pixels)
        return image;
    const QSize size = image.size().scaled(pixels, pixels, Qt::KeepAspectRatio).expandedTo({1, 1});
    return image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

} // namespace

QImage decodePicture(QByteArray bytes, int pixels)
{
    if (isCompressed(bytes)) {
        const auto content = decompressed(bytes);
        if (!content || !isMarkup(*content))
            return {};
        bytes = *content;
    }
    if (isMarkup(bytes)) {
        return bytes.size() <= largestDrawing && forbidFiles() ? drawn(bytes, pixels) : QImage();
    }
    QBuffer buffer(&bytes);
    QImageReader reader(&buffer);
    // Finds the decoder, whose own files have to be there.
    if (!reader.canRead() || !forbidFiles())
        return {};
    const QSize size = reader.size();
    if (!size.isValid() || size.width() > largestSide || size.height() > largestSide)
        return {};
    return fitted(reader.read(), pixels).convertToFormat(QImage::Format_RGBA8888_Premultiplied);
}

} // namespace tovel
