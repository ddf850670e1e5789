#pragma once

#include "views/text_style.h"

#include <QString>

class QLabel;

namespace tovel {

// A label of plain text, as broad as what it is put into. The caller owns it.
QLabel *makeWrappedText(const QString &text, TextStyle style);

} // namespace tovel
