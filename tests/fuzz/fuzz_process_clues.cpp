#include "platform/linux/applications/process_clues.h"

using namespace tovel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArrayView bytes(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    startTicksFromStat(bytes);
    flatpakIdFromInfo(bytes);
    snapIdFromCgroup(bytes);
    launchedDesktopFileFromEnvironment(bytes, 42);
    cleanClue(QString::fromUtf8(bytes));
    return 0;
}
