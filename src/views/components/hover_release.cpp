#include "views/components/hover_release.h"

#include <QApplication>
#include <QEvent>
#include <QWidget>

namespace tovel {

HoverRelease::HoverRelease() { qApp->installEventFilter(this); }

bool HoverRelease::eventFilter(QObject *watched, QEvent *event)
{
    // Once the toolkit has made up its mind what is under the pointer now.
    if (event->type() == QEvent::Hide && watched->isWidgetType()
        && static_cast<QWidget *>(watched)->windowType() == Qt::Popup)
        QMetaObject::invokeMethod(this, &HoverRelease::release, Qt::QueuedConnection);
    return QObject::eventFilter(watched, event);
}

void HoverRelease::release()
{
    for (QWidget *widget : QApplication::allWidgets()) {
        QEvent leave(QEvent::Leave);
        if (widget->underMouse())
            QCoreApplication::sendEvent(widget, &leave);
    }
}

} // namespace tovel
