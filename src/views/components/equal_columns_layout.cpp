#include "views/components/equal_columns_layout.h"

#include <QStyle>

#include <algorithm>

namespace tovel {

namespace {

int heightOf(const QLayoutItem &item, int width)
{
    const int wanted
        = item.hasHeightForWidth() ? item.heightForWidth(width) : item.sizeHint().height();
    return std::min(wanted, item.maximumSize().height());
}

} // namespace

EqualColumnsLayout::EqualColumnsLayout(QWidget *parent)
    : QLayout(parent)
{ }

EqualColumnsLayout::~EqualColumnsLayout() { qDeleteAll(m_items); }

void EqualColumnsLayout::setColumns(int columns)
{
    m_columns = std::max(1, columns);
    invalidate();
}

void EqualColumnsLayout::setSpacings(int column, int row)
{
    m_columnSpacing = column;
    m_rowSpacing = row;
    invalidate();
}

void EqualColumnsLayout::setColumnWidths(int min, int max)
{
    m_minColumn = min;
    m_maxColumn = std::max(min, max);
    invalidate();
}

void EqualColumnsLayout::addItem(QLayoutItem *item)
{
    m_items.append(item);
    invalidate();
}

QLayoutItem *EqualColumnsLayout::itemAt(int index) const { return m_items.value(index); }

QLayoutItem *EqualColumnsLayout::takeAt(int index)
{
    if (index < 0 || index >= count())
        return nullptr;
    QLayoutItem *item = m_items.takeAt(index);
    invalidate();
    return item;
}

int EqualColumnsLayout::heightForWidth(int width) const
{
    const QMargins margins = contentsMargins();
    return cells(width - margins.left() - margins.right()).height + margins.top()
        + margins.bottom();
}

QSize EqualColumnsLayout::sizeWithColumns(int columnWidth) const
{
    const QMargins margins = contentsMargins();
    const int width = m_columns * columnWidth + (m_columns - 1) * m_columnSpacing + margins.left()
        + margins.right();
    return {width, heightForWidth(width)};
}

QSize EqualColumnsLayout::sizeHint() const
{
    if (m_widestHint < 0) {
        m_widestHint = 0;
        for (const QLayoutItem *item : m_items)
            m_widestHint = std::max(m_widestHint, item->isEmpty() ? 0 : item->sizeHint().width());
    }
    return sizeWithColumns(std::clamp(m_widestHint, m_minColumn, m_maxColumn));
}

QSize EqualColumnsLayout::minimumSize() const
{
    // Its height is for a usual width; that for the least one would ask for far too much.
    return {sizeWithColumns(m_minColumn).width(), sizeHint().height()};
}

void EqualColumnsLayout::invalidate()
{
    m_cells = {};
    m_widestHint = -1;
    QLayout::invalidate();
}

void EqualColumnsLayout::setGeometry(const QRect &rect)
{
    QLayout::setGeometry(rect);
    const QRect inside = contentsRect();
    const Cells &placed = cells(inside.width());
    const Qt::LayoutDirection direction
        = parentWidget() ? parentWidget()->layoutDirection() : Qt::LeftToRight;
    for (qsizetype i = 0; i < m_items.size(); ++i) {
        if (!placed.rects[i].isNull())
            m_items[i]->setGeometry(QStyle::visualRect(
                direction, inside, placed.rects[i].translated(inside.topLeft())));
    }
}

const EqualColumnsLayout::Cells &EqualColumnsLayout::cells(int width) const
{
    if (m_cells.width == width)
        return m_cells;
    Cells result{.width = width};
    result.rects.resize(m_items.size());
    const int gaps = (m_columns - 1) * m_columnSpacing;
    const int widest = std::min(m_maxColumn, QWIDGETSIZE_MAX / m_columns);
    const int room
        = std::clamp(width - gaps, m_columns * std::min(m_minColumn, widest), m_columns * widest);
    // Pixels that do not divide go to columns spread over the row.
    const auto edge = [&](int column) { return room * column / m_columns; };

    QList<qsizetype> row;
    int top = 0;
    const auto closeRow = [&] {
        int height = 0;
        for (const qsizetype i : row)
            height = std::max(height, result.rects[i].height());
        for (const qsizetype i : row) {
            QRect &cell = result.rects[i];
            cell.moveTop(top + (height - cell.height()) / 2);
        }
        result.height = top + height;
        top += height + m_rowSpacing;
        row.clear();
    };
    for (qsizetype i = 0; i < m_items.size(); ++i) {
        if (m_items[i]->isEmpty())
            continue;
        const int column = static_cast<int>(row.size());
        const int cellWidth = edge(column + 1) - edge(column);
        result.rects[i] = QRect(edge(column) + column * m_columnSpacing, 0, cellWidth,
                                heightOf(*m_items[i], cellWidth));
        row.append(i);
        if (row.size() == m_columns)
            closeRow();
    }
    if (!row.isEmpty())
        closeRow();
    m_cells = std::move(result);
    return m_cells;
}

} // namespace tovel
