#include "updater/version_order.h"

#include <QStringList>
#include <QtGlobal>

using namespace tovel;

// Every three lines have to be in one order, wherever one starts.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QStringList lines
        = QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size))
              .split(u'\n');
    const QString &a = lines[0];
    const QString b = lines.value(1);
    const QString c = lines.value(2);
    if (compareVersions(a, a) != 0)
        qFatal("a version is another than itself");
    if (compareVersions(a, b) != 0 <=> compareVersions(b, a))
        qFatal("versions are ordered by their place");
    if (compareVersions(a, b) <= 0 && compareVersions(b, c) <= 0 && compareVersions(a, c) > 0)
        qFatal("versions go round in a circle");
    return 0;
}
