#include "fuzz.h"
#include "pictures/icon_theme.h"

using namespace tovel;

void fuzz(QByteArrayView bytes)
{
    const IconTheme theme = parseIconTheme(bytes);
    for (const IconFolder &folder : theme.folders) {
        if (folder.path.isEmpty() || folder.largest <= 0)
            qFatal("a folder for no size");
    }
}
