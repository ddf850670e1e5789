#pragma once

#include "views/components/popover_placement.h"

#include <QImage>
#include <QPainterPath>
#include <QPointer>
#include <QWidget>

namespace tovel {

// A popup with an arrow that points at the control it belongs to, and may leave that control's
// window. It closes on a click outside of it, on Escape, and when the anchor disappears; a click on
// the anchor closes it without pressing the anchor. The focus then returns to where it was, or to
// the anchor. It follows the size of its content and stays on the screen. The anchor owns it.
class Popover : public QWidget
{
    Q_OBJECT

public:
    // The edge of the anchor that the arrow touches, and so the side on which the popover lies
    // where there is room.
    enum Arrow { LeadingArrow, TrailingArrow, TopArrow, BottomArrow };

    explicit Popover(QWidget *anchor);

    // Owns the content. Its first control gets the focus when the popover opens, or what it names
    // as its focus proxy.
    void setContent(QWidget *content);
    void setArrow(Arrow arrow);

    void open(); // does nothing when it is open, or when the anchor is not visible
    bool isOpen() const { return isVisible(); }

Q_SIGNALS:
    void closed();

protected:
    bool event(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void place();
    QRect windowRect() const;
    PopoverSide wantedSide() const;
    QSize contentSize(const QSize &most) const;
    void focusContent();

    QWidget *m_anchor;
    QWidget *m_content = nullptr;
    Arrow m_arrow = TopArrow;
    PopoverPlacement m_placement;
    bool m_blends = false; // where it is open
    QPainterPath m_outline;
    QImage m_shadow;
    QPointer<QWidget> m_focusBefore;
};

} // namespace tovel
