#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QVariant>

#include <optional>

namespace tovel {

// Stored values as JSON (RFC 8259) that keeps their kinds: booleans, 64-bit integers, doubles,
// texts, byte strings, arrays and dictionaries. What JSON itself cannot tell apart is an object
// with one marker as its only key:
//   {"$data": base64}      a byte string
//   {"$real": text}        a double without a fraction, or one that is not finite
//   {"$unsigned": text}    an integer above the signed range
//   {"$dictionary": {…}}   a dictionary whose only key is a marker

inline constexpr qsizetype maximumDefaultsSize = 1024 * 1024; // bytes of all values together
inline constexpr qsizetype maximumDefaultsCount = 1000; // values
inline constexpr int maximumDefaultsDepth = 32; // of arrays and dictionaries in each other

// One value as compact JSON. Nothing for a value that is or holds another kind, is nested too
// deeply, or is larger than half of what all may be. A null one can only be within another. Lone
// surrogates are not kept.
std::optional<QByteArray> jsonFromVariant(const QVariant &value);

// Integers come back as qint64, or quint64 above its range. Nothing for anything but one such
// value: for null, or a marker with malformed content. Within an array or a dictionary those and
// what is nested too deeply come back as null ones, so that they take nothing from the others.
std::optional<QVariant> variantFromJson(QByteArrayView json);

// The values of a file that is one JSON object, without those that variantFromJson would not read.
// Nothing for bytes that are not one whole JSON object, or are more than may be stored.
std::optional<QVariantMap> parseDefaults(QByteArrayView bytes);

} // namespace tovel
