#include "app/panel/menu_painting.h"

#include "views/components/button_look.h"
#include "views/components/continuous_corners.h"
#include "views/components/floating_window.h"
#include "views/components/symbol.h"
#include "views/theme.h"

#include <QPainter>
#include <QStyleOptionMenuItem>

#include <algorithm>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr double menuRadius = 10;
constexpr double itemRadius = 6;
constexpr int sidePadding = 9;
constexpr int rowPadding = 4; // above and below a text
constexpr int columnSpacing = 7;
constexpr int shortcutSpacing = 28;
constexpr int separatorHeight = 11;

// Marks grow with the text.
int markSize(const QStyleOptionMenuItem &item) { return item.fontMetrics.height() * 3 / 4; }

int textStart(const QStyleOptionMenuItem &item)
{
    const int marks = item.menuHasCheckableItems ? markSize(item) + columnSpacing : 0;
    const int pictures = item.maxIconWidth > 0 ? menuPictureSize + columnSpacing : 0;
    return sidePadding + marks + pictures;
}

void paintArrow(QPainter &painter, const QRectF &box, bool toTheLeft, const QColor &color)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color, 1.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    const double half = box.height() / 4;
    const double way = toTheLeft ? -half : half;
    const QPointF tip = box.center() + QPointF(way / 2, 0);
    painter.drawPolyline(QPolygonF({tip + QPointF(-way, -half), tip, tip + QPointF(-way, half)}));
    painter.restore();
}

} // namespace

QSize menuItemSize(const QStyleOptionMenuItem &item, QSize content)
{
    if (item.menuItemType == QStyleOptionMenuItem::Separator)
        return {content.width(), separatorHeight};
    return {textStart(item) + content.width() + shortcutSpacing + sidePadding,
            std::max(content.height(), item.fontMetrics.height()) + 2 * rowPadding};
}

void paintMenuItem(QPainter &painter, const QStyleOptionMenuItem &item)
{
    const QPalette &palette = item.palette;
    if (item.menuItemType == QStyleOptionMenuItem::Separator) {
        const QRect line(item.rect.left() + sidePadding, item.rect.center().y(),
                         item.rect.width() - 2 * sidePadding, 1);
        painter.fillRect(line, withOpacity(secondary(palette), 0.25));
        return;
    }

    const bool enabled = item.state.testFlag(QStyle::State_Enabled);
    const bool active = enabled && item.state.testFlag(QStyle::State_Selected);
    painter.save();
    if (active)
        paintContinuousRoundedRect(painter, item.rect, itemRadius, TovelTheme::accent(palette), {});
    if (!enabled)
        painter.setOpacity(disabledOpacity);
    const QColor ink = active ? TovelTheme::chrome(palette)
                              : palette.color(QPalette::Active, QPalette::WindowText);
    const QColor faint = active ? ink : secondary(palette);

    const QRect area = item.rect.adjusted(sidePadding, 0, -sidePadding, 0);
    const auto square = [&](int left, int side) {
        const QRect box(left, area.top() + (area.height() - side) / 2, side, side);
        return QStyle::visualRect(item.direction, item.rect, box);
    };
    const int mark = markSize(item);
    if (item.checked)
        paintSymbol(painter, u"checkmark"_s, square(area.left(), mark), ink);
    const QRect text = area.adjusted(textStart(item) - sidePadding, 0, 0, 0);
    if (!item.icon.isNull())
        item.icon.paint(&painter,
                        square(text.left() - columnSpacing - menuPictureSize, menuPictureSize));

    painter.setFont(item.font);
    painter.setLayoutDirection(Qt::LayoutDirectionAuto); // of a text, as its language has it
    const auto write = [&](const QString &words, Qt::Alignment side, const QColor &color) {
        painter.setPen(color);
        const int flags = int(QStyle::visualAlignment(item.direction, side | Qt::AlignVCenter))
            | Qt::TextSingleLine | Qt::TextHideMnemonic;
        painter.drawText(QStyle::visualRect(item.direction, item.rect, text), flags, words);
    };
    const QStringList parts = item.text.split(u'\t');
    write(parts.first(), Qt::AlignLeft, ink);
    if (parts.size() > 1)
        write(parts.last(), Qt::AlignRight, faint);
    if (item.menuItemType == QStyleOptionMenuItem::SubMenu)
        paintArrow(painter, square(area.right() + 1 - mark, mark),
                   item.direction == Qt::RightToLeft, faint);
    painter.restore();
}

void paintMenuGround(QPainter &painter, const QPalette &palette, const QRect &menu, bool masked)
{
    QPainterPath form;
    if (masked)
        form.addRect(menu);
    else
        form = continuousRoundedRect(menu, menuRadius);
    paintFloating(painter, palette, form,
                  continuousRoundedRect(QRectF(menu).adjusted(1, 1, -1, -1), menuRadius - 1));
}

QRegion menuMask(const QSize &size)
{
    return maskOf(continuousRoundedRect(QRectF(QPointF(), size), menuRadius), size);
}

} // namespace tovel
