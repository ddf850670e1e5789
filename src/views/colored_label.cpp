#include "views/colored_label.h"

#include "views/text_style.h"
#include "views/theme.h"

#include <QEvent>
#include <QStyle>

namespace tovel {

ColoredLabel::ColoredLabel(const QString &text, const QFont &font, Color color, QWidget *parent)
    : QLabel(text, parent)
    , m_color(std::move(color))
{
    setFont(font);
    setTextFormat(Qt::PlainText);
    // The appearance is told by the text colour of windows, so the label takes another role.
    setForegroundRole(QPalette::BrightText);
    updateColor();
    alignToLeadingSide();
}

void ColoredLabel::updateColor()
{
    QPalette own = palette();
    const QColor color = m_color(own);
    if (own.color(QPalette::Active, QPalette::BrightText) == color)
        return;
    own.setColor(QPalette::BrightText, color);
    setPalette(own);
}

void ColoredLabel::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::PaletteChange && foregroundRole() == QPalette::BrightText)
        updateColor();
    if (event->type() == QEvent::LayoutDirectionChange && !(alignment() & Qt::AlignHCenter))
        alignToLeadingSide();
    QLabel::changeEvent(event);
}

void ColoredLabel::alignToLeadingSide()
{
    // By itself a text goes to the side where its own language begins.
    const Qt::Alignment side = QStyle::visualAlignment(layoutDirection(), Qt::AlignLeading);
    setAlignment(side | Qt::AlignAbsolute | Qt::AlignVCenter);
}

ColoredLabel *makeHeading(const QString &text, QWidget *parent)
{
    return new ColoredLabel(text, textFont(TextStyle::caption, QFont::DemiBold), secondary, parent);
}

} // namespace tovel
