#pragma once

#include "views/text_style.h"

#include <QString>

class QLabel;

namespace tovel {

// A label of plain text, as broad as what it is put into, or of that width where the text has its
// usual size. The caller owns it.
QLabel *makeWrappedText(const QString &text, TextStyle style);
QLabel *makeWrappedText(const QString &text, TextStyle style, int width);

} // namespace tovel
