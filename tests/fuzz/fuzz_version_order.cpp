#include "fuzz.h"
#include "updater/version_order.h"

#include <QStringList>

using namespace tovel;

// Every three lines have to be in one order, wherever one starts.
void fuzz(QByteArrayView bytes)
{
    const QStringList lines = QString::fromUtf8(bytes).split(u'\n');
    const QString &a = lines[0];
    const QString b = lines.value(1);
    const QString c = lines.value(2);
    if (compareVersions(a, a) != 0)
        qFatal("a version is another than itself");
    if (compareVersions(a, b) != 0 <=> compareVersions(b, a))
        qFatal("versions are ordered by their place");
    if (compareVersions(a, b) <= 0 && compareVersions(b, c) <= 0 && compareVersions(a, c) > 0)
        qFatal("versions go round in a circle");
}
