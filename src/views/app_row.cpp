#include "views/app_row.h"

#include "views/components/app_icon.h"
#include "views/components/button_look.h"
#include "views/components/continuous_corners.h"
#include "views/components/symbol.h"
#include "views/components/text_block.h"
#include "views/mirrored.h"
#include "views/text_style.h"
#include "views/theme.h"

#include <QPainter>

#include <utility>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr int usualPicture = 28;
constexpr int usualPlus = 16;
constexpr int padding = 8;
constexpr int spacing = 10;
constexpr double cornerRadius = 8;
constexpr int smallestWidth = 120;

} // namespace

AppRow::AppRow(QWidget *parent)
    : PaintedButton(parent)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void AppRow::setApp(const RunningApp &app)
{
    if (m_app == app)
        return;
    m_app = app;
    setAccessibleName(u"Add "_s + app.name);
    update();
}

void AppRow::setMarked(bool marked)
{
    if (std::exchange(m_marked, marked) != marked)
        update();
}

QSize AppRow::sizeHint() const { return {smallestWidth, grown(usualPicture) + 2 * padding}; }

void AppRow::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor accent = TovelTheme::accent(palette());
    const double tint = isPressed() ? 0.18 : isHovered() || m_marked ? 0.09 : 0;
    painter.fillPath(continuousRoundedRect(rect(), cornerRadius), withOpacity(accent, tint));
    if (showsFocus()) {
        painter.setPen(QPen(accent, 2));
        painter.drawPath(
            continuousRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), cornerRadius));
    }

    if (!isActionable())
        painter.setOpacity(disabledOpacity);
    const QRectF area = QRectF(rect()).adjusted(padding, 0, -padding, 0);
    const double middle = area.center().y();
    const int pictureSize = grown(usualPicture);
    const int plusSize = grown(usualPlus);
    const QRectF icon(area.left(), middle - pictureSize / 2.0, pictureSize, pictureSize);
    paintAppIcon(painter, m_app.icon, mirrored(icon, *this), *this);
    const QRectF plus(area.right() - plusSize, middle - plusSize / 2.0, plusSize, plusSize);
    paintSymbol(painter, u"plus"_s, mirrored(plus, *this),
                m_marked ? accent : secondary(palette()));
    const QRectF name(icon.right() + spacing, 0, plus.left() - icon.right() - 2 * spacing,
                      height());
    paintName(painter, *this, mirrored(name, *this), m_app.name, textFont(TextStyle::body),
              palette().color(QPalette::Active, QPalette::WindowText), 1,
              Qt::AlignLeading | Qt::AlignVCenter);
}

} // namespace tovel
