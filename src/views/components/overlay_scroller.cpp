#include "views/components/overlay_scroller.h"

#include "views/components/continuous_corners.h"
#include "views/theme.h"

#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyle>

#include <algorithm>
#include <chrono>
#include <cmath>

namespace tovel {

using namespace std::chrono_literals;

namespace {

constexpr int hitWidth = 12;
constexpr int edgeMargin = 2;
constexpr int restingWidth = 6;
constexpr int hoveredWidth = 9;
constexpr int shortestThumb = 28;
constexpr auto shownAfterScrolling = 900ms;

} // namespace

OverlayScroller::OverlayScroller(QScrollBar &bar, QWidget *parent)
    : QWidget(parent)
    , m_bar(bar)
{
    setAttribute(Qt::WA_Hover);
    setFocusPolicy(Qt::NoFocus);
    setCursor(Qt::ArrowCursor);
    m_rest.setSingleShot(true);
    m_rest.setInterval(shownAfterScrolling);
    connect(&m_rest, &QTimer::timeout, this, qOverload<>(&QWidget::update));
    connect(&bar, &QScrollBar::valueChanged, this, &OverlayScroller::scrolled);
    connect(&bar, &QScrollBar::rangeChanged, this, &OverlayScroller::place);
    place();
}

void OverlayScroller::scrolled()
{
    m_rest.start();
    place();
    update();
}

void OverlayScroller::place()
{
    const QRect area = parentWidget()->rect();
    const int range = m_bar.maximum() - m_bar.minimum();
    const int track = area.height() - 2 * edgeMargin;
    if (range <= 0 || track <= 0) {
        hide();
        return;
    }
    const double share = double(m_bar.pageStep()) / (m_bar.pageStep() + range);
    const int length = std::clamp(qRound(track * share), std::min(shortestThumb, track), track);
    const double at = double(m_bar.value() - m_bar.minimum()) / range;
    const QRect thumb(area.right() + 1 - hitWidth,
                      area.top() + edgeMargin + qRound((track - length) * at), hitWidth, length);
    setGeometry(QStyle::visualRect(layoutDirection(), area, thumb));
    show();
    raise();
}

void OverlayScroller::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const bool hot = underMouse() || m_dragged;
    const double opacity = m_dragged ? 0.9 : hot ? 0.75 : m_rest.isActive() ? 0.6 : 0.35;
    const int thickness = hot ? hoveredWidth : restingWidth;
    const QRect thumb = QStyle::visualRect(
        layoutDirection(), rect(), {width() - edgeMargin - thickness, 0, thickness, height()});
    paintContinuousRoundedRect(painter, thumb, thickness / 2.0,
                               withOpacity(secondary(palette()), opacity), {});
}

void OverlayScroller::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    m_dragged = true;
    m_grabY = event->globalPosition().y();
    m_grabValue = m_bar.value();
    update();
}

void OverlayScroller::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_dragged)
        return;
    const int room = parentWidget()->height() - 2 * edgeMargin - height();
    if (room <= 0)
        return;
    const double moved = event->globalPosition().y() - m_grabY;
    const int range = m_bar.maximum() - m_bar.minimum();
    m_bar.setValue(m_grabValue + static_cast<int>(std::lround(moved * range / room)));
}

void OverlayScroller::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    m_dragged = false;
    update();
}

} // namespace tovel
