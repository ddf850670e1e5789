#include "views/components/reopen_button.h"

#include "views/components/button_look.h"
#include "views/components/continuous_corners.h"
#include "views/components/text_block.h"
#include "views/text_style.h"
#include "views/theme.h"

#include <QFontMetrics>
#include <QPainter>

namespace tovel {

namespace {

constexpr int sidePadding = 12;
constexpr int verticalPadding = 4;

} // namespace

ReopenButton::ReopenButton(QWidget *parent)
    : PaintedButton(parent)
{
    setFont(textFont(TextStyle::caption, QFont::Medium));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QSize ReopenButton::sizeHint() const
{
    const QFontMetrics metrics(font());
    return {metrics.horizontalAdvance(text()) + 1 + 2 * sidePadding,
            metrics.height() + 2 * verticalPadding};
}

bool ReopenButton::hitButton(const QPoint &position) const
{
    return capsule(rect()).contains(QPointF(position) + QPointF(0.5, 0.5));
}

void ReopenButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QColor accent = TovelTheme::accent(palette());
    const double radius = height() / 2.0;
    paintContinuousRoundedRect(painter, rect(), radius, withOpacity(accent, 0.09), {});
    paintContinuousRoundedRect(painter, rect(), radius,
                               stateTint(palette(), isHovered(), isPressed()), {});
    if (showsFocus())
        paintFocusRing(painter, palette(), rect(), radius);
    if (!isActionable())
        painter.setOpacity(disabledOpacity);
    paintTextBlock(painter, rect(), text(), font(), accent, 1, Qt::AlignCenter);
}

} // namespace tovel
