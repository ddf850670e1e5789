#pragma once

#include "model/travel_window.h"

#include <QList>
#include <QWidget>

namespace tovel {

class OverlayScrollArea;

// What the popover of the skipped windows holds: each window's application and why the window
// cannot move.
class SkippedList final : public QWidget
{
    Q_OBJECT

public:
    explicit SkippedList(QWidget *parent = nullptr);

    void setWindows(const QList<TravelWindow> &windows);

private:
    QList<TravelWindow> m_windows;
    OverlayScrollArea *m_area;
    QWidget *m_rows = nullptr;
};

} // namespace tovel
