#include "views/busy_indicator.h"

#include "views/components/accessible_surface.h"
#include "views/theme.h"

#include <QPainter>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr int wheelSize = 10;
constexpr int spokes = 8;
constexpr int turnMilliseconds = 100;

} // namespace

BusyIndicator::BusyIndicator(QWidget *parent)
    : QWidget(parent)
{
    setAccessibleRole(*this, QAccessible::ProgressBar);
    setFixedSize(wheelSize, wheelSize);
    setAccessibleName(u"In progress"_s);
}

void BusyIndicator::showEvent(QShowEvent *) { m_timer.start(turnMilliseconds, this); }

void BusyIndicator::hideEvent(QHideEvent *) { m_timer.stop(); }

void BusyIndicator::timerEvent(QTimerEvent *)
{
    m_step = (m_step + 1) % spokes;
    update();
}

void BusyIndicator::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(wheelSize / 2.0, wheelSize / 2.0);
    for (int i = 0; i < spokes; ++i) {
        const int age = (m_step - i + spokes) % spokes;
        const double strength = 1 - age / double(spokes);
        painter.save();
        painter.rotate(360.0 * i / spokes);
        painter.setPen(QPen(withOpacity(TovelTheme::accent(palette()), strength), 1.3,
                            Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(QPointF(0, -2.2), QPointF(0, -4.2));
        painter.restore();
    }
}

} // namespace tovel
