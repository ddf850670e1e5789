#pragma once

#include <QLabel>

#include <functional>

class QPainter;

namespace tovel {

// Texts in at most so many lines: wrapped between words, inside of a word that is wider than a
// line, and the last line cut with an ellipsis at its end. Line breaks and control characters are
// shown as spaces. Lengths in device-independent pixels.

// The height that paintTextBlock() needs; that of one line for an empty text.
int textBlockHeight(const QString &text, const QFont &font, int width, int maxLines);

// Left and right of the alignment are the leading and the trailing side of the painter's layout
// direction.
void paintTextBlock(QPainter &painter, const QRectF &rect, const QString &text, const QFont &font,
                    const QColor &color, int maxLines, Qt::Alignment alignment);

// Paints a name of the widget's, which its tool tip says in full as long as it is cut.
void paintName(QPainter &painter, QWidget &widget, const QRectF &rect, const QString &name,
               const QFont &font, const QColor &color, int maxLines, Qt::Alignment alignment);

// A name as a widget, read by assistive programs as what it shows.
class TextLabel : public QLabel
{
    Q_OBJECT

public:
    // Text in the widget's font and in the window's text colour.
    explicit TextLabel(int maxLines = 1, QWidget *parent = nullptr);

    void setContent(const QString &text);
    void setColor(std::function<QColor(const QPalette &)> color);

    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    int m_maxLines;
    std::function<QColor(const QPalette &)> m_color;
};

} // namespace tovel
