#pragma once

#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <optional>

namespace tovel {

// Strict reads of the loosely typed values that platform calls return and user defaults hold.
// Each gives the value only when the variant holds exactly that kind: a text is never a number, a
// number never a boolean. Nothing here converts between kinds.

// True for integers and floating-point numbers, false for booleans and everything else.
bool isNumber(const QVariant &value);

// The number as an unsigned integer; negative numbers wrap as a two's-complement reader would see
// them, fractions are cut. Numbers that no 64-bit integer can hold give nothing.
std::optional<quint64> unsignedNumber(const QVariant &value);
std::optional<qint64> signedNumber(const QVariant &value);
std::optional<double> realNumber(const QVariant &value);

std::optional<bool> boolean(const QVariant &value);
std::optional<QString> text(const QVariant &value);
std::optional<QVariantMap> dictionary(const QVariant &value);
std::optional<QVariantList> array(const QVariant &value);

// The list when every item is a dictionary, otherwise nothing.
std::optional<QList<QVariantMap>> dictionaries(const QVariantList &list);

// Whole-value reads: one item of another kind makes the result absent.
std::optional<QStringList> texts(const QVariant &value);
std::optional<QMap<QString, QString>> textDictionary(const QVariant &value);

} // namespace tovel
