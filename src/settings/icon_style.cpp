#include "settings/icon_style.h"

namespace tovel {

QList<TovelIconStyle> allIconStyles() { return {TovelIconStyle::dark, TovelIconStyle::light}; }

QString rawValue(TovelIconStyle style)
{
    return style == TovelIconStyle::light ? QStringLiteral("light") : QStringLiteral("dark");
}

std::optional<TovelIconStyle> iconStyleFromRawValue(const QString &rawValue)
{
    for (const TovelIconStyle style : allIconStyles()) {
        if (tovel::rawValue(style) == rawValue)
            return style;
    }
    return std::nullopt;
}

QString title(TovelIconStyle style)
{
    return style == TovelIconStyle::light ? QStringLiteral("Light") : QStringLiteral("Dark");
}

QString resourceName(TovelIconStyle style)
{
    return style == TovelIconStyle::light ? QStringLiteral("TovelLight") : QStringLiteral("Tovel");
}

} // namespace tovel
