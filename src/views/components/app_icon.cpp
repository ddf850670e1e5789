#include "views/components/app_icon.h"

#include "views/components/accessible_surface.h"
#include "views/components/button_look.h"
#include "views/components/device_pixels.h"
#include "views/components/symbol.h"
#include "views/theme.h"

#include <QCache>
#include <QFile>
#include <QFileInfo>
#include <QIcon>
#include <QImageReader>
#include <QPainter>
#include <QRegularExpression>

#include <algorithm>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 largestFile = 8 * 1024 * 1024;
constexpr qint64 largestDrawing = 512 * 1024;
constexpr int largestSide = 4096;
constexpr int cacheKibibytes = 8 * 1024;

struct IconKey
{
    QString source;
    QString version; // of a file its date, else the theme
    int pixels = 0;

    bool operator==(const IconKey &) const = default;
};

size_t qHash(const IconKey &key, size_t seed = 0)
{
    return qHashMulti(seed, key.source, key.version, key.pixels);
}

bool isPath(const QString &source) { return source.startsWith(u'/') || source.startsWith(u":/"); }

QString version(const QString &source)
{
    if (!isPath(source))
        return QIcon::themeName();
    const QDateTime changed = QFileInfo(source).lastModified();
    return QString::number(changed.isValid() ? changed.toMSecsSinceEpoch() : 0);
}

QImage fitted(const QImage &image, int pixels)
{
    if (image.isNull() || std::max(image.width(), image.height()) == pixels)
        return image;
    return image.scaled(pixels, pixels, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

bool isVector(const QImageReader &reader)
{
    return reader.format() == "svg" || reader.format() == "svgz";
}

// Whether a drawing shows a picture from elsewhere, which may be anything, such as a pipe that
// never ends. Pictures within the drawing are in order.
bool refersToOthers(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return true;
    static const QRegularExpression reference(
        QStringLiteral("<image[^>]*href\\s*=\\s*[\"'](?!\\s*data:)"));
    return QString::fromUtf8(file.readAll()).contains(reference);
}

QImage fromFile(const QString &path, int pixels)
{
    const QFileInfo file(path);
    if (!file.isFile() || file.size() > largestFile)
        return {};
    QImageReader reader(path);
    reader.setDecideFormatFromContent(true);
    if (isVector(reader) && (file.size() > largestDrawing || refersToOthers(path)))
        return {};
    const QSize size = reader.size();
    if (!size.isValid() || size.width() > largestSide || size.height() > largestSide)
        return {};
    if (isVector(reader))
        reader.setScaledSize(size.scaled(pixels, pixels, Qt::KeepAspectRatio));
    return fitted(reader.read(), pixels);
}

QImage fromTheme(QString name, int pixels)
{
    QIcon icon = QIcon::fromTheme(name);
    // Some applications name a file's ending as well.
    for (const auto ending : {".png"_L1, ".svg"_L1, ".xpm"_L1}) {
        if (icon.isNull() && name.endsWith(ending)) {
            name.chop(ending.size());
            icon = QIcon::fromTheme(name);
        }
    }
    return fitted(icon.pixmap(QSize(pixels, pixels), 1).toImage(), pixels);
}

QImage load(const std::optional<NSImage> &icon, int pixels)
{
    static QCache<IconKey, QImage> cache(cacheKibibytes);
    if (!icon || icon->source.isEmpty() || pixels <= 0)
        return {};
    const QString &source = icon->source;
    const IconKey key{source, version(source), pixels};
    if (const QImage *cached = cache.object(key))
        return *cached;
    const QImage image = isPath(source) ? fromFile(source, pixels) : fromTheme(source, pixels);
    // What cannot be loaded is remembered as well, so that it is not tried at each painting.
    cache.insert(key, new QImage(image), 1 + image.sizeInBytes() / 1024);
    return image;
}

} // namespace

QPixmap appIconPixmap(const std::optional<NSImage> &icon, int size, qreal devicePixelRatio)
{
    QPixmap pixmap = QPixmap::fromImage(load(icon, qRound(size * devicePixelRatio)));
    pixmap.setDevicePixelRatio(devicePixelRatio);
    return pixmap;
}

void paintAppIcon(QPainter &painter, const std::optional<NSImage> &icon, const QRectF &box,
                  const QPalette &palette)
{
    const QRect pixels = devicePixels(painter, box);
    const QImage image = load(icon, std::min(pixels.width(), pixels.height()));
    if (image.isNull()) {
        paintSymbol(painter, u"app.dashed"_s, box, secondary(palette));
        return;
    }
    const QPoint corner(pixels.left() + (pixels.width() - image.width()) / 2,
                        pixels.top() + (pixels.height() - image.height()) / 2);
    paintDeviceImage(painter, corner, image);
}

AppIcon::AppIcon(int size, QWidget *parent)
    : QWidget(parent)
    , m_size(size)
{
    installAccessibleSurfaces();
    setFixedSize(size, size);
}

void AppIcon::setIcon(const std::optional<NSImage> &icon)
{
    if (icon == m_icon)
        return;
    m_icon = icon;
    update();
}

void AppIcon::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setOpacity(isEnabled() ? 1 : disabledOpacity);
    paintAppIcon(painter, m_icon, rect(), palette());
}

} // namespace tovel
