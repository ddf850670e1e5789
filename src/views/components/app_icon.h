#pragma once

#include "platform/workspace.h"

#include <QWidget>

#include <optional>

namespace tovel {

// Paints the picture of an application in the middle of the box, fitted into it: from a file or by
// its name in the icon theme. A placeholder when there is none, or when it cannot be loaded: a
// missing or damaged file, or one far larger than an icon. Until the picture is there, too; the
// widget, which paints itself so, is then painted again. Pictures are kept for the next time,
// within bounds.
void paintAppIcon(QPainter &painter, const std::optional<NSImage> &icon, const QRectF &box,
                  QWidget &widget);

// Whether a picture that was painted for is still on its way.
bool areAppIconsOnTheirWay();

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
