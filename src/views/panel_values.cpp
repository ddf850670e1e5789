#include "views/panel_values.h"

#include "model/tovel_model.h"

#include <QLocale>

#include <algorithm>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

QString accessibilityValue(bool flockHere, int windows)
{
    return (flockHere ? u"Apps are already here. "_s : QString()) + QString::number(windows)
        + u" selected windows"_s;
}

} // namespace

std::optional<QString> currentDisplay(const TovelModel &model, const PanelState &state)
{
    const QStringList all = displaysOf(model.desktops());
    if (state.selectedDisplay && all.contains(*state.selectedDisplay))
        return state.selectedDisplay;
    if (const auto flockDesktop = model.flockDesktopID()) {
        if (const Desktop *desktop = desktopWithID(model.desktops(), *flockDesktop))
            return desktop->display;
    }
    if (all.isEmpty())
        return std::nullopt;
    return all.first();
}

QList<Desktop> visibleDesktops(const TovelModel &model, const PanelState &state)
{
    const std::optional<QString> display = currentDisplay(model, state);
    QList<Desktop> result;
    for (const Desktop &desktop : model.desktops()) {
        if (desktop.display == display)
            result.append(desktop);
    }
    return result;
}

QList<RunningApp> availableApps(const TovelModel &model, const PanelState &state)
{
    const QLocale locale;
    const QString wanted = locale.toLower(state.search);
    QList<RunningApp> result;
    for (const RunningApp &app : model.apps()) {
        if (app.running && !model.selected().contains(app.id)
            && locale.toLower(app.name).contains(wanted))
            result.append(app);
    }
    return result;
}

int columnCount(const TovelModel &model, const PanelState &state)
{
    return std::clamp(static_cast<int>(visibleDesktops(model, state).size()), 1, 5);
}

QList<TileValues> tileValues(const TovelModel &model, const PanelState &state)
{
    const QMap<std::uint64_t, int> distribution = model.distribution();
    const std::optional<std::uint64_t> flockDesktop = model.flockDesktopID();
    const bool blocked = model.busy() || !model.available();

    QList<TileValues> result;
    for (const Desktop &desktop : visibleDesktops(model, state)) {
        const int windows = distribution.value(desktop.id);
        const bool flockHere = flockDesktop == desktop.id;
        result.append({.desktop = desktop,
                       .name = model.name(desktop),
                       .flockWindows = windows,
                       .flockHere = flockHere,
                       .disabled = blocked || flockHere,
                       .dimmed = blocked,
                       .accessibilityValue = accessibilityValue(flockHere, windows)});
    }
    return result;
}

QList<DisplayValues> displayValues(const TovelModel &model, const PanelState &state)
{
    const std::optional<QString> current = currentDisplay(model, state);
    QList<DisplayValues> result;
    for (const QString &display : displaysOf(model.desktops())) {
        result.append({.display = display,
                       .name = model.displayName(display),
                       .builtIn = model.displayIsBuiltIn(display),
                       .current = current == display});
    }
    return result;
}

} // namespace tovel
