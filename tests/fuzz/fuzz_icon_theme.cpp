#include "pictures/icon_theme.h"

#include <QtGlobal>

using namespace tovel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const IconTheme theme = parseIconTheme(
        QByteArrayView(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size)));
    for (const IconFolder &folder : theme.folders) {
        if (folder.path.isEmpty() || folder.largest <= 0)
            qFatal("a folder for no size");
    }
    return 0;
}
