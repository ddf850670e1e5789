#pragma once

#include "views/components/painted_button.h"

namespace tovel {

// A small tinted capsule with a text.
class ReopenButton final : public PaintedButton
{
    Q_OBJECT

public:
    explicit ReopenButton(QWidget *parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    bool hitButton(const QPoint &position) const override;
    void paintEvent(QPaintEvent *event) override;
};

} // namespace tovel
