#include "fuzz.h"
#include "updater/appcast.h"
#include "updater/plain_text.h"

using namespace tovel;

// Feeds as long as they may be, which the fuzzer would never come upon byte by byte: what stands
// between the first two bytes 255 of the input is repeated. Finds what takes more than linear time.
void fuzz(QByteArrayView bytes)
{
    const QList<QByteArray> parts = bytes.toByteArray().split('\xff');
    const QByteArray unit = parts.value(1);
    if (unit.isEmpty())
        return;
    const QByteArray head = parts[0];
    const QByteArray tail = parts.value(2);
    const qsizetype room = appcastSizeLimit - head.size() - tail.size();
    const QByteArray feed = head + unit.repeated(room / unit.size()) + tail;
    parseAppcast(feed);
    plainText(QString::fromUtf8(feed), appcastNotesLimit);
}
