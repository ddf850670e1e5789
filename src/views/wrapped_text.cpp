#include "views/wrapped_text.h"

#include <QLabel>

namespace tovel {

QLabel *makeWrappedText(const QString &text, TextStyle style)
{
    auto *label = new QLabel(text);
    label->setTextFormat(Qt::PlainText);
    label->setFont(textFont(style));
    label->setWordWrap(true);
    return label;
}

QLabel *makeWrappedText(const QString &text, TextStyle style, int width)
{
    QLabel *label = makeWrappedText(text, style);
    label->setFixedWidth(grown(width));
    return label;
}

} // namespace tovel
