#pragma once

#include "settings/bundle.h"
#include "settings/icon_style.h"

#include <QImage>
#include <QList>

#include <optional>

namespace tovel {

struct IconPicture
{
    QByteArray png;
    int side = 0; // in pixels, as the picture states
};

// The PNG pictures among the entries of an .icns file, the smallest first; none of what is no such
// file, nor such as state to be far larger than an icon.
QList<IconPicture> iconPictures(const QByteArray &file);

// The application's icon in a style: the largest picture in the bundle's file of that style (.icns
// with PNG pictures). Read anew at each call. Absent when the file is missing, damaged, or far
// larger than an icon.
std::optional<QImage> image(TovelIconStyle style, const Bundle &bundle = mainBundle());

// The same icon in so many pixels: made of the file's picture for that size, which may be drawn
// simpler than the large ones.
std::optional<QImage> image(TovelIconStyle style, int side, const Bundle &bundle = mainBundle());

// What a session shows the icon of a window with: the file's pictures of up to 128 pixels. Those
// above would only be sent around.
QList<QImage> windowImages(TovelIconStyle style, const Bundle &bundle = mainBundle());

// The whole of that icon in its own colours, 20 by 20 device-independent pixels. The ratio is that
// of the screen it is for; what no screen has is brought to the nearest that one could have.
std::optional<QImage> menuImage(TovelIconStyle style, qreal devicePixelRatio,
                                const Bundle &bundle = mainBundle());

} // namespace tovel
