#include "app/service/bus_names.h"

#include <QtGlobal>

namespace tovel {

QString ownDisplay()
{
    const QString display = qEnvironmentVariable("DISPLAY");
    const qsizetype server = display.lastIndexOf(u':');
    const qsizetype screen = display.indexOf(u'.', server);
    return server >= 0 && screen > server ? display.first(screen) : display;
}

bool isSameDisplay(const QString &one, const QString &other)
{
    return one.isEmpty() || other.isEmpty() || one == other;
}

} // namespace tovel
