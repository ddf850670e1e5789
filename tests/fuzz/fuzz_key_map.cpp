#include "platform/session/x11/key_grabs.h"

#include <QtGlobal>

#include <algorithm>

using namespace tovel;
using namespace tovel::x11;

// The first and the last keycode, how many bytes of modifiers, those, then the keysyms.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size < 3)
        return 0;
    const std::uint8_t *end = data + size;
    const std::uint8_t *keys = data + 3;
    const std::uint8_t *symbols = keys + std::min<std::ptrdiff_t>(data[2], end - keys);
    Keyboard keyboard{data[0], data[1], {}, {keys, symbols}};
    // Of the upper byte only what makes the symbols of modifiers.
    for (; symbols != end; ++symbols)
        keyboard.keysyms.push_back(0xFF00U | *symbols);

    const ModifierBits bits = modifierBits(keyboard);
    constexpr unsigned named = 7; // Shift, Caps Lock and Control
    if ((bits.alt & (bits.super | bits.locks | named)) != 0
        || (bits.super & (bits.locks | named)) != 0)
        qFatal("a modifier stands for two");
    const SessionKey key{.position = 1, .alt = true, .super = true};
    const auto states = statesOf(key, bits);
    if (states.empty() != (bits.alt == 0 || bits.super == 0) || states.size() > 8)
        qFatal("states that no key has");
    return 0;
}
