#include "app/shell/held_keys.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>

namespace tovel {

namespace {

bool acts(int key)
{
    switch (key) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Select:
    case Qt::Key_Escape:
        return true;
    case Qt::Key_Space:
        return !qobject_cast<QLineEdit *>(QApplication::focusWidget());
    default:
        return false;
    }
}

} // namespace

HeldKeys::HeldKeys(QObject *parent)
    : QObject(parent)
{
    qApp->installEventFilter(this);
}

bool HeldKeys::eventFilter(QObject *watched, QEvent *event)
{
    const bool isPress = event->type() == QEvent::KeyPress;
    if (!watched->isWindowType() || (!isPress && event->type() != QEvent::KeyRelease))
        return false;
    // For assistive programs Qt takes the session's events before this filter, and passes copies on
    // that have no time. From the next one on, this filter is the first.
    if (!event->spontaneous()) {
        QMetaObject::invokeMethod(
            this, [this] { qApp->installEventFilter(this); }, Qt::QueuedConnection);
    }
    const auto &key = *static_cast<QKeyEvent *>(event);
    if (isPress)
        return acts(key.key()) && isRepeated(key);
    if (key.timestamp() != 0) {
        m_releasedKey = key.nativeScanCode();
        m_releaseTime = key.timestamp();
    }
    return false;
}

// An X server tells a repetition as a release and a press of the same moment. Qt marks them only
// when it has read both by the time it looks at the first.
bool HeldKeys::isRepeated(const QKeyEvent &press) const
{
    return press.isAutoRepeat()
        || (press.timestamp() != 0 && press.timestamp() == m_releaseTime
            && press.nativeScanCode() == m_releasedKey);
}

} // namespace tovel
