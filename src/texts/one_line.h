#pragma once

#include <QString>

// What becomes of texts that somebody else chose: titles, names, arguments, answers.
namespace tovel {

// What is kept of a title or a name, in UTF-16 units.
inline constexpr qsizetype MaximumTitleLength = 512;

// Whether the character would break a line or act on whatever shows it: a control character, a line
// or a paragraph separator.
bool breaksLine(QChar character);

// Whether it acts on the characters around it without being seen (Unicode's category Cf). Some
// scripts and many emoji need such characters; a terminal, or a name that is compared, does not.
bool isInvisible(QChar character);

// At most so many UTF-16 units and no half of a surrogate pair at the cut, with a blank for each
// character that breaks a line.
QString oneLine(QStringView text, qsizetype longest = MaximumTitleLength);

} // namespace tovel
