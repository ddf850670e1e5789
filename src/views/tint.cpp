#include "views/tint.h"

#include "views/theme.h"

#include <QPalette>
#include <QWidget>

namespace tovel {

void applyTint(QWidget &widget)
{
    QPalette tinted = widget.palette();
    const QColor accent = TovelTheme::accent(tinted);
    if (tinted.color(QPalette::Active, QPalette::Highlight) == accent)
        return;
    for (const auto group : {QPalette::Active, QPalette::Inactive}) {
        tinted.setColor(group, QPalette::Highlight, accent);
        tinted.setColor(group, QPalette::HighlightedText, TovelTheme::chrome(tinted));
    }
    widget.setPalette(tinted);
}

} // namespace tovel
