#include "views/components/symbol.h"

#include "views/components/device_pixels.h"

#include <QCache>
#include <QFileInfo>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

// Outside the namespace, as the macro demands; the symbols live in a static library.
static void addSymbols() { Q_INIT_RESOURCE(symbols); }

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr int cacheKibibytes = 2048;

struct Tinted
{
    QString path;
    QSize size; // in pixels
    QRgb color = 0;

    bool operator==(const Tinted &) const = default;
};

size_t qHash(const Tinted &tinted, size_t seed = 0)
{
    return qHashMulti(seed, tinted.path, tinted.size.width(), tinted.size.height(), tinted.color);
}

QImage render(const Tinted &tinted)
{
    if (!QFileInfo(tinted.path).isFile())
        return {};
    QSvgRenderer drawing(tinted.path);
    if (!drawing.isValid())
        return {};
    drawing.setAspectRatioMode(Qt::KeepAspectRatio);
    QImage image(tinted.size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    drawing.render(&painter, QRectF(image.rect()));
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), QColor::fromRgba(tinted.color));
    return image;
}

} // namespace

void paintSymbol(QPainter &painter, const QString &name, const QRectF &box, const QColor &color)
{
    [[maybe_unused]] static const bool added = (addSymbols(), true);
    paintTemplateImage(painter, u":/symbols/"_s + name + u".svg"_s, box, color);
}

void paintTemplateImage(QPainter &painter, const QString &path, const QRectF &box,
                        const QColor &color)
{
    static QCache<Tinted, QImage> cache(cacheKibibytes);
    const QRect pixels = devicePixels(painter, box);
    if (pixels.isEmpty() || color.alpha() == 0)
        return;
    const Tinted tinted{path, pixels.size(), color.rgba()};
    if (const QImage *cached = cache.object(tinted)) {
        paintDeviceImage(painter, pixels.topLeft(), *cached);
        return;
    }
    const QImage image = render(tinted);
    cache.insert(tinted, new QImage(image), 1 + image.sizeInBytes() / 1024);
    paintDeviceImage(painter, pixels.topLeft(), image);
}

} // namespace tovel
