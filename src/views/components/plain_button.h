#pragma once

#include "views/components/painted_button.h"

#include <functional>

namespace tovel {

// A button without a bezel: a symbol, a text in its font, or both, the symbol first. As large as
// that unless the size is fixed; one whose text may be elided can be narrower. The whole rectangle
// can be clicked.
class PlainButton : public PaintedButton
{
    Q_OBJECT

public:
    // At both ends of a text, so that the mark of the focus keeps off it.
    static constexpr int textMargin = 4;

    explicit PlainButton(QWidget *parent = nullptr);

    // In device-independent pixels. An empty name is no symbol.
    void setSymbol(const QString &name, int size);

    // Of symbol and text; the accent colour unless told otherwise.
    void setColor(std::function<QColor(const QPalette &)> color);

    // Where a text that does not fit is cut; by default it is not.
    void setElideMode(Qt::TextElideMode mode);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    int symbolRoom() const; // with the space after it

    QString m_symbol;
    int m_symbolSize = 0;
    std::function<QColor(const QPalette &)> m_color;
    Qt::TextElideMode m_elideMode = Qt::ElideNone;
};

} // namespace tovel
