#include "platform/session/x11/properties.h"

#include "texts/one_line.h"

#include <cstring>

namespace tovel::x11 {

namespace {

QByteArrayView firstText(const QByteArray &bytes, qsizetype from)
{
    const QByteArrayView rest = QByteArrayView(bytes).sliced(from);
    const qsizetype end = rest.indexOf('\0');
    return end < 0 ? rest : rest.first(end);
}

} // namespace

std::vector<std::uint32_t> readList(const Property &property, Atom type)
{
    if (property.type != type || property.format != 32)
        return {};
    std::vector<std::uint32_t> values(static_cast<std::size_t>(property.bytes.size()) / 4);
    if (!values.empty())
        std::memcpy(values.data(), property.bytes.constData(), values.size() * 4);
    return values;
}

std::optional<std::uint32_t> readValue(const Property &property, Atom type)
{
    const auto values = readList(property, type);
    if (values.empty())
        return std::nullopt;
    return values.front();
}

std::optional<QString> readText(const Property &property, Atom utf8String)
{
    if (property.format != 8)
        return std::nullopt;
    const QByteArrayView bytes = firstText(property.bytes, 0);
    QString text;
    if (property.type == utf8String)
        text = QString::fromUtf8(bytes);
    else if (property.type == StringType)
        text = QString::fromLatin1(bytes);
    if (text.isEmpty())
        return std::nullopt;
    return oneLine(text);
}

QStringList readTextList(const Property &property, Atom utf8String, qsizetype most)
{
    QStringList texts;
    if (property.type != utf8String || property.format != 8)
        return texts;
    for (qsizetype at = 0; at < property.bytes.size() && texts.size() < most;) {
        const QByteArrayView text = firstText(property.bytes, at);
        texts.append(oneLine(QString::fromUtf8(text)));
        at += text.size() + 1;
    }
    return texts;
}

std::pair<QString, QString> readClass(const Property &property)
{
    if (property.type != StringType || property.format != 8)
        return {};
    const QByteArrayView instance = firstText(property.bytes, 0);
    QByteArrayView className;
    if (instance.size() < property.bytes.size())
        className = firstText(property.bytes, instance.size() + 1);
    return {oneLine(QString::fromUtf8(instance)), oneLine(QString::fromUtf8(className))};
}

} // namespace tovel::x11
