#pragma once

#include "model/desktop.h"
#include "model/running_app.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>

namespace tovel {

class TovelModel;

// What the panel itself remembers; everything else it shows is derived from the model.
struct PanelState
{
    bool adding = false; // the add popover is shown
    QString search;
    std::optional<Desktop> renaming; // the desktop whose rename alert is open
    QString newName;
    std::optional<QString> selectedDisplay; // as the user chose; it may not exist now
};

// The display whose desktops are shown: the user's choice while it exists, else the flock's, else
// the first one.
std::optional<QString> currentDisplay(const TovelModel &model, const PanelState &state);

QList<Desktop> visibleDesktops(const TovelModel &model, const PanelState &state);

// The running applications that are not chosen and whose name contains the search text, as the
// locale ignores case. In the model's order.
QList<RunningApp> availableApps(const TovelModel &model, const PanelState &state);

// Of the grid of desktops: from 1 to 5.
int columnCount(const TovelModel &model, const PanelState &state);

// What one desktop tile shows.
struct TileValues
{
    Desktop desktop;
    QString name;
    int flockWindows = 0; // of those that can move
    bool flockHere = false; // whether the whole flock is on the desktop
    bool disabled = false; // whether the flock cannot be sent there now
    bool dimmed = false; // whether it can be sent nowhere; a flock that is there needs no dimming
    QString accessibilityValue;

    bool operator==(const TileValues &) const = default;
};

// One for each visible desktop.
QList<TileValues> tileValues(const TovelModel &model, const PanelState &state);

// What one display button shows.
struct DisplayValues
{
    QString display;
    QString name;
    bool builtIn = false;
    bool current = false; // whether its desktops are shown

    bool operator==(const DisplayValues &) const = default;
};

// One for each display.
QList<DisplayValues> displayValues(const TovelModel &model, const PanelState &state);

} // namespace tovel
