#include "views/display_button.h"

#include "views/components/symbol.h"
#include "views/components/text_block.h"
#include "views/mirrored.h"
#include "views/text_style.h"
#include "views/theme.h"

#include <QPainter>

#include <algorithm>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr double cornerRadius = 9;
constexpr int padding = 10;
constexpr int spacing = 8;
constexpr int usualSymbol = 22; // of a symbol set in text of 20
constexpr int lowest = 36;
constexpr int narrowest = 144;
constexpr int widest = 190;
constexpr int mostLines = 2;

QFont nameFont() { return textFont(TextStyle::caption, QFont::Medium); }

} // namespace

DisplayButton::DisplayButton(QWidget *parent)
    : Surface(parent)
{
    setRadius(cornerRadius);
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

void DisplayButton::setValues(const DisplayValues &values)
{
    if (m_values == values)
        return;
    const bool renamed = m_values.name != values.name;
    m_values = values;
    setHighlighted(values.current);
    setAccessibleSelected(values.current);
    setAccessibleName(u"Show desktops on "_s + values.name);
    if (renamed)
        updateGeometry();
    update();
}

int DisplayButton::heightForWidth(int width) const
{
    const int symbolSize = grown(usualSymbol);
    const int text = textBlockHeight(m_values.name, nameFont(),
                                     width - 2 * padding - symbolSize - spacing, mostLines);
    return std::max(lowest, std::max(text, symbolSize) + 2 * padding);
}

int DisplayButton::usualWidth() { return std::min(grown(narrowest), widest); }

QSize DisplayButton::sizeHint() const { return {usualWidth(), heightForWidth(usualWidth())}; }

void DisplayButton::paintContent(QPainter &painter, const QRectF &inside)
{
    const QRectF area = inside.adjusted(padding, padding, -padding, -padding);
    const int symbolSize = grown(usualSymbol);
    const QRectF symbol(area.left(), area.center().y() - symbolSize / 2.0, symbolSize, symbolSize);
    paintSymbol(painter, m_values.builtIn ? u"laptopcomputer"_s : u"display"_s,
                mirrored(symbol, *this), TovelTheme::accent(palette()));
    const QRectF text = area.adjusted(symbolSize + spacing, 0, 0, 0);
    paintName(painter, *this, mirrored(text, *this), m_values.name, nameFont(),
              palette().color(QPalette::Active, QPalette::WindowText), mostLines,
              Qt::AlignLeading | Qt::AlignVCenter);
}

} // namespace tovel
