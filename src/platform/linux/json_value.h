#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QJsonValue>
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

inline constexpr qsizetype maximumDefaultsSize = 4 * 1024 * 1024; // bytes
inline constexpr int maximumDefaultsDepth = 32; // of arrays and dictionaries in each other

// Nothing for a value that is or holds another kind, null included, or is nested too deeply.
std::optional<QJsonValue> jsonFromVariant(const QVariant &value);

// Integers come back as qint64, or quint64 above its range. Nothing for null, for a marker with
// malformed content, or when nested too deeply.
std::optional<QVariant> variantFromJson(const QJsonValue &json);

// The text of a domain. Nothing when a value cannot be expressed or the text would be larger than
// parseDefaults accepts.
std::optional<QByteArray> serializeDefaults(const QVariantMap &values);

// Reads such a text. Nothing for bytes that are not one whole JSON object of known kinds, or are
// more than maximumDefaultsSize.
std::optional<QVariantMap> parseDefaults(QByteArrayView bytes);

} // namespace tovel
