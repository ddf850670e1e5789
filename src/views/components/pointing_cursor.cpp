#include "views/components/pointing_cursor.h"

#include <QApplication>
#include <QCursor>
#include <QEvent>
#include <QWidget>

namespace tovel {

PointingCursor::PointingCursor(QWidget *control, bool enabled)
    : QObject(control)
    , m_control(control)
    , m_enabled(enabled)
{
    control->setAttribute(Qt::WA_Hover);
    control->installEventFilter(this);
}

PointingCursor::~PointingCursor() { pop(); }

void PointingCursor::setEnabled(bool enabled)
{
    m_enabled = enabled;
    if (!enabled)
        pop();
}

bool PointingCursor::eventFilter(QObject *watched, QEvent *event)
{
    // While pushed, the application's events come here too, those of the control twice.
    if (watched != m_control) {
        watchOthers(watched, event);
        return false;
    }
    switch (event->type()) {
    case QEvent::Enter:
    case QEvent::HoverEnter:
    case QEvent::HoverMove:
    case QEvent::MouseMove:
        setInside(m_control->underMouse());
        break;
    case QEvent::Leave:
    case QEvent::Hide:
        setInside(false);
        break;
    case QEvent::EnabledChange:
        if (!m_control->isEnabled())
            pop();
        break;
    default:
        break;
    }
    return false;
}

void PointingCursor::setInside(bool inside)
{
    if (inside == m_inside || (inside && isCovered()))
        return;
    m_inside = inside;
    if (inside && m_enabled && m_control->isEnabled())
        push();
    else
        pop();
}

// Popups and dialogs take the mouse without that the control below hears of it.
void PointingCursor::watchOthers(QObject *watched, QEvent *event)
{
    if (!watched->isWidgetType())
        return;
    const auto *widget = static_cast<QWidget *>(watched);
    switch (event->type()) {
    case QEvent::Show:
        if (widget->windowType() == Qt::Popup && widget != m_control->window())
            setInside(false);
        break;
    case QEvent::WindowBlocked:
        if (widget == m_control->window())
            setInside(false);
        break;
    case QEvent::WindowDeactivate:
        if (widget == m_control->window()
            && !m_control->rect().contains(m_control->mapFromGlobal(QCursor::pos())))
            setInside(false);
        break;
    default:
        break;
    }
}

bool PointingCursor::isCovered() const
{
    const QWidget *own = m_control->window();
    const QWidget *popup = QApplication::activePopupWidget();
    const QWidget *modal = QApplication::activeModalWidget();
    return (popup && popup != own) || (!popup && modal && modal != own);
}

void PointingCursor::push()
{
    if (m_pushed)
        return;
    m_pushed = true;
    QGuiApplication::setOverrideCursor(Qt::PointingHandCursor);
    qApp->installEventFilter(this);
}

void PointingCursor::pop()
{
    if (!m_pushed)
        return;
    m_pushed = false;
    if (!qApp)
        return;
    qApp->removeEventFilter(this);
    QGuiApplication::restoreOverrideCursor();
}

PointingCursor *pointingCursor(QWidget *control, bool enabled)
{
    return new PointingCursor(control, enabled);
}

} // namespace tovel
