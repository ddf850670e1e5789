#include "app/shell/key_down.h"

#include "platform/linux/virtual_keys.h"

#include <QKeyEvent>

namespace tovel {

namespace {

// Key codes of X11, which Wayland sessions use too, count from here.
constexpr std::uint32_t firstKeyCode = 8;

struct Name
{
    std::uint32_t virtualKey;
    const char16_t *text;
};

constexpr Name Names[] = {
    {65, u"."},    {67, u"*"},   {69, u"+"},    {75, u"/"},    {78, u"-"},
    {81, u"="},    {82, u"0"},   {83, u"1"},    {84, u"2"},    {85, u"3"},
    {86, u"4"},    {87, u"5"},   {88, u"6"},    {89, u"7"},    {91, u"8"},
    {92, u"9"},    {95, u","},   {105, u"F13"}, {107, u"F14"}, {113, u"F15"},
    {106, u"F16"}, {64, u"F17"}, {79, u"F18"},  {80, u"F19"},  {90, u"F20"},
};

std::uint64_t flags(Qt::KeyboardModifiers modifiers)
{
    return (modifiers & Qt::ShiftModifier ? NSEventModifierFlagShift : 0)
        | (modifiers & Qt::ControlModifier ? NSEventModifierFlagControl : 0)
        | (modifiers & Qt::AltModifier ? NSEventModifierFlagOption : 0)
        | (modifiers & Qt::MetaModifier ? NSEventModifierFlagCommand : 0);
}

QString characters(int key, std::uint32_t virtualKey)
{
    for (const Name &name : Names) {
        if (name.virtualKey == virtualKey)
            return QString::fromUtf16(name.text);
    }
    // Qt names keys with characters by their upper-case code point, whatever Control makes of them.
    const bool hasCharacters = key > Qt::Key_Space && key < Qt::Key_Escape;
    return hasCharacters ? QString::fromUcs4(reinterpret_cast<const char32_t *>(&key), 1)
                         : QString();
}

} // namespace

bool isModifier(const QKeyEvent &event)
{
    switch (event.key()) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Meta:
    case Qt::Key_Super_L:
    case Qt::Key_Super_R:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_CapsLock:
    case Qt::Key_NumLock:
    case Qt::Key_ScrollLock:
        return true;
    default:
        return false;
    }
}

std::optional<KeyDownEvent> keyDown(const QKeyEvent &event)
{
    if (event.nativeScanCode() < firstKeyCode)
        return std::nullopt;
    const auto keyCode = virtualKeyAt(event.nativeScanCode() - firstKeyCode);
    if (!keyCode)
        return std::nullopt;
    const KeyDownEvent key{flags(event.modifiers()), *keyCode, characters(event.key(), *keyCode)};
    KeyDownEvent complete = key;
    complete.modifierFlags |= NSEventModifierFlagControl;
    return shortcutFromEvent(complete) ? std::optional(key) : std::nullopt;
}

} // namespace tovel
