#pragma once

#include "views/panel_values.h"

#include <QWidget>

#include <functional>

class QVBoxLayout;

namespace tovel {

class ColoredLabel;
class DesktopTile;
class DisplayButton;
class EqualColumnsLayout;

// The displays, and the desktops of the current one.
class DestinationSection final : public QWidget
{
    Q_OBJECT

public:
    // What its controls do.
    struct Actions
    {
        std::function<void(const QString &)> selectDisplay;
        std::function<void(const Desktop &)> move;
        std::function<void(const Desktop &)> startRenaming;
    };

    explicit DestinationSection(Actions actions, QWidget *parent = nullptr);

    // A button for each display, which cannot be used while busy.
    void setDisplays(const QList<DisplayValues> &displays, bool busy);
    void setDesktops(const QList<TileValues> &tiles, int columns);
    // Whether to say that there are no desktops at all.
    void setEmpty(bool empty);
    // What takes the keyboard, in reading order; hidden ones too.
    QList<QWidget *> tabStops() const;

protected:
    void contextMenuEvent(QContextMenuEvent *event) override;

private:
    DisplayButton *makeDisplayButton();
    DesktopTile *makeTile();

    Actions m_actions;
    QVBoxLayout *m_displayStack;
    QWidget *m_tileArea;
    EqualColumnsLayout *m_grid;
    ColoredLabel *m_none;
    // As many as were ever needed; those not in use are hidden.
    QList<DisplayButton *> m_displayButtons;
    QList<DesktopTile *> m_tiles;
};

} // namespace tovel
