#pragma once

#include <QObject>

class QWidget;

namespace tovel {

// Shows the pointing hand while the mouse is over an enabled control. The hand is pushed on the
// application's stack of cursors, and each push is matched by exactly one pop: when the mouse
// leaves, the control is disabled, hidden or destroyed, or something opens above it. A control
// that is enabled under the mouse shows the hand when the mouse comes in the next time.
class PointingCursor final : public QObject
{
    Q_OBJECT

public:
    explicit PointingCursor(QWidget *control, bool enabled = true);
    ~PointingCursor() override;

    void setEnabled(bool enabled);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void setInside(bool inside);
    void watchOthers(QObject *watched, QEvent *event);
    bool isCovered() const;
    void push();
    void pop();

    QWidget *m_control;
    bool m_enabled;
    bool m_inside = false;
    bool m_pushed = false;
};

// Installs one on the control, which owns it.
PointingCursor *pointingCursor(QWidget *control, bool enabled = true);

} // namespace tovel
