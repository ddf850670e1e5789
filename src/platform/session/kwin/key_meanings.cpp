#include "platform/session/kwin/key_meanings.h"

#include <QChar>

#include <algorithm>

#include <xkbcommon/xkbcommon.h>

namespace tovel::kwin {

namespace {

constexpr std::uint32_t FirstKeycode = 8; // of XKB, for the kernel's 0

struct Meaning
{
    xkb_keysym_t symbol;
    int key; // Qt::Key
};

constexpr Meaning Meanings[] = {
    {XKB_KEY_Escape, Qt::Key_Escape},
    {XKB_KEY_Tab, Qt::Key_Tab},
    {XKB_KEY_ISO_Left_Tab, Qt::Key_Tab},
    {XKB_KEY_BackSpace, Qt::Key_Backspace},
    {XKB_KEY_Return, Qt::Key_Return},
    {XKB_KEY_KP_Enter, Qt::Key_Enter},
    {XKB_KEY_Insert, Qt::Key_Insert},
    {XKB_KEY_Delete, Qt::Key_Delete},
    {XKB_KEY_Home, Qt::Key_Home},
    {XKB_KEY_End, Qt::Key_End},
    {XKB_KEY_Left, Qt::Key_Left},
    {XKB_KEY_Right, Qt::Key_Right},
    {XKB_KEY_Up, Qt::Key_Up},
    {XKB_KEY_Down, Qt::Key_Down},
    {XKB_KEY_Prior, Qt::Key_PageUp},
    {XKB_KEY_Next, Qt::Key_PageDown},
    {XKB_KEY_Menu, Qt::Key_Menu},
    {XKB_KEY_Pause, Qt::Key_Pause},
    {XKB_KEY_Print, Qt::Key_Print},
    {XKB_KEY_Scroll_Lock, Qt::Key_ScrollLock},
};

int keyOf(xkb_keysym_t symbol)
{
    if (symbol >= XKB_KEY_F1 && symbol <= XKB_KEY_F35)
        return Qt::Key_F1 + static_cast<int>(symbol - XKB_KEY_F1);
    const auto *found = std::ranges::find(Meanings, symbol, &Meaning::symbol);
    if (found != std::end(Meanings))
        return found->key;
    const std::uint32_t character = xkb_keysym_to_utf32(symbol);
    return character < 0x20 ? 0 : static_cast<int>(QChar::toUpper(char32_t(character)));
}

std::shared_ptr<xkb_keymap> compile(const QByteArray &text)
{
    const std::unique_ptr<xkb_context, decltype(&xkb_context_unref)> context(
        xkb_context_new(XKB_CONTEXT_NO_ENVIRONMENT_NAMES), xkb_context_unref);
    if (!context)
        return nullptr;
    xkb_context_set_log_level(context.get(), XKB_LOG_LEVEL_CRITICAL);
    xkb_keymap *keymap = text.isEmpty()
        ? nullptr
        : xkb_keymap_new_from_buffer(context.get(), text.constData(),
                                     static_cast<std::size_t>(text.size()),
                                     XKB_KEYMAP_FORMAT_TEXT_V1, XKB_KEYMAP_COMPILE_NO_FLAGS);
    if (!keymap) {
        const xkb_rule_names us{.rules = "evdev", .model = "pc105", .layout = "us"};
        keymap = xkb_keymap_new_from_names(context.get(), &us, XKB_KEYMAP_COMPILE_NO_FLAGS);
    }
    return {keymap, xkb_keymap_unref};
}

} // namespace

KeyMeanings::KeyMeanings(const QByteArray &keymap)
    : m_keymap(compile(keymap))
{ }

int KeyMeanings::combination(const SessionKey &key, std::uint32_t layout) const
{
    if (!m_keymap || key.position > xkb_keymap_max_keycode(m_keymap.get()))
        return 0;
    const std::unique_ptr<xkb_state, decltype(&xkb_state_unref)> state(
        xkb_state_new(m_keymap.get()), xkb_state_unref);
    const xkb_mod_index_t shift = xkb_keymap_mod_get_index(m_keymap.get(), XKB_MOD_NAME_SHIFT);
    if (!state || shift == XKB_MOD_INVALID)
        return 0;
    const auto meaning = [&](bool withShift) {
        xkb_state_update_mask(state.get(), withShift ? 1U << shift : 0, 0, 0, 0, 0, layout);
        return keyOf(xkb_state_key_get_one_sym(state.get(), key.position + FirstKeycode));
    };
    const int meant = meaning(key.shift);
    if (meant == 0)
        return 0;
    int modifiers = 0;
    if (key.shift && meaning(false) == meant)
        modifiers |= Qt::ShiftModifier;
    if (key.control)
        modifiers |= Qt::ControlModifier;
    if (key.alt)
        modifiers |= Qt::AltModifier;
    if (key.super)
        modifiers |= Qt::MetaModifier;
    return meant | modifiers;
}

} // namespace tovel::kwin
