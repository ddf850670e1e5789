#include "views/components/painted_button.h"

#include "views/components/accessible_surface.h"

#include <QAccessible>
#include <QApplication>
#include <QKeyEvent>

namespace tovel {

PaintedButton::PaintedButton(QWidget *parent)
    : QAbstractButton(parent)
{
    showCursor();
    installAccessibleSurfaces();
    setFocusPolicy(Qt::StrongFocus);
}

void PaintedButton::setActionable(bool actionable)
{
    if (actionable == m_actionable)
        return;
    m_actionable = actionable;
    if (!actionable)
        setDown(false);
    showCursor();
    tellActionable();
    update();
}

void PaintedButton::setAccessibleValue(const QString &value)
{
    if (value == m_value)
        return;
    m_value = value;
    QAccessibleValueChangeEvent valueChange(this, value);
    QAccessible::updateAccessibility(&valueChange);
    QAccessibleEvent descriptionChange(this, QAccessible::DescriptionChanged);
    QAccessible::updateAccessibility(&descriptionChange);
}

void PaintedButton::setAccessibleSelected(bool selected)
{
    m_selectable = true;
    if (selected == m_selected)
        return;
    m_selected = selected;
    QAccessible::State changed;
    changed.selected = true;
    QAccessibleStateChangeEvent change(this, changed);
    QAccessible::updateAccessibility(&change);
}

void PaintedButton::changeEvent(QEvent *event)
{
    QAbstractButton::changeEvent(event);
    if (event->type() == QEvent::EnabledChange && m_actionable)
        tellActionable();
}

void PaintedButton::focusInEvent(QFocusEvent *event)
{
    // A window or a menu that gives the focus back leaves the mark as it was.
    if (event->reason() != Qt::ActiveWindowFocusReason && event->reason() != Qt::PopupFocusReason
        && event->reason() != Qt::MenuBarFocusReason)
        m_keyboardFocus = event->reason() != Qt::MouseFocusReason;
    QAbstractButton::focusInEvent(event);
}

void PaintedButton::keyPressEvent(QKeyEvent *event)
{
    if (!m_keyboardFocus) {
        m_keyboardFocus = true;
        update();
    }
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    const bool presses = enter || event->key() == Qt::Key_Space || event->key() == Qt::Key_Select;
    if (presses && !isActionable()) {
        event->accept();
        return;
    }
    if (enter)
        click();
    else
        QAbstractButton::keyPressEvent(event);
}

void PaintedButton::mousePressEvent(QMouseEvent *event)
{
    if (isActionable())
        QAbstractButton::mousePressEvent(event);
    else
        event->ignore();
}

bool PaintedButton::event(QEvent *event)
{
    switch (event->type()) {
    // Nothing tells the button of an alert; but the alert takes the keyboard, and gives it back.
    case QEvent::WindowActivate:
    case QEvent::WindowDeactivate:
    case QEvent::Enter:
        showCursor();
        update();
        break;
    default:
        break;
    }
    return QAbstractButton::event(event);
}

bool PaintedButton::isBlocked() const
{
    const QWidget *modal = QApplication::activeModalWidget();
    return modal && modal != window();
}

void PaintedButton::showCursor()
{
    const bool isClickable = m_actionable && !isBlocked();
    setCursor(isClickable ? Qt::PointingHandCursor : Qt::ArrowCursor);
}

void PaintedButton::tellActionable()
{
    QAccessible::State changed;
    changed.disabled = true;
    QAccessibleStateChangeEvent change(this, changed);
    QAccessible::updateAccessibility(&change);
}

} // namespace tovel
