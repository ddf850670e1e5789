#include "fuzz.h"
#include "platform/linux/applications/desktop_entry.h"

using namespace tovel;
using namespace Qt::StringLiterals;

void fuzz(QByteArrayView bytes)
{
    const auto entry = parseDesktopEntry(u"id"_s, u"/id.desktop"_s, bytes);
    if (entry && (entry->name.isEmpty() || entry->name != cleanClue(entry->name)))
        qFatal("a name that cannot be shown");
}
