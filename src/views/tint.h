#pragma once

class QWidget;

namespace tovel {

// Gives the stock controls inside the widget the accent for selections and focus marks. To be
// called again when the appearance has changed; does nothing when nothing is to be changed.
void applyTint(QWidget &widget);

} // namespace tovel
