#include "fuzz.h"
#include "settings/shortcut.h"

using namespace tovel;

void fuzz(QByteArrayView bytes)
{
    const auto shortcut = decodeShortcut(bytes.toByteArray());
    if (!shortcut)
        return;
    shortcut->label();
    // What was read can be written, and reads the same.
    if (decodeShortcut(encodeShortcut(*shortcut)) != shortcut)
        qFatal("a shortcut does not survive being written");
}
