#include "views/components/popover.h"

#include "views/components/accessible_surface.h"
#include "views/components/continuous_corners.h"
#include "views/components/window_system.h"
#include "views/theme.h"

#include <QAbstractButton>
#include <QApplication>
#include <QBitmap>
#include <QKeyEvent>
#include <QPainter>
#include <QScreen>

#include <algorithm>
#include <cmath>

namespace tovel {

namespace {

constexpr int borderWidth = 1;

QPointF towardsBody(PopoverSide side)
{
    switch (side) {
    case PopoverSide::left:
        return {-1, 0};
    case PopoverSide::right:
        return {1, 0};
    case PopoverSide::above:
        return {0, -1};
    case PopoverSide::below:
        return {0, 1};
    }
    Q_UNREACHABLE();
}

// Body and arrow, each edge moved inwards by the inset. The foot of the arrow lies in the body.
QPainterPath outline(const QRectF &body, const QPointF &tip, PopoverSide side, double inset)
{
    const double half = popoverArrowWidth / 2.0;
    const double tipInset = inset * std::hypot(popoverArrowLength, half) / half;
    const double foot = popoverArrowLength + popoverRadius / 2.0;
    const double spread = half * foot / popoverArrowLength;
    const QPointF in = towardsBody(side);
    const QPointF first = tip + in * tipInset;
    const QPointF middle = first + in * foot;
    QPainterPath arrow(first);
    arrow.lineTo(middle + in.transposed() * spread);
    arrow.lineTo(middle - in.transposed() * spread);
    arrow.closeSubpath();
    return continuousRoundedRect(body.adjusted(inset, inset, -inset, -inset), popoverRadius - inset)
        .united(arrow);
}

// The pixels that lie in the path with at least half of their area.
QRegion pixelsOf(const QPainterPath &path, const QSize &size)
{
    QImage coverage(size, QImage::Format_ARGB32_Premultiplied);
    coverage.fill(Qt::transparent);
    QPainter painter(&coverage);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(path, Qt::black);
    painter.end();
    return QBitmap::fromImage(coverage.createAlphaMask(Qt::ThresholdDither));
}

QRect windowRect(const PopoverPlacement &placement)
{
    const int length = popoverArrowLength;
    switch (placement.side) {
    case PopoverSide::left:
        return placement.body.adjusted(0, 0, length, 0);
    case PopoverSide::right:
        return placement.body.adjusted(-length, 0, 0, 0);
    case PopoverSide::above:
        return placement.body.adjusted(0, 0, 0, length);
    case PopoverSide::below:
        return placement.body.adjusted(0, -length, 0, 0);
    }
    Q_UNREACHABLE();
}

} // namespace

Popover::Popover(QWidget *anchor)
    : QWidget(anchor, Qt::Popup | Qt::FramelessWindowHint | Qt::NoDropShadowWindowHint)
    , m_anchor(anchor)
{
    installAccessibleSurfaces();
    setAttribute(Qt::WA_WindowPropagation);
    // Elsewhere it takes a compositor to blend it, and a mask does without one.
    setAttribute(Qt::WA_TranslucentBackground, isOnWayland());
    anchor->installEventFilter(this);
}

void Popover::setContent(QWidget *content)
{
    delete m_content;
    m_content = content;
    content->setParent(this);
    content->show();
    if (isOpen())
        place();
}

void Popover::setArrow(Arrow arrow) { m_arrow = arrow; }

void Popover::open()
{
    if (isOpen() || !m_content || !m_anchor->isVisible())
        return;
    m_focusBefore = QApplication::focusWidget();
    const QString name = m_anchor->accessibleName();
    const auto *button = qobject_cast<QAbstractButton *>(m_anchor);
    setAccessibleName(name.isEmpty() && button ? button->text() : name);
    m_anchor->window()->installEventFilter(this);
    place();
    show();
    focusContent();
}

void Popover::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    m_anchor->window()->removeEventFilter(this);
    m_anchor->installEventFilter(this); // in case it is the window itself
    QWidget *back = m_focusBefore && m_focusBefore->isVisible() ? m_focusBefore.data() : m_anchor;
    if (back->isVisible() && back->window() == m_anchor->window())
        back->setFocus(Qt::PopupFocusReason);
    Q_EMIT closed();
}

bool Popover::event(QEvent *event)
{
    if (event->type() == QEvent::LayoutRequest && isOpen())
        place();
    return QWidget::event(event);
}

bool Popover::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::Hide:
    case QEvent::Close:
    case QEvent::WindowBlocked:
        if (isOpen())
            close();
        break;
    case QEvent::Move:
    case QEvent::Resize:
        // Also what a window manager tells late of a window that it has just framed.
        if (isOpen())
            place();
        break;
    case QEvent::WindowStateChange:
        if (isOpen() && watched == m_anchor->window() && m_anchor->window()->isMinimized())
            close();
        break;
    default:
        break;
    }
    return QWidget::eventFilter(watched, event);
}

void Popover::mousePressEvent(QMouseEvent *event)
{
    if (m_outline.contains(event->position())) {
        event->accept();
        return;
    }
    const QPoint onAnchor = m_anchor->mapFromGlobal(event->globalPosition().toPoint());
    // The press that closes it must not reach the anchor, which would open it again.
    setAttribute(Qt::WA_NoMouseReplay, m_anchor->rect().contains(onAnchor));
    event->accept();
    close();
}

void Popover::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    // The border is what the inside leaves of it. Of a masked window it covers all, so that it goes
    // along all of the mask's steps.
    QPainterPath edge = m_outline;
    if (!testAttribute(Qt::WA_TranslucentBackground)) {
        edge.clear();
        edge.addRect(rect());
    }
    painter.fillPath(edge, windowBackground(palette()));
    painter.fillPath(edge, withOpacity(secondary(palette()), 0.4));
    const QPoint origin = windowRect(m_placement).topLeft();
    painter.fillPath(outline(m_placement.body.translated(-origin), m_placement.tip - origin,
                             m_placement.side, borderWidth),
                     windowBackground(palette()));
}

PopoverSide Popover::wantedSide() const
{
    switch (m_arrow) {
    case LeadingArrow:
        return m_anchor->isRightToLeft() ? PopoverSide::right : PopoverSide::left;
    case TrailingArrow:
        return m_anchor->isRightToLeft() ? PopoverSide::left : PopoverSide::right;
    case TopArrow:
        return PopoverSide::above;
    case BottomArrow:
        return PopoverSide::below;
    }
    Q_UNREACHABLE();
}

QSize Popover::contentSize(const QSize &most) const
{
    QSize size = m_content->sizeHint()
                     .expandedTo(m_content->minimumSizeHint())
                     .expandedTo(m_content->minimumSize())
                     .boundedTo(m_content->maximumSize());
    if (m_content->hasHeightForWidth())
        size.setHeight(std::clamp(m_content->heightForWidth(size.width()),
                                  m_content->minimumHeight(), m_content->maximumHeight()));
    return size.boundedTo(most);
}

void Popover::place()
{
    const QRect screen = m_anchor->screen()->availableGeometry();
    const QRect anchor(m_anchor->mapToGlobal(QPoint(0, 0)), m_anchor->size());
    const int around = 2 * borderWidth;
    const QSize most = screen.size() - QSize(around, around);
    const QSize body = contentSize(most) + QSize(around, around);

    m_placement = placePopover(anchor, body, screen, wantedSide());
    const QRect window = windowRect(m_placement);
    const QRectF local(m_placement.body.translated(-window.topLeft()));
    m_outline = outline(local, m_placement.tip - window.topLeft(), m_placement.side, 0);
    setGeometry(window);
    if (!testAttribute(Qt::WA_TranslucentBackground))
        setMask(pixelsOf(m_outline, window.size()));
    m_content->setGeometry(
        local.toRect().adjusted(borderWidth, borderWidth, -borderWidth, -borderWidth));
    update();
}

void Popover::focusContent()
{
    QWidget *target = m_content->focusProxy();
    for (QWidget *next = m_content; !target;) {
        if ((next->focusPolicy() & Qt::TabFocus) && next->isEnabled() && next->isVisible())
            target = next;
        next = next->nextInFocusChain();
        if (!m_content->isAncestorOf(next))
            break;
    }
    if (target)
        target->setFocus(Qt::PopupFocusReason);
    else
        setFocus(Qt::PopupFocusReason);
}

} // namespace tovel
