#include "views/components/popover.h"

#include "views/components/accessible_surface.h"
#include "views/components/continuous_corners.h"
#include "views/components/floating_window.h"
#include "views/theme.h"

#include <QAbstractButton>
#include <QApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QScreen>

#include <algorithm>
#include <cmath>

namespace tovel {

namespace {

constexpr int borderWidth = 1;

// Of a popover that is blended: how far its shadow reaches, and how far that has sunk.
constexpr int shadowReach = 14;
constexpr int shadowDrop = 3;
constexpr double shadowOpacity = 0.18; // at the edge

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

// Fades with the square of the distance, for each ring is laid over those beyond it.
QImage shadowOf(const QPainterPath &form, const QSize &size, qreal ratio)
{
    QImage image(size * ratio, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(0, shadowDrop);
    const int reach = shadowReach - shadowDrop;
    const double most = reach * (reach + 1) / 2.0;
    for (int ring = reach; ring > 0; --ring) {
        const QColor color = withOpacity(Qt::black, shadowOpacity * (reach + 1 - ring) / most);
        painter.strokePath(form, QPen(color, 2 * ring, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    }
    return image;
}

QRect bodyWithArrow(const PopoverPlacement &placement)
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
    setAttribute(Qt::WA_TranslucentBackground); // hidden by a mask where it is not blended
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
    m_blends = blendsWindows();
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
    painter.drawImage(QPoint(), m_shadow);
    // Of a masked window the border covers all, so that it goes along all of the mask's steps.
    QPainterPath form = m_outline;
    if (!m_blends)
        form.addRect(rect());
    form.setFillRule(Qt::WindingFill);
    const QPoint origin = windowRect().topLeft();
    const QPainterPath inside = outline(m_placement.body.translated(-origin),
                                        m_placement.tip - origin, m_placement.side, borderWidth);
    paintFloating(painter, palette(), form, inside);
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

QRect Popover::windowRect() const
{
    const int room = m_blends ? shadowReach : 0;
    return bodyWithArrow(m_placement).adjusted(-room, -room, room, room);
}

void Popover::place()
{
    const QRect screen = m_anchor->screen()->availableGeometry();
    const QRect anchor(m_anchor->mapToGlobal(QPoint(0, 0)), m_anchor->size());
    const int around = 2 * borderWidth;
    const QSize most = screen.size() - QSize(around, around);
    const QSize body = contentSize(most) + QSize(around, around);

    m_placement = placePopover(anchor, body, screen, wantedSide());
    const QRect window = windowRect();
    const QRectF local(m_placement.body.translated(-window.topLeft()));
    m_outline = outline(local, m_placement.tip - window.topLeft(), m_placement.side, 0);
    setGeometry(window);
    if (m_blends)
        clearMask();
    else
        setMask(maskOf(m_outline, window.size()));
    m_shadow = m_blends ? shadowOf(m_outline, window.size(), devicePixelRatio()) : QImage();
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
