#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>

namespace tovel {

// Modifiers of a stored shortcut and of HotKeys.
inline constexpr std::uint32_t cmdKey = 0x100;
inline constexpr std::uint32_t shiftKey = 0x200;
inline constexpr std::uint32_t optionKey = 0x800;
inline constexpr std::uint32_t controlKey = 0x1000;

// Modifier flags of a key-down event.
inline constexpr std::uint64_t NSEventModifierFlagShift = 0x20000;
inline constexpr std::uint64_t NSEventModifierFlagControl = 0x40000;
inline constexpr std::uint64_t NSEventModifierFlagOption = 0x80000;
inline constexpr std::uint64_t NSEventModifierFlagCommand = 0x100000;

struct KeyDownEvent
{
    std::uint64_t modifierFlags = 0;
    std::uint32_t keyCode = 0; // a virtual key code
    QString charactersIgnoringModifiers{}; // empty for a key without characters
};

// A global keyboard shortcut.
struct TovelShortcut
{
    std::uint32_t keyCode = 0; // virtual: names the key by its position, whatever the layout
    std::uint32_t modifiers = 0; // any of cmdKey, shiftKey, optionKey, controlKey
    QString key{}; // the key's name, for the label alone

    bool operator==(const TovelShortcut &) const = default;

    // Control, Option and Command with T.
    static TovelShortcut standard();

    // Symbols of the modifiers, then the key: "⌃⌥⌘T". Other bits of the modifiers are ignored.
    QString label() const;
};

// The shortcut that the event stands for. Nothing without Control, Option or Command, or for a key
// that has neither a name nor characters.
std::optional<TovelShortcut> shortcutFromEvent(const KeyDownEvent &event);

// Compact JSON (RFC 8259) in UTF-8.
QByteArray encodeShortcut(const TovelShortcut &shortcut);

// Nothing for what is not a JSON object with the three members, each of its own kind and within its
// range. Members of other names are ignored.
std::optional<TovelShortcut> decodeShortcut(const QByteArray &json);

} // namespace tovel
