#include "settings/shortcut.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <limits>
#include <utility>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

struct Modifier
{
    std::uint32_t mask;
    std::uint64_t flag;
    char16_t symbol;
};

// In the order of the label.
constexpr Modifier Modifiers[] = {
    {controlKey, NSEventModifierFlagControl, u'⌃'},
    {optionKey, NSEventModifierFlagOption, u'⌥'},
    {shiftKey, NSEventModifierFlagShift, u'⇧'},
    {cmdKey, NSEventModifierFlagCommand, u'⌘'},
};

constexpr std::pair<std::uint32_t, const char16_t *> KeyNames[] = {
    {36, u"↩"},    {48, u"⇥"},     {49, u"Space"}, {51, u"⌫"},        {53, u"⎋"},
    {76, u"⌤"},    {117, u"⌦"},    {123, u"←"},    {124, u"→"},       {125, u"↓"},
    {126, u"↑"},   {115, u"Home"}, {119, u"End"},  {116, u"Page Up"}, {121, u"Page Down"},
    {122, u"F1"},  {120, u"F2"},   {99, u"F3"},    {118, u"F4"},      {96, u"F5"},
    {97, u"F6"},   {98, u"F7"},    {100, u"F8"},   {101, u"F9"},      {109, u"F10"},
    {103, u"F11"}, {111, u"F12"},  {110, u"Menu"}, {114, u"Insert"},
};

QString keyName(const KeyDownEvent &event)
{
    for (const auto &[keyCode, name] : KeyNames) {
        if (keyCode == event.keyCode)
            return QString::fromUtf16(name);
    }
    return event.charactersIgnoringModifiers.toUpper();
}

std::optional<std::uint32_t> unsigned32(const QJsonValue &value)
{
    constexpr double Largest = std::numeric_limits<std::uint32_t>::max();
    const double number = value.toDouble(-1);
    if (!(number >= 0 && number <= Largest) || number != static_cast<std::uint32_t>(number))
        return std::nullopt;
    return static_cast<std::uint32_t>(number);
}

} // namespace

TovelShortcut TovelShortcut::standard() { return {17, controlKey | optionKey | cmdKey, u"T"_s}; }

QString TovelShortcut::label() const
{
    QString label;
    for (const Modifier &modifier : Modifiers) {
        if (modifiers & modifier.mask)
            label += modifier.symbol;
    }
    return label + key;
}

std::optional<TovelShortcut> shortcutFromEvent(const KeyDownEvent &event)
{
    constexpr std::uint64_t Required
        = NSEventModifierFlagControl | NSEventModifierFlagOption | NSEventModifierFlagCommand;
    if ((event.modifierFlags & Required) == 0)
        return std::nullopt;
    TovelShortcut shortcut{event.keyCode, 0, keyName(event)};
    if (shortcut.key.isEmpty())
        return std::nullopt;
    for (const Modifier &modifier : Modifiers) {
        if (event.modifierFlags & modifier.flag)
            shortcut.modifiers |= modifier.mask;
    }
    return shortcut;
}

QByteArray encodeShortcut(const TovelShortcut &shortcut)
{
    // An object would sort its members.
    const QByteArray key = QJsonDocument(QJsonArray{shortcut.key}).toJson(QJsonDocument::Compact);
    return "{\"keyCode\":" + QByteArray::number(shortcut.keyCode)
        + ",\"modifiers\":" + QByteArray::number(shortcut.modifiers)
        + ",\"key\":" + key.sliced(1, key.size() - 2) + '}';
}

std::optional<TovelShortcut> decodeShortcut(const QByteArray &json)
{
    const QJsonObject object = QJsonDocument::fromJson(json).object();
    const auto keyCode = unsigned32(object[u"keyCode"_s]);
    const auto modifiers = unsigned32(object[u"modifiers"_s]);
    const QJsonValue key = object[u"key"_s];
    if (!keyCode || !modifiers || !key.isString())
        return std::nullopt;
    return TovelShortcut{*keyCode, *modifiers, key.toString()};
}

} // namespace tovel
