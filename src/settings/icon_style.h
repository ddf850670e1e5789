#pragma once

#include <QList>
#include <QString>

#include <optional>

namespace tovel {

// How the application's icon looks.
enum class TovelIconStyle { dark, light };

// In the order in which the styles are offered.
QList<TovelIconStyle> allIconStyles();

// What is stored for the style, and its identity.
QString rawValue(TovelIconStyle style);

// The style for a stored text; nothing for a text that no style has, case included.
std::optional<TovelIconStyle> iconStyleFromRawValue(const QString &rawValue);

// What the user reads.
QString title(TovelIconStyle style);

// Name of the icon among the application's resources, without extension.
QString resourceName(TovelIconStyle style);

} // namespace tovel
