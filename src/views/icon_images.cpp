#include "views/icon_images.h"

#include "platform/regular_file.h"

#include <QBuffer>
#include <QImageReader>
#include <QtEndian>

#include <algorithm>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 fileLimit = 8 * 1024 * 1024;
constexpr quint32 sideLimit = 2048;
constexpr qsizetype headerSize = 8; // of the file and of each entry: a type and a length
constexpr int menuSide = 20;
constexpr int windowSide = 128; // no session shows a window's icon larger

// The width that a PNG picture states of itself; none when the bytes are no such picture, or when
// it is far larger than an icon.
std::optional<int> statedSide(QByteArrayView png)
{
    constexpr QByteArrayView magic("\x89PNG\r\n\x1a\n");
    constexpr qsizetype widthAt = 16;
    if (!png.startsWith(magic) || png.size() < widthAt + 8)
        return std::nullopt;
    const auto width = qFromBigEndian<quint32>(png.data() + widthAt);
    const auto height = qFromBigEndian<quint32>(png.data() + widthAt + 4);
    if (width == 0 || height == 0 || std::max(width, height) > sideLimit)
        return std::nullopt;
    return static_cast<int>(width);
}

QImage decoded(IconPicture picture)
{
    QBuffer buffer(&picture.png);
    QImageReader reader(&buffer, "png");
    // Trying for other formats would load their plugins, and all that these lean on, at each start.
    reader.setAutoDetectImageFormat(false);
    return reader.read();
}

// The length that a header at the beginning of the bytes states, itself included; 0 when it is not
// one, or states more than there is.
qsizetype statedLength(QByteArrayView bytes)
{
    if (bytes.size() < headerSize)
        return 0;
    const qsizetype length = qFromBigEndian<quint32>(bytes.data() + 4);
    return length >= headerSize && length <= bytes.size() ? length : 0;
}

QList<IconPicture> pictures(TovelIconStyle style, const Bundle &bundle)
{
    const auto path = bundle.pathForResource(resourceName(style), u"icns"_s);
    if (!path)
        return {};
    return iconPictures(readRegularFile(*path, fileLimit).value_or(QByteArray()));
}

QImage scaled(const QImage &picture, int side)
{
    return picture.scaled(side, side, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

} // namespace

QList<IconPicture> iconPictures(const QByteArray &file)
{
    if (!file.startsWith("icns"))
        return {};
    QList<IconPicture> result;
    QByteArrayView rest = QByteArrayView(file).first(statedLength(file));
    rest = rest.sliced(std::min(headerSize, rest.size()));
    while (const qsizetype length = statedLength(rest)) {
        const QByteArrayView content = rest.first(length).sliced(headerSize);
        if (const auto side = statedSide(content))
            result.append({content.toByteArray(), *side});
        rest = rest.sliced(length);
    }
    std::ranges::stable_sort(result, {}, &IconPicture::side);
    return result;
}

std::optional<QImage> image(TovelIconStyle style, const Bundle &bundle)
{
    const QList<IconPicture> all = pictures(style, bundle);
    for (auto picture = all.crbegin(); picture != all.crend(); ++picture) {
        if (QImage image = decoded(*picture); !image.isNull())
            return image;
    }
    return std::nullopt;
}

std::optional<QImage> image(TovelIconStyle style, int side, const Bundle &bundle)
{
    const QList<IconPicture> all = pictures(style, bundle);
    const auto smaller = [side](const IconPicture &picture) { return picture.side < side; };
    for (auto it = std::ranges::find_if_not(all, smaller); it != all.end(); ++it) {
        if (const QImage image = decoded(*it); !image.isNull())
            return scaled(image, side);
    }
    const auto largest = image(style, bundle);
    return largest ? std::optional(scaled(*largest, side)) : std::nullopt;
}

QList<QImage> windowImages(TovelIconStyle style, const Bundle &bundle)
{
    QList<QImage> images;
    const QList<IconPicture> all = pictures(style, bundle);
    for (const IconPicture &picture : all) {
        if (picture.side > windowSide)
            break;
        if (QImage image = decoded(picture); !image.isNull())
            images.append(std::move(image));
    }
    if (!images.isEmpty())
        return images;
    const auto large = image(style, windowSide, bundle);
    return large ? QList<QImage>{*large} : QList<QImage>();
}

std::optional<QImage> menuImage(TovelIconStyle style, qreal devicePixelRatio, const Bundle &bundle)
{
    const qreal ratio = std::clamp(devicePixelRatio, 1.0, 8.0);
    auto small = image(style, qRound(menuSide * ratio), bundle);
    if (small)
        small->setDevicePixelRatio(ratio);
    return small;
}

} // namespace tovel
