#include "settings/shortcut.h"

#include <QtGlobal>

using namespace tovel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const auto shortcut = decodeShortcut(
        QByteArray(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size)));
    if (!shortcut)
        return 0;
    shortcut->label();
    // What was read can be written, and reads the same.
    if (decodeShortcut(encodeShortcut(*shortcut)) != shortcut)
        qFatal("a shortcut does not survive being written");
    return 0;
}
