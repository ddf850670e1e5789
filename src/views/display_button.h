#pragma once

#include "views/components/surface.h"
#include "views/panel_values.h"

namespace tovel {

// Chooses the display whose desktops are shown.
class DisplayButton final : public Surface
{
    Q_OBJECT

public:
    // More for larger text, within what the tiles leave.
    static int usualWidth();

    explicit DisplayButton(QWidget *parent = nullptr);

    const QString &display() const { return m_values.display; }
    void setValues(const DisplayValues &values);

    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintContent(QPainter &painter, const QRectF &inside) override;

private:
    DisplayValues m_values;
};

} // namespace tovel
