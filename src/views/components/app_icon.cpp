#include "views/components/app_icon.h"

#include "pictures/foreign_pictures.h"
#include "views/components/accessible_surface.h"
#include "views/components/button_look.h"
#include "views/components/device_pixels.h"
#include "views/components/symbol.h"
#include "views/theme.h"

#include <QCache>
#include <QCoreApplication>
#include <QDateTime>
#include <QFileInfo>
#include <QHash>
#include <QIcon>
#include <QPainter>
#include <QPointer>

#include <algorithm>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr int cacheKibibytes = 8 * 1024;

struct IconKey
{
    QString source;
    QString version; // of a file its date, else the themes
    int pixels = 0;

    bool operator==(const IconKey &) const = default;
};

size_t qHash(const IconKey &key, size_t seed = 0)
{
    return qHashMulti(seed, key.source, key.version, key.pixels);
}

QStringList themes() { return {QIcon::themeName(), QIcon::fallbackThemeName()}; }

QString version(const QString &source)
{
    if (!source.startsWith(u'/'))
        return themes().join(u'\n');
    const QDateTime changed = QFileInfo(source).lastModified();
    return QString::number(changed.isValid() ? changed.toMSecsSinceEpoch() : 0);
}

// The pictures that this process has painted, and those on their way.
class Pictures final
{
public:
    // Null when it is not there; the widget is then painted again as soon as it is.
    QImage find(const IconKey &key, QWidget &widget)
    {
        if (const QImage *kept = m_kept.object(key))
            return *kept;
        QList<QPointer<QWidget>> &waiting = m_waiting[key];
        if (waiting.isEmpty()) {
            m_foreign.request(
                {key.source, themes(), static_cast<std::uint32_t>(key.pixels)},
                [this, key](const std::optional<QImage> &picture) { keep(key, picture); });
        }
        if (!waiting.contains(&widget))
            waiting.append(&widget);
        return {};
    }

    bool areOnTheirWay() const { return !m_waiting.isEmpty(); }

private:
    void keep(const IconKey &key, const std::optional<QImage> &picture)
    {
        const QList<QPointer<QWidget>> waiting = m_waiting.take(key);
        if (!picture)
            return;
        // What cannot be loaded is remembered as well, so that it is not tried at each painting.
        m_kept.insert(key, new QImage(*picture), 1 + picture->sizeInBytes() / 1024);
        for (const QPointer<QWidget> &widget : waiting) {
            if (widget && !picture->isNull())
                widget->update();
        }
    }

    QCache<IconKey, QImage> m_kept{cacheKibibytes};
    QHash<IconKey, QList<QPointer<QWidget>>> m_waiting;
    ForeignPictures m_foreign{QCoreApplication::applicationDirPath()
                              + u"/../lib/tovel/tovel-icons"_s};
};

// They end with the application, since their process does.
Pictures *thePictures = nullptr;

Pictures &pictures()
{
    if (!thePictures) {
        thePictures = new Pictures;
        qAddPostRoutine([] { delete std::exchange(thePictures, nullptr); });
    }
    return *thePictures;
}

} // namespace

void paintAppIcon(QPainter &painter, const std::optional<NSImage> &icon, const QRectF &box,
                  QWidget &widget)
{
    const QRect pixels = devicePixels(painter, box);
    const int side = std::min(pixels.width(), pixels.height());
    QImage image;
    if (icon && !icon->source.isEmpty() && side > 0)
        image = pictures().find({icon->source, version(icon->source), side}, widget);
    if (image.isNull()) {
        paintSymbol(painter, u"app.dashed"_s, box, secondary(widget.palette()));
        return;
    }
    const QPoint corner(pixels.left() + (pixels.width() - image.width()) / 2,
                        pixels.top() + (pixels.height() - image.height()) / 2);
    paintDeviceImage(painter, corner, image);
}

bool areAppIconsOnTheirWay() { return thePictures && thePictures->areOnTheirWay(); }

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
    paintAppIcon(painter, m_icon, rect(), *this);
}

} // namespace tovel
