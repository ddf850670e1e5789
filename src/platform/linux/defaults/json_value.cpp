#include "platform/linux/defaults/json_value.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>

#include <cmath>
#include <limits>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView dataMarker("$data");
constexpr QLatin1StringView realMarker("$real");
constexpr QLatin1StringView unsignedMarker("$unsigned");
constexpr QLatin1StringView dictionaryMarker("$dictionary");

bool isMarker(const QString &key)
{
    return key == dataMarker || key == realMarker || key == unsignedMarker
        || key == dictionaryMarker;
}

QJsonObject marked(QLatin1StringView marker, const QJsonValue &content)
{
    return {{marker, content}};
}

QJsonValue jsonFromReal(double real)
{
    // QJsonValue turns a double without a fraction into an integer, and QString loses zero's sign.
    if (std::isfinite(real) && real != std::trunc(real))
        return real;
    if (real == 0 && std::signbit(real))
        return marked(realMarker, u"-0"_s);
    return marked(realMarker, QString::number(real, 'g', QLocale::FloatingPointShortest));
}

QJsonValue jsonFromUnsigned(quint64 number)
{
    if (number <= static_cast<quint64>(std::numeric_limits<qint64>::max()))
        return static_cast<qint64>(number);
    return marked(unsignedMarker, QString::number(number));
}

std::optional<QJsonValue> encoded(const QVariant &value, int depth);

std::optional<QJsonValue> encodedMember(const QVariant &value, int depth)
{
    return value.isValid() ? encoded(value, depth) : QJsonValue();
}

std::optional<QJsonValue> encodedList(const QVariantList &list, int depth)
{
    QJsonArray array;
    for (const QVariant &item : list) {
        const auto json = encodedMember(item, depth);
        if (!json)
            return std::nullopt;
        array.append(*json);
    }
    return array;
}

std::optional<QJsonValue> encodedMap(const QVariantMap &map, int depth)
{
    QJsonObject object;
    for (auto it = map.cbegin(); it != map.cend(); ++it) {
        const auto json = encodedMember(it.value(), depth);
        if (!json)
            return std::nullopt;
        object.insert(it.key(), *json);
    }
    if (map.size() == 1 && isMarker(map.firstKey()))
        return marked(dictionaryMarker, object);
    return object;
}

std::optional<QJsonValue> encoded(const QVariant &value, int depth)
{
    if (depth > maximumDefaultsDepth)
        return std::nullopt;
    switch (value.typeId()) {
    case QMetaType::Bool:
        return value.toBool();
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Long:
    case QMetaType::LongLong:
        return value.toLongLong();
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        return jsonFromUnsigned(value.toULongLong());
    case QMetaType::Float:
    case QMetaType::Double:
        return jsonFromReal(value.toDouble());
    case QMetaType::QString:
        return value.toString();
    case QMetaType::QByteArray:
        return marked(dataMarker, QString::fromLatin1(value.toByteArray().toBase64()));
    case QMetaType::QStringList:
        return depth < maximumDefaultsDepth
            ? std::optional<QJsonValue>(QJsonArray::fromStringList(value.toStringList()))
            : std::nullopt;
    case QMetaType::QVariantList:
        return encodedList(value.toList(), depth + 1);
    case QMetaType::QVariantMap:
        return encodedMap(value.toMap(), depth + 1);
    default:
        return std::nullopt;
    }
}

std::optional<QVariant> decoded(const QJsonValue &json, int depth);

QVariantMap decodedMap(const QJsonObject &object, int depth)
{
    QVariantMap map;
    for (auto it = object.begin(); it != object.end(); ++it)
        map.insert(it.key(), decoded(it.value(), depth).value_or(QVariant()));
    return map;
}

std::optional<QVariant> decodedMarker(const QString &marker, const QJsonValue &content, int depth)
{
    if (marker == dictionaryMarker) {
        if (!content.isObject())
            return std::nullopt;
        return decodedMap(content.toObject(), depth);
    }
    if (!content.isString())
        return std::nullopt;
    const QString text = content.toString();
    bool valid = false;
    QVariant value;
    if (marker == dataMarker) {
        const auto data = QByteArray::fromBase64Encoding(
            text.toUtf8(), QByteArray::Base64Encoding | QByteArray::AbortOnBase64DecodingErrors);
        valid = data.decodingStatus == QByteArray::Base64DecodingStatus::Ok;
        value = data.decoded;
    } else if (marker == realMarker) {
        value = text.toDouble(&valid);
    } else {
        value = text.toULongLong(&valid);
    }
    return valid ? std::optional(value) : std::nullopt;
}

std::optional<QVariant> decoded(const QJsonValue &json, int depth)
{
    if (depth > maximumDefaultsDepth)
        return std::nullopt;
    switch (json.type()) {
    case QJsonValue::Bool:
    case QJsonValue::Double:
    case QJsonValue::String:
        return json.toVariant();
    case QJsonValue::Array: {
        QVariantList list;
        for (const QJsonValue item : json.toArray())
            list.append(decoded(item, depth + 1).value_or(QVariant()));
        return list;
    }
    case QJsonValue::Object: {
        const QJsonObject object = json.toObject();
        if (object.size() == 1 && isMarker(object.begin().key()))
            return decodedMarker(object.begin().key(), object.begin().value(), depth + 1);
        return decodedMap(object, depth + 1);
    }
    case QJsonValue::Null:
    case QJsonValue::Undefined:
        break;
    }
    return std::nullopt;
}

} // namespace

std::optional<QByteArray> jsonFromVariant(const QVariant &value)
{
    const auto json = encoded(value, 0);
    if (!json)
        return std::nullopt;
    // Only arrays and objects are documents.
    const QByteArray array = QJsonDocument(QJsonArray{*json}).toJson(QJsonDocument::Compact);
    if (array.size() > maximumDefaultsSize / 2)
        return std::nullopt;
    return array.sliced(1, array.size() - 2);
}

std::optional<QVariant> variantFromJson(QByteArrayView json)
{
    if (json.size() > maximumDefaultsSize)
        return std::nullopt;
    const QJsonArray array = QJsonDocument::fromJson('[' + json.toByteArray() + ']').array();
    return array.size() == 1 ? decoded(array.first(), 0) : std::nullopt;
}

std::optional<QVariantMap> parseDefaults(QByteArrayView bytes)
{
    if (bytes.size() > maximumDefaultsSize)
        return std::nullopt;
    const auto document
        = QJsonDocument::fromJson(QByteArray::fromRawData(bytes.data(), bytes.size()));
    const QJsonObject object = document.object();
    if (!document.isObject() || object.size() > maximumDefaultsCount)
        return std::nullopt;
    QVariantMap values;
    for (auto it = object.begin(); it != object.end(); ++it) {
        if (auto value = decoded(it.value(), 0))
            values.insert(it.key(), *std::move(value));
    }
    return values;
}

} // namespace tovel
