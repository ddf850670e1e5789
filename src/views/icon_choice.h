#pragma once

#include "settings/icon_style.h"

#include <functional>

class QMenu;

namespace tovel {

// Adds the submenu "App icon", with the picture and the title of each style. The menu owns it.
QMenu *addIconChoice(QMenu &menu, const std::function<void(TovelIconStyle)> &choose);

// Checks the item of the style, and no other one.
void markIconChoice(const QMenu &choice, TovelIconStyle current);

} // namespace tovel
