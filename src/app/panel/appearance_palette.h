#pragma once

#include <QPalette>

namespace tovel {

// A palette of our own, for a session whose own palette is not of the appearance that its user
// prefers. Text, links, placeholders and selections are at least 4.5:1 on what they stand on.
QPalette appearancePalette(bool dark);

} // namespace tovel
