#pragma once

#include "platform/workspace.h"

#include <QPixmap>
#include <QWidget>

#include <optional>

namespace tovel {

// The picture of an application fitted into size by size device-independent pixels, from a file or
// by its name in the icon theme. Null when there is none, or when it cannot be loaded: a missing or
// damaged file, or one far larger than an icon. Kept for the next time, within bounds.
QPixmap appIconPixmap(const std::optional<NSImage> &icon, int size, qreal devicePixelRatio);

// Paints that picture in the middle of the box, or a placeholder when it is null.
void paintAppIcon(QPainter &painter, const std::optional<NSImage> &icon, const QRectF &box,
                  const QPalette &palette);

// The same as a widget. Assistive programs do not see it.
class AppIcon : public QWidget
{
    Q_OBJECT

public:
    explicit AppIcon(int size, QWidget *parent = nullptr);

    void setIcon(const std::optional<NSImage> &icon);

    QSize sizeHint() const override { return {m_size, m_size}; }
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    int m_size;
    std::optional<NSImage> m_icon;
};

} // namespace tovel
