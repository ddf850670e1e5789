#include "views/text_style.h"

#include <QFontInfo>
#include <QGuiApplication>

#include <algorithm>

namespace tovel {

namespace {

constexpr int smallestBody = 14;

// How far below the body each style is, in 14ths of the body's size.
int stepsBelowBody(TextStyle style)
{
    switch (style) {
    case TextStyle::body:
    case TextStyle::headline:
        return 0;
    case TextStyle::callout:
        return 1;
    case TextStyle::caption:
        return 2;
    case TextStyle::caption2:
        return 3;
    }
    Q_UNREACHABLE();
}

} // namespace

int grown(int length)
{
    const int body = std::max(smallestBody, QFontInfo(QGuiApplication::font()).pixelSize());
    return qRound(body * length / double(smallestBody));
}

QFont textFont(TextStyle style, QFont::Weight weight)
{
    return systemFont(grown(smallestBody - stepsBelowBody(style)), weight);
}

QFont textFont(TextStyle style)
{
    return textFont(style, style == TextStyle::headline ? QFont::Bold : QFont::Normal);
}

QFont systemFont(int pixelSize, QFont::Weight weight)
{
    QFont font = QGuiApplication::font();
    font.setPixelSize(pixelSize);
    font.setWeight(weight);
    return font;
}

} // namespace tovel
