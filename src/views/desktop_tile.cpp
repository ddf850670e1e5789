#include "views/desktop_tile.h"

#include "settings/bundle.h"
#include "views/components/symbol.h"
#include "views/components/text_block.h"
#include "views/mirrored.h"
#include "views/text_style.h"
#include "views/theme.h"

#include <QFontMetrics>
#include <QPainter>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr double cornerRadius = 12;
constexpr int padding = 15;
constexpr int spacing = 15;
constexpr int usualSymbol = 18;
constexpr QSize usualMark(23, 13);
constexpr int smallestWidth = 100;

QFont nameFont() { return textFont(TextStyle::callout, QFont::DemiBold); }

} // namespace

DesktopTile::DesktopTile(QWidget *parent)
    : Surface(parent)
{
    setRadius(cornerRadius);
    setDimsWhenDisabled(false);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void DesktopTile::setValues(const TileValues &values)
{
    if (m_values == values)
        return;
    m_values = values;
    setHighlighted(values.flockHere);
    setActionable(!values.disabled);
    setDimsWhenDisabled(values.dimmed);
    setAccessibleName(u"Move apps to "_s + values.name);
    setAccessibleValue(values.accessibilityValue);
    update();
}

QSize DesktopTile::sizeHint() const
{
    return {smallestWidth,
            2 * padding + grown(usualSymbol) + spacing + QFontMetrics(nameFont()).height()};
}

void DesktopTile::paintContent(QPainter &painter, const QRectF &inside)
{
    const QRectF area = inside.adjusted(padding, padding, -padding, -padding);
    const int symbolSize = grown(usualSymbol);
    const QSizeF markSize(grown(usualMark.width()), grown(usualMark.height()));
    const QRectF symbol(area.left(), area.top(), symbolSize, symbolSize);
    paintSymbol(painter, u"desktopcomputer"_s, mirrored(symbol, *this),
                TovelTheme::accent(palette()));
    if (m_values.flockWindows > 0) {
        const QRectF mark(
            QPointF(area.right() - markSize.width(), symbol.center().y() - markSize.height() / 2),
            markSize);
        if (const auto image = mainBundle().pathForResource(u"TovelMenu"_s, u"svg"_s))
            paintTemplateImage(painter, *image, mirrored(mark, *this), TovelTheme::orange());
    }
    const QRectF text = area.adjusted(0, symbolSize + spacing, 0, 0);
    paintName(painter, *this, mirrored(text, *this), m_values.name, nameFont(),
              palette().color(QPalette::Active, QPalette::WindowText), 1,
              Qt::AlignLeading | Qt::AlignTop);
}

} // namespace tovel
