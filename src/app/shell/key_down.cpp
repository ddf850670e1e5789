#include "app/shell/key_down.h"

#include "platform/linux/virtual_keys.h"

#include <QKeyEvent>

namespace tovel {

namespace {

// Key codes of X11, which Wayland sessions use too, count from here.
constexpr std::uint32_t firstKeyCode = 8;

bool isModifier(int key)
{
    switch (key) {
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

std::uint64_t flags(Qt::KeyboardModifiers modifiers)
{
    return (modifiers & Qt::ShiftModifier ? NSEventModifierFlagShift : 0)
        | (modifiers & Qt::ControlModifier ? NSEventModifierFlagControl : 0)
        | (modifiers & Qt::AltModifier ? NSEventModifierFlagOption : 0)
        | (modifiers & Qt::MetaModifier ? NSEventModifierFlagCommand : 0);
}

// Qt names keys with characters by their upper-case code point, whatever Control makes of them.
QString characters(int key)
{
    const bool hasCharacters = key > Qt::Key_Space && key < Qt::Key_Escape;
    return hasCharacters ? QString::fromUcs4(reinterpret_cast<const char32_t *>(&key), 1)
                         : QString();
}

} // namespace

std::optional<KeyDownEvent> keyDown(const QKeyEvent &event)
{
    if (isModifier(event.key()) || event.nativeScanCode() < firstKeyCode)
        return std::nullopt;
    const auto keyCode = virtualKeyAt(event.nativeScanCode() - firstKeyCode);
    if (!keyCode)
        return std::nullopt;
    return KeyDownEvent{flags(event.modifiers()), *keyCode, characters(event.key())};
}

} // namespace tovel
