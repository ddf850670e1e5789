#include "views/components/overlay_scroll_area.h"

#include "views/components/button_look.h"
#include "views/components/overlay_scroller.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>

namespace tovel {

namespace {

constexpr int focusMargin = 8; // kept around what is scrolled into view
constexpr double focusRadius = 6;

} // namespace

OverlayScrollArea::OverlayScrollArea(QWidget *parent)
    : QScrollArea(parent)
    , m_scroller(new OverlayScroller(*verticalScrollBar(), this))
{
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::NoFocus);
    viewport()->setAutoFillBackground(false);
    connect(qApp, &QApplication::focusChanged, this,
            [this](QWidget *, QWidget *focused) { showFocused(focused); });
}

void OverlayScrollArea::setWidget(QWidget *widget)
{
    QScrollArea::setWidget(widget);
    widget->setAutoFillBackground(false);
    m_scroller->place();
}

void OverlayScrollArea::showFocused(QWidget *focused)
{
    if (focused && widget() && widget()->isAncestorOf(focused))
        ensureWidgetVisible(focused, 0, focusMargin);
}

void OverlayScrollArea::focusInEvent(QFocusEvent *event)
{
    m_keyboardFocus
        = event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
    QScrollArea::focusInEvent(event);
}

void OverlayScrollArea::keyPressEvent(QKeyEvent *event)
{
    QScrollBar *bar = verticalScrollBar();
    if (event->key() == Qt::Key_Home)
        bar->setValue(bar->minimum());
    else if (event->key() == Qt::Key_End)
        bar->setValue(bar->maximum());
    else
        QScrollArea::keyPressEvent(event);
}

void OverlayScrollArea::resizeEvent(QResizeEvent *event)
{
    QScrollArea::resizeEvent(event);
    m_scroller->place();
}

bool OverlayScrollArea::viewportEvent(QEvent *event)
{
    const bool handled = QScrollArea::viewportEvent(event);
    if (event->type() == QEvent::Paint && hasFocus() && m_keyboardFocus) {
        QPainter painter(viewport());
        paintFocusRing(painter, palette(), viewport()->rect(), focusRadius);
    }
    return handled;
}

void OverlayScrollArea::changeEvent(QEvent *event)
{
    QScrollArea::changeEvent(event);
    if (event->type() == QEvent::LayoutDirectionChange)
        m_scroller->place();
}

} // namespace tovel
