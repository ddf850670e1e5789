#pragma once

#include "platform/session/session_records.h"

#include <QByteArray>

#include <cstdint>
#include <memory>

struct xkb_keymap;

namespace tovel::kwin {

// What keys mean by an XKB keymap, in the way in which KWin looks for global shortcuts: by the
// symbol, and a Shift that makes the symbol, other than a capital letter, does not count.
class KeyMeanings final
{
public:
    // Where the text is no keymap, the US layout counts.
    explicit KeyMeanings(const QByteArray &keymap);

    // A Qt::Key together with Qt::KeyboardModifiers; 0 where the key has no meaning in the layout.
    int combination(const SessionKey &key, std::uint32_t layout) const;

private:
    std::shared_ptr<xkb_keymap> m_keymap;
};

} // namespace tovel::kwin
