#pragma once

#include <QObject>

namespace tovel {

// The toolkit drops the pointer's leave while a menu or popover is open. Under X11 it is told once
// more when that has closed; Wayland tells it once, and what was under the pointer would stay lit.
// As long as this lives, everything that the pointer may have left counts as left when a popup
// closes; what it is over is told anew.
class HoverRelease final : public QObject
{
public:
    HoverRelease();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void release();
};

} // namespace tovel
