#pragma once

#include <QLayout>
#include <QList>
#include <QWidget>

namespace tovel {

// A grid of so many columns, all of one width, filled row by row from the leading side. Each row is
// as high as its tallest item needs at that width; lower ones stand in its middle. Hidden items
// take no cell. Lengths in device-independent pixels.
class EqualColumnsLayout final : public QLayout
{
    Q_OBJECT

public:
    explicit EqualColumnsLayout(QWidget *parent = nullptr);
    ~EqualColumnsLayout() override;

    void setColumns(int columns); // at least 1
    void setSpacings(int column, int row);
    void setColumnWidths(int min, int max);

    void addItem(QLayoutItem *item) override;
    int count() const override { return static_cast<int>(m_items.size()); }
    QLayoutItem *itemAt(int index) const override;
    QLayoutItem *takeAt(int index) override;

    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    Qt::Orientations expandingDirections() const override { return Qt::Horizontal; }
    QSize sizeHint() const override;
    QSize minimumSize() const override;
    void invalidate() override;
    void setGeometry(const QRect &rect) override;

private:
    // The cells for one width, as long as nothing is invalidated.
    struct Cells
    {
        int width = -1;
        int height = 0;
        QList<QRect> rects; // by item, from the left, without margins; null for a hidden one
    };

    const Cells &cells(int width) const;
    QSize sizeWithColumns(int columnWidth) const;

    QList<QLayoutItem *> m_items;
    int m_columns = 1;
    int m_columnSpacing = 0;
    int m_rowSpacing = 0;
    int m_minColumn = 0;
    int m_maxColumn = QWIDGETSIZE_MAX;
    mutable Cells m_cells;
    mutable int m_widestHint = -1;
};

} // namespace tovel
