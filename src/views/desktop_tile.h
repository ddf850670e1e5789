#pragma once

#include "views/components/surface.h"
#include "views/panel_values.h"

namespace tovel {

// Sends the flock to one desktop, and shows how much of it is there.
class DesktopTile final : public Surface
{
    Q_OBJECT

public:
    explicit DesktopTile(QWidget *parent = nullptr);

    const Desktop &desktop() const { return m_values.desktop; }
    void setValues(const TileValues &values);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintContent(QPainter &painter, const QRectF &inside) override;

private:
    TileValues m_values;
};

} // namespace tovel
