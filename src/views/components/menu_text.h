#pragma once

#include <QString>

namespace tovel {

// A name as a menu shows it and nothing else: ampersands and tabs, which menus take for marks, and
// control characters are made harmless, and what is far too long is cut.
QString menuText(const QString &text);

} // namespace tovel
