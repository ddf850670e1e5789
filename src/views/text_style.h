#pragma once

#include <QFont>

namespace tovel {

// The sizes of text, from the session's own font: body is that font, but never under 14 pixels.
enum class TextStyle { body, headline, callout, caption, caption2 };

// Headline is bold unless another weight is asked for.
QFont textFont(TextStyle style, QFont::Weight weight);
QFont textFont(TextStyle style);

// The session's font at a fixed size, in device-independent pixels.
QFont systemFont(int pixelSize, QFont::Weight weight = QFont::Normal);

// A length that goes with text: the given one beside a body of 14 pixels, more beside a larger one.
int grown(int length);

} // namespace tovel
