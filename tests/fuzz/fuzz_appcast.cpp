#include "fuzz.h"
#include "updater/appcast.h"
#include "updater/feed_address.h"
#include "updater/update_choice.h"
#include "updater/version_order.h"

using namespace tovel;

namespace {

void check(const SUAppcastItem &item)
{
    const qsizetype version = qMax(item.versionString.size(), item.displayVersionString.size());
    if (version == 0 || version > appcastVersionLimit || item.title.size() > appcastTitleLimit
        || item.itemDescription.size() > appcastNotesLimit)
        qFatal("a release says too little or too much");
    if (!item.infoURL.isEmpty() && !isReleasePage(item.infoURL))
        qFatal("a page that nobody may be sent to");
}

} // namespace

void fuzz(QByteArrayView bytes)
{
    const AppcastReading feed = parseAppcast(bytes);
    if (!feed.error.isEmpty() && !feed.items.isEmpty())
        qFatal("half a feed");
    for (const SUAppcastItem &item : feed.items) {
        check(item);
        const QString &first = feed.items.front().versionString;
        if (compareVersions(first, item.versionString)
            != 0 <=> compareVersions(item.versionString, first))
            qFatal("versions are ordered by their place");
    }
    newestUpdate(feed.items, {QStringLiteral("1.0"), QString()});
}
