#include "fuzz.h"
#include "platform/linux/applications/process_clues.h"

using namespace tovel;

void fuzz(QByteArrayView bytes)
{
    startTicksFromStat(bytes);
    flatpakIdFromInfo(bytes);
    snapIdFromCgroup(bytes);
    launchedDesktopFileFromEnvironment(bytes, 42);
    cleanClue(QString::fromUtf8(bytes));
}
