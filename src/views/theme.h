#pragma once

#include <QColor>

class QPalette;

namespace tovel {

// Whether a palette belongs to a dark appearance: its window colour is darker than the text on it.
// Widgets repaint with the new palette when the appearance changes, so whoever asks while painting
// follows it.
bool isDark(const QPalette &palette);

// Tovel's own colours, all sRGB. Those that follow the appearance take it from the palette of the
// widget that is about to be painted.
namespace TovelTheme {

QColor accent(const QPalette &palette);
QColor orange();
QColor chromeColor(const QPalette &palette); // for windows
QColor chrome(const QPalette &palette); // the same, for what is painted inside them
QColor separator(const QPalette &palette);

} // namespace TovelTheme

// The colour with its alpha multiplied.
QColor withOpacity(QColor color, double opacity);

// What the session's palette gives under the names the views use.
QColor windowBackground(const QPalette &palette);
QColor controlBackground(const QPalette &palette);
QColor secondary(const QPalette &palette); // dimmed text; at least 4.5:1 on both backgrounds
QColor systemOrange(const QPalette &palette); // warnings; at least 4.5:1 on TovelTheme::chrome

} // namespace tovel
