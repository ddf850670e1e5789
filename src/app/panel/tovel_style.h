#pragma once

#include <QProxyStyle>

namespace tovel {

// Makes the stock controls part of the panel: menus, fields and buttons with its corners, and the
// accent for selections and focus marks in every appearance. A session whose colours are plain grey
// gets Tovel's own ones, which go with the colour of the panel's bars; others keep theirs.
class TovelStyle final : public QProxyStyle
{
    Q_OBJECT

public:
    TovelStyle();

    using QProxyStyle::polish;
    void polish(QPalette &palette) override;
    void polish(QWidget *widget) override;
    int pixelMetric(PixelMetric metric, const QStyleOption *option,
                    const QWidget *widget) const override;
    int styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                  QStyleHintReturn *result) const override;
    QRect subElementRect(SubElement element, const QStyleOption *option,
                         const QWidget *widget) const override;
    QSize sizeFromContents(ContentsType type, const QStyleOption *option, const QSize &contents,
                           const QWidget *widget) const override;
    void drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                       const QWidget *widget) const override;
    void drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                     const QWidget *widget) const override;
};

} // namespace tovel
