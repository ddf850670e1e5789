#pragma once

#include "views/components/painted_button.h"

namespace tovel {

// A button as a surface with continuous corners: cards, tiles and the like. What stands on it is
// painted by whoever derives from it. Only the surface itself can be clicked, not the corners cut
// from its rectangle.
class Surface : public PaintedButton
{
    Q_OBJECT

public:
    explicit Surface(QWidget *parent = nullptr);

    void setRadius(double radius);

    // Filled and bordered in the accent colour; otherwise in the quiet colours of a control.
    void setHighlighted(bool highlighted);

    // Whether the content of a disabled surface is dimmed; it is unless told otherwise.
    void setDimsWhenDisabled(bool dims);

protected:
    // Paints what stands on the surface. Inside is the whole surface, without any padding.
    virtual void paintContent(QPainter &painter, const QRectF &inside);

    bool hitButton(const QPoint &position) const override;
    void paintEvent(QPaintEvent *event) override;

private:
    double m_radius = 12;
    bool m_highlighted = false;
    bool m_dims = true;
};

} // namespace tovel
