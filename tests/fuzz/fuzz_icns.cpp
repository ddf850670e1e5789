#include "views/icon_images.h"

using namespace tovel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray file(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
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
    return 0;
}
