#pragma once

#include <QByteArray>
#include <QImage>

namespace tovel {

// The picture in the bytes of a file, fitted into a square of so many pixels: SVG, compressed or
// not, or whatever else the toolkit reads. Null when there is none, or one far larger than an icon.
//
// May take any time, any memory that the process can have, or its life. From here on the process
// can open no file, so that a picture shows nothing but itself. To be called in a process for this
// one picture.
QImage decodePicture(QByteArray bytes, int pixels);

} // namespace tovel
