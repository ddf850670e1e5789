#include "views/components/text_block.h"

#include "texts/one_line.h"
#include "views/components/button_look.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QStyle>
#include <QTextLayout>

#include <algorithm>
#include <cmath>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

// More than any block shows; shaping the rest of a longer text would be for nothing.
constexpr int longestText = 4000;

constexpr int longestTip = 200;
constexpr int leastChars = 3; // that a label wants to show

struct Lines : QStringList
{
    bool areCut = false;
};

Lines lines(const QString &text, const QFont &font, int width, int maxLines)
{
    const QString whole = oneLine(text, longestText);
    QTextLayout layout(whole, font);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    Lines result;
    layout.beginLayout();
    while (result.size() < maxLines) {
        QTextLine line = layout.createLine();
        if (!line.isValid())
            break;
        line.setLineWidth(std::max(width, 1));
        const bool last = result.size() + 1 == maxLines;
        if (last && line.textStart() + line.textLength() < whole.size()) {
            const QString rest = whole.mid(line.textStart());
            result.append(QFontMetricsF(font).elidedText(rest, Qt::ElideRight, width));
            result.areCut = true;
        } else {
            result.append(whole.mid(line.textStart(), line.textLength()).trimmed());
        }
    }
    layout.endLayout();
    return result;
}

int heightOfLines(qsizetype count, const QFont &font)
{
    const QFontMetrics metrics(font);
    return metrics.height() + metrics.lineSpacing() * int(std::max<qsizetype>(count - 1, 0));
}

} // namespace

int textBlockHeight(const QString &text, const QFont &font, int width, int maxLines)
{
    return heightOfLines(lines(text, font, width, maxLines).size(), font);
}

void paintTextBlock(QPainter &painter, const QRectF &rect, const QString &text, const QFont &font,
                    const QColor &color, int maxLines, Qt::Alignment alignment)
{
    const QStringList block = lines(text, font, int(std::floor(rect.width())), maxLines);
    const Qt::Alignment visual = QStyle::visualAlignment(painter.layoutDirection(), alignment);
    const double free = rect.height() - heightOfLines(block.size(), font);
    double top = rect.top();
    if (visual & Qt::AlignBottom)
        top += free;
    else if (visual & Qt::AlignVCenter)
        top += free / 2;

    painter.save();
    painter.setPen(color);
    const QFontMetrics metrics(font);
    for (qsizetype i = 0; i < block.size(); ++i) {
        QTextLayout layout(block[i], font, painter.device());
        layout.beginLayout();
        const QTextLine line = layout.createLine();
        layout.endLayout();
        if (!line.isValid())
            continue;
        const double width = line.naturalTextWidth();
        double left = rect.left();
        if (visual & Qt::AlignRight)
            left = rect.right() - width;
        else if (visual & Qt::AlignHCenter)
            left = rect.center().x() - width / 2;
        const double baseline
            = std::round(top) + double(i) * metrics.lineSpacing() + metrics.ascent();
        line.draw(&painter, QPointF(std::round(left), baseline - line.ascent()));
    }
    painter.restore();
}

void paintName(QPainter &painter, QWidget &widget, const QRectF &rect, const QString &name,
               const QFont &font, const QColor &color, int maxLines, Qt::Alignment alignment)
{
    paintTextBlock(painter, rect, name, font, color, maxLines, alignment);
    // Marked up, so that it is never guessed whether the name itself is.
    QString tip;
    if (lines(name, font, int(std::floor(rect.width())), maxLines).areCut)
        tip = u"<span>%1</span>"_s.arg(oneLine(name, longestTip).toHtmlEscaped());
    if (tip != widget.toolTip())
        widget.setToolTip(tip);
}

TextLabel::TextLabel(int maxLines, QWidget *parent)
    : QLabel(parent)
    , m_maxLines(maxLines)
{
    setTextFormat(Qt::PlainText);
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

void TextLabel::setContent(const QString &content)
{
    if (content == text())
        return;
    setText(content);
    // Else ampersands would be taken for marks of shortcuts.
    setAccessibleName(content);
}

void TextLabel::setColor(std::function<QColor(const QPalette &)> color)
{
    m_color = std::move(color);
    update();
}

int TextLabel::heightForWidth(int width) const
{
    const QMargins margins = contentsMargins();
    return textBlockHeight(text(), font(), width - margins.left() - margins.right(), m_maxLines)
        + margins.top() + margins.bottom();
}

QSize TextLabel::sizeHint() const
{
    const QMargins margins = contentsMargins();
    const int width = QFontMetrics(font()).horizontalAdvance(oneLine(text(), longestText)) + 1;
    return QSize(width, heightOfLines(1, font())).grownBy(margins);
}

QSize TextLabel::minimumSizeHint() const
{
    const int least = QFontMetrics(font()).averageCharWidth() * leastChars;
    return sizeHint().boundedTo({least, QWIDGETSIZE_MAX});
}

void TextLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setOpacity(isEnabled() ? 1 : disabledOpacity);
    const QColor color
        = m_color ? m_color(palette()) : palette().color(QPalette::Active, QPalette::WindowText);
    paintName(painter, *this, contentsRect(), text(), font(), color, m_maxLines, alignment());
}

} // namespace tovel
