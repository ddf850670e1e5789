#include "platform/linux/applications/desktop_entry.h"

#include <QtGlobal>

using namespace tovel;
using namespace Qt::StringLiterals;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const auto entry = parseDesktopEntry(
        u"id"_s, u"/id.desktop"_s,
        QByteArrayView(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size)));
    if (entry && (entry->name.isEmpty() || entry->name != cleanClue(entry->name)))
        qFatal("a name that cannot be shown");
    return 0;
}
