#pragma once

#include <QString>

#include <cstdio>

namespace tovel {

// Opens /dev/null for each of the three standard streams that the program was started without, so
// that nothing it opens later is taken for one of them. Standard output still cannot be written to.
// To be called before anything is opened.
void openMissingStreams();

// A text of other programs, of arguments or of stored choices, made harmless to a terminal: its
// control and format characters become blanks.
QString printable(const QString &text);

// Writes UTF-8 and flushes; false when not everything could be written.
bool writeText(FILE *stream, const QString &text);

} // namespace tovel
