#include "views/destination_section.h"

#include "views/colored_label.h"
#include "views/components/equal_columns_layout.h"
#include "views/desktop_tile.h"
#include "views/display_button.h"
#include "views/text_style.h"
#include "views/theme.h"

#include <QContextMenuEvent>
#include <QHBoxLayout>
#include <QMenu>
#include <QPainter>
#include <QVBoxLayout>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr int sideMargin = 24;
constexpr int sectionSpacing = 20;
constexpr int stackSpacing = 12;
constexpr int narrowestTile = 100;
constexpr int widestTile = 150;
constexpr int tileSpacing = 10;

QVBoxLayout *makeStack()
{
    auto *stack = new QVBoxLayout;
    stack->setContentsMargins(0, 0, 0, 0);
    stack->setSpacing(stackSpacing);
    return stack;
}

class Divider final : public QWidget
{
public:
    Divider() { setFixedWidth(1); }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter(this).fillRect(rect(), withOpacity(secondary(palette()), 0.3));
    }
};

} // namespace

DestinationSection::DestinationSection(Actions actions, QWidget *parent)
    : QWidget(parent)
    , m_actions(std::move(actions))
    , m_displayStack(makeStack())
    , m_tileArea(new QWidget)
    , m_grid(new EqualColumnsLayout(m_tileArea))
    , m_none(new ColoredLabel(u"No desktops found"_s, textFont(TextStyle::body), secondary))
{
    auto *displayColumn = new QWidget;
    displayColumn->setFixedWidth(DisplayButton::usualWidth());
    displayColumn->setLayout(m_displayStack);
    m_displayStack->addWidget(makeHeading(u"Displays:"_s));
    m_displayStack->addStretch(1);

    m_grid->setContentsMargins(0, 0, 0, 0);
    m_grid->setColumnWidths(narrowestTile, grown(widestTile));
    m_grid->setSpacings(tileSpacing, tileSpacing);
    QVBoxLayout *desktopColumn = makeStack();
    desktopColumn->addWidget(makeHeading(u"To this pond:"_s));
    desktopColumn->addWidget(m_tileArea);
    desktopColumn->addWidget(m_none);
    desktopColumn->addStretch(1);

    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(sideMargin, 0, sideMargin, 0);
    layout->setSpacing(sectionSpacing);
    layout->addWidget(displayColumn, 0);
    layout->addWidget(new Divider);
    layout->addLayout(desktopColumn, 1);
}

void DestinationSection::setDisplays(const QList<DisplayValues> &displays, bool busy)
{
    while (m_displayButtons.size() < displays.size())
        m_displayButtons.append(makeDisplayButton());
    for (qsizetype i = 0; i < m_displayButtons.size(); ++i) {
        DisplayButton *button = m_displayButtons[i];
        const bool used = i < displays.size();
        if (used)
            button->setValues(displays[i]);
        button->setActionable(!busy);
        button->setVisible(used);
    }
}

void DestinationSection::setDesktops(const QList<TileValues> &tiles, int columns)
{
    m_grid->setColumns(columns);
    while (m_tiles.size() < tiles.size())
        m_tiles.append(makeTile());
    for (qsizetype i = 0; i < m_tiles.size(); ++i) {
        const bool used = i < tiles.size();
        if (used)
            m_tiles[i]->setValues(tiles[i]);
        m_tiles[i]->setVisible(used);
    }
    m_tileArea->setVisible(!tiles.isEmpty());
}

void DestinationSection::setEmpty(bool empty) { m_none->setVisible(empty); }

QList<QWidget *> DestinationSection::tabStops() const
{
    QList<QWidget *> stops(m_displayButtons.cbegin(), m_displayButtons.cend());
    for (DesktopTile *tile : m_tiles)
        stops.append(tile);
    return stops;
}

void DestinationSection::contextMenuEvent(QContextMenuEvent *event)
{
    const bool byMouse = event->reason() == QContextMenuEvent::Mouse;
    QWidget *widget = byMouse ? childAt(event->pos()) : focusWidget();
    const auto *tile = qobject_cast<DesktopTile *>(widget);
    if (!tile) {
        event->ignore();
        return;
    }
    auto *menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    connect(menu->addAction(u"Rename…"_s), &QAction::triggered, this,
            [this, desktop = tile->desktop()] { m_actions.startRenaming(desktop); });
    menu->popup(byMouse ? event->globalPos() : tile->mapToGlobal(tile->rect().center()));
    if (!byMouse)
        menu->setActiveAction(menu->actions().first());
}

DisplayButton *DestinationSection::makeDisplayButton()
{
    auto *button = new DisplayButton;
    connect(button, &DisplayButton::clicked, this,
            [this, button] { m_actions.selectDisplay(button->display()); });
    // Before the stretch at the end.
    m_displayStack->insertWidget(m_displayStack->count() - 1, button);
    return button;
}

DesktopTile *DestinationSection::makeTile()
{
    auto *tile = new DesktopTile(m_tileArea);
    connect(tile, &DesktopTile::clicked, this,
            [this, tile] { m_actions.move(Desktop(tile->desktop())); });
    m_grid->addWidget(tile);
    return tile;
}

} // namespace tovel
