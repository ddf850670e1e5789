#include "views/icon_images.h"

#include <QFile>
#include <QImageReader>

#include <algorithm>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 fileLimit = 8 * 1024 * 1024;
constexpr int picturesLimit = 32;
constexpr int sideLimit = 2048;
constexpr int menuSide = 20;
constexpr int windowSide = 128; // no session shows a window's icon larger

// The pictures of the style's file, in its order, until the visitor has enough and returns false.
template <typename Visitor>
void visitPictures(TovelIconStyle style, const Bundle &bundle, Visitor visit)
{
    const auto path = bundle.pathForResource(resourceName(style), u"icns"_s);
    if (!path || QFile(*path).size() > fileLimit)
        return;

    // The file says nothing of its pictures' sizes before they are read.
    QImageReader reader(*path, "icns");
    reader.setAutoDetectImageFormat(false); // which would load the readers of all other formats
    const int count = std::min(reader.imageCount(), picturesLimit);
    for (int i = 0; i < count; ++i) {
        if (!reader.jumpToImage(i))
            continue;
        const QImage picture = reader.read();
        const bool usable
            = !picture.isNull() && picture.width() <= sideLimit && picture.height() <= sideLimit;
        if (usable && !visit(picture))
            return;
    }
}

QImage scaled(const QImage &picture, int side)
{
    return picture.scaled(side, side, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

} // namespace

std::optional<QImage> image(TovelIconStyle style, const Bundle &bundle)
{
    QImage largest;
    visitPictures(style, bundle, [&largest](const QImage &picture) {
        if (picture.width() > largest.width())
            largest = picture;
        return true;
    });
    return largest.isNull() ? std::nullopt : std::optional(largest);
}

std::optional<QImage> image(TovelIconStyle style, int side, const Bundle &bundle)
{
    QImage best;
    visitPictures(style, bundle, [&best, side](const QImage &picture) {
        if (picture.width() > best.width())
            best = picture;
        return best.width() < side;
    });
    if (best.isNull())
        return std::nullopt;
    return scaled(best, side);
}

QList<QImage> windowImages(TovelIconStyle style, const Bundle &bundle)
{
    QList<QImage> images;
    visitPictures(style, bundle, [&images](const QImage &picture) {
        const bool enough = picture.width() >= windowSide;
        images.append(enough ? scaled(picture, windowSide) : picture);
        return !enough;
    });
    return images;
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
