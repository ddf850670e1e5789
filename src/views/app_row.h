#pragma once

#include "model/running_app.h"
#include "views/components/painted_button.h"

namespace tovel {

// One application that can join the flock: its icon, its name, and a plus.
class AppRow final : public PaintedButton
{
    Q_OBJECT

public:
    explicit AppRow(QWidget *parent = nullptr);

    const RunningApp &app() const { return m_app; }
    void setApp(const RunningApp &app);
    // Shows that a key pressed elsewhere adds it.
    void setMarked(bool marked);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    RunningApp m_app;
    bool m_marked = false;
};

} // namespace tovel
