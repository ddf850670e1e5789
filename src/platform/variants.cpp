#include "platform/variants.h"

#include <QMetaType>

#include <cmath>

namespace tovel {

bool isNumber(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Double:
    case QMetaType::Float:
        return true;
    default:
        return false;
    }
}

std::optional<quint64> unsignedNumber(const QVariant &value)
{
    if (value.typeId() == QMetaType::ULongLong || value.typeId() == QMetaType::ULong)
        return value.toULongLong();
    if (const auto number = signedNumber(value))
        return static_cast<quint64>(*number);
    return std::nullopt;
}

std::optional<qint64> signedNumber(const QVariant &value)
{
    if (!isNumber(value))
        return std::nullopt;
    if (value.typeId() == QMetaType::Double || value.typeId() == QMetaType::Float) {
        const double real = std::trunc(value.toDouble());
        constexpr double limit = 9223372036854775808.0;
        if (!(real >= -limit && real < limit))
            return std::nullopt;
        return static_cast<qint64>(real);
    }
    if (value.typeId() == QMetaType::ULongLong || value.typeId() == QMetaType::ULong)
        return static_cast<qint64>(value.toULongLong());
    return value.toLongLong();
}

std::optional<double> realNumber(const QVariant &value)
{
    if (!isNumber(value))
        return std::nullopt;
    return value.toDouble();
}

std::optional<bool> boolean(const QVariant &value)
{
    if (value.typeId() != QMetaType::Bool)
        return std::nullopt;
    return value.toBool();
}

std::optional<QString> text(const QVariant &value)
{
    if (value.typeId() != QMetaType::QString)
        return std::nullopt;
    return value.toString();
}

std::optional<QVariantMap> dictionary(const QVariant &value)
{
    if (value.typeId() != QMetaType::QVariantMap)
        return std::nullopt;
    return value.toMap();
}

std::optional<QVariantList> array(const QVariant &value)
{
    if (value.typeId() == QMetaType::QVariantList)
        return value.toList();
    if (value.typeId() == QMetaType::QStringList) {
        QVariantList list;
        for (const QString &item : value.toStringList())
            list.append(item);
        return list;
    }
    return std::nullopt;
}

std::optional<QList<QVariantMap>> dictionaries(const QVariantList &list)
{
    QList<QVariantMap> result;
    result.reserve(list.size());
    for (const QVariant &item : list) {
        auto map = dictionary(item);
        if (!map)
            return std::nullopt;
        result.append(*std::move(map));
    }
    return result;
}

std::optional<QStringList> texts(const QVariant &value)
{
    const auto list = array(value);
    if (!list)
        return std::nullopt;
    QStringList result;
    for (const QVariant &item : *list) {
        const auto string = text(item);
        if (!string)
            return std::nullopt;
        result.append(*string);
    }
    return result;
}

std::optional<QMap<QString, QString>> textDictionary(const QVariant &value)
{
    const auto map = dictionary(value);
    if (!map)
        return std::nullopt;
    QMap<QString, QString> result;
    for (auto it = map->cbegin(); it != map->cend(); ++it) {
        const auto string = text(it.value());
        if (!string)
            return std::nullopt;
        result.insert(it.key(), *string);
    }
    return result;
}

} // namespace tovel
