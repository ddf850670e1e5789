#pragma once

#include <QImage>
#include <QList>

namespace tovel {

// The image of the status item in the session's text colour, once at each size that trays ask for,
// the smallest first. Empty when the bundle has no such image.
QList<QImage> statusImages();

} // namespace tovel
