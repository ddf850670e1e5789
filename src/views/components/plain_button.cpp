#include "views/components/plain_button.h"

#include "views/components/button_look.h"
#include "views/components/continuous_corners.h"
#include "views/components/symbol.h"
#include "views/components/text_block.h"
#include "views/theme.h"

#include <QFontMetrics>
#include <QPainter>
#include <QStyle>

#include <algorithm>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr double cornerRadius = 6;
constexpr int symbolSpacing = 4;

} // namespace

PlainButton::PlainButton(QWidget *parent)
    : PaintedButton(parent)
    , m_color(TovelTheme::accent)
{
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void PlainButton::setSymbol(const QString &name, int size)
{
    m_symbol = name;
    m_symbolSize = size;
    updateGeometry();
    update();
}

void PlainButton::setColor(std::function<QColor(const QPalette &)> color)
{
    m_color = std::move(color);
    update();
}

void PlainButton::setElideMode(Qt::TextElideMode mode)
{
    m_elideMode = mode;
    updateGeometry();
    update();
}

int PlainButton::symbolRoom() const
{
    if (m_symbol.isEmpty())
        return 0;
    return m_symbolSize + (text().isEmpty() ? 0 : symbolSpacing);
}

QSize PlainButton::sizeHint() const
{
    const QFontMetrics metrics(font());
    const int margin = text().isEmpty() ? 0 : textMargin;
    const int textHeight = text().isEmpty() ? 0 : metrics.height();
    return {symbolRoom() + metrics.horizontalAdvance(text()) + 1 + 2 * margin,
            std::max(m_symbol.isEmpty() ? 0 : m_symbolSize, textHeight) + margin};
}

QSize PlainButton::minimumSizeHint() const
{
    const QSize hint = sizeHint();
    if (m_elideMode == Qt::ElideNone)
        return hint;
    const int least = symbolRoom() + QFontMetrics(font()).horizontalAdvance(u"…"_s) * 3;
    return {std::min(hint.width(), least), hint.height()};
}

void PlainButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QRectF shape = rect();
    paintContinuousRoundedRect(painter, shape, cornerRadius,
                               stateTint(palette(), isHovered(), isPressed()), {});
    if (showsFocus())
        paintFocusRing(painter, palette(), shape, cornerRadius);
    if (!isActionable())
        painter.setOpacity(disabledOpacity);

    const QColor color = m_color(palette());
    const QFontMetrics metrics(font());
    const int room = width() - symbolRoom() - 2 * textMargin;
    const QString shown = metrics.elidedText(text(), m_elideMode, room);
    const int contentWidth = symbolRoom() + metrics.horizontalAdvance(shown);
    const QRect content(std::max(0, (width() - contentWidth) / 2), 0,
                        std::min(contentWidth, width()), height());
    const auto visual
        = [this](const QRect &box) { return QStyle::visualRect(layoutDirection(), rect(), box); };
    if (!m_symbol.isEmpty()) {
        const QRect box(content.left(), (height() - m_symbolSize) / 2, m_symbolSize, m_symbolSize);
        paintSymbol(painter, m_symbol, visual(box), color);
    }
    if (!shown.isEmpty()) {
        const QRect box = content.adjusted(symbolRoom(), 0, 1, 0);
        paintTextBlock(painter, visual(box), shown, font(), color, 1, Qt::AlignVCenter);
    }
}

} // namespace tovel
