#pragma once

#include <QAccessible>

class QWidget;

namespace tovel {

// Makes assistive programs see the components as what they are. The toolkit reads a button without
// value and selection, an icon as an unnamed group. Done once; further calls do nothing.
void installAccessibleSurfaces();

// What assistive programs take the widget for, where its class says nothing of it. To be called
// before all else in its constructor: once read, a widget stays what it was read as.
void setAccessibleRole(QWidget &widget, QAccessible::Role role);

} // namespace tovel
