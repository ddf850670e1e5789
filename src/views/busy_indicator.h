#pragma once

#include <QBasicTimer>
#include <QWidget>

namespace tovel {

// A small turning wheel; turns only while it is visible.
class BusyIndicator final : public QWidget
{
    Q_OBJECT

public:
    explicit BusyIndicator(QWidget *parent = nullptr);

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void timerEvent(QTimerEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    QBasicTimer m_timer;
    int m_step = 0;
};

} // namespace tovel
