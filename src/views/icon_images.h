#pragma once

#include "settings/bundle.h"
#include "settings/icon_style.h"

#include <QImage>

#include <optional>

namespace tovel {

// The application's icon in a style: the largest picture in the bundle's file of that style
// (.icns). Read anew at each call. Absent when the file is missing, damaged, or far larger than an
// icon.
std::optional<QImage> image(TovelIconStyle style, const Bundle &bundle = mainBundle());

// The whole of that icon in its own colours, 20 by 20 device-independent pixels. The ratio is that
// of the screen it is for; what no screen has is brought to the nearest that one could have.
std::optional<QImage> menuImage(TovelIconStyle style, qreal devicePixelRatio,
                                const Bundle &bundle = mainBundle());

} // namespace tovel
