#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

// Readings of window properties. Any client can set any property to anything, so each reading
// checks type and format, caps what it takes, and answers nothing for a value of another shape.
namespace tovel::x11 {

using Atom = std::uint32_t;
using Window = std::uint32_t;

// A property as the server returned it, at most as long as it was asked for.
struct Property
{
    Atom type = 0; // 0: there is no such property
    std::uint8_t format = 0;
    QByteArray bytes;
    bool isCut = false; // it is longer
};

// Predefined atoms of the core protocol.
inline constexpr Atom AtomType = 4;
inline constexpr Atom CardinalType = 6;
inline constexpr Atom StringType = 31;
inline constexpr Atom WindowType = 33;

// The first value of a 32-bit list of the given type.
std::optional<std::uint32_t> readValue(const Property &property, Atom type);

// All whole values of a 32-bit list of the given type; empty when it is something else.
std::vector<std::uint32_t> readList(const Property &property, Atom type);

// UTF8_STRING (its atom is given) or STRING (ISO 8859-1). Malformed bytes become replacement
// characters, control characters blanks; cut at the first NUL and at the longest title. Absent for
// any other type and for an empty text.
std::optional<QString> readText(const Property &property, Atom utf8String);

// A list of texts, each ended by a NUL (_NET_DESKTOP_NAMES), as readText() reads them, but with the
// empty ones in their places; at most so many. Empty for any other type.
QStringList readTextList(const Property &property, Atom utf8String, qsizetype most);

// WM_CLASS (ICCCM 4.1.2.5): instance and class, either of which may be empty.
std::pair<QString, QString> readClass(const Property &property);

} // namespace tovel::x11
