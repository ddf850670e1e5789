#pragma once

#include <QTimer>
#include <QWidget>

class QScrollBar;

namespace tovel {

// The thumb of a scroll bar that is not shown itself. Lies over the trailing edge of its parent,
// and only where it is painted, so that what is beside it can be clicked.
class OverlayScroller final : public QWidget
{
    Q_OBJECT

public:
    OverlayScroller(QScrollBar &bar, QWidget *parent);

    // To be called when the parent's size or direction changes; what the bar does it sees itself.
    void place();

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    void scrolled();

    QScrollBar &m_bar;
    QTimer m_rest; // runs for a while after scrolling
    bool m_dragged = false;
    double m_grabY = 0;
    int m_grabValue = 0;
};

} // namespace tovel
