#include "app/shell/dialogs_on_all_spaces.h"

#include "app/panel/own_window.h"
#include "platform/own_windows.h"

#include <QEvent>
#include <QGuiApplication>
#include <QWindow>

namespace tovel {

DialogsOnAllSpaces::DialogsOnAllSpaces(OwnWindows &ownWindows)
    : m_ownWindows(ownWindows)
{
    qApp->installEventFilter(this);
}

DialogsOnAllSpaces::~DialogsOnAllSpaces() = default;

bool DialogsOnAllSpaces::eventFilter(QObject *watched, QEvent *event)
{
    // Exposed, it is the window manager's, which heeds no wish before. A compositor may know of no
    // window that has not been painted yet; it then exposes it once more.
    auto *window = event->type() == QEvent::Expose ? qobject_cast<QWindow *>(watched) : nullptr;
    if (!window || window->type() != Qt::Dialog)
        return false;
    if (!window->isExposed()) {
        m_shown.remove(window);
    } else if (!m_shown.contains(window)
               && m_ownWindows.setCollectionBehavior(ownWindow(*window),
                                                     NSWindowCollectionBehaviorCanJoinAllSpaces)) {
        m_shown.insert(window);
        connect(window, &QObject::destroyed, this, [this, window] { m_shown.remove(window); });
    }
    return false;
}

} // namespace tovel
