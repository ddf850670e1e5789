#include "fuzz.h"
#include "views/icon_images.h"

using namespace tovel;

void fuzz(QByteArrayView bytes)
{
    const QByteArray file = bytes.toByteArray();
    int side = 1;
    qsizetype total = 0;
    for (const IconPicture &picture : iconPictures(file)) {
        if (picture.side < side)
            qFatal("pictures out of order");
        side = picture.side;
        total += picture.png.size();
    }
    if (total > file.size())
        qFatal("more pictures than bytes");
}
