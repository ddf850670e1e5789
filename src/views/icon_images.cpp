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

} // namespace

std::optional<QImage> image(TovelIconStyle style, const Bundle &bundle)
{
    const auto path = bundle.pathForResource(resourceName(style), u"icns"_s);
    if (!path || QFile(*path).size() > fileLimit)
        return std::nullopt;

    // The file says nothing of its pictures' sizes before they are read.
    QImageReader reader(*path, "icns");
    QImage largest;
    const int count = std::min(reader.imageCount(), picturesLimit);
    for (int i = 0; i < count; ++i) {
        if (!reader.jumpToImage(i))
            continue;
        QImage picture = reader.read();
        if (picture.width() > largest.width() && picture.width() <= sideLimit
            && picture.height() <= sideLimit)
            largest = std::move(picture);
    }
    if (largest.isNull())
        return std::nullopt;
    return largest;
}

std::optional<QImage> menuImage(TovelIconStyle style, qreal devicePixelRatio, const Bundle &bundle)
{
    const auto full = image(style, bundle);
    if (!full)
        return std::nullopt;
    const qreal ratio = std::clamp(devicePixelRatio, 1.0, 8.0);
    const int side = qRound(menuSide * ratio);
    QImage small = full->scaled(side, side, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    small.setDevicePixelRatio(ratio);
    return small;
}

} // namespace tovel
