#include "app/commands/content.h"

#include "model/texts.h"

#include <algorithm>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

// One for each display, in the order of their first desktops.
QList<DisplayInfo> displayInfos(const TovelModel &model)
{
    QList<DisplayInfo> displays;
    for (const QString &id : displaysOf(model.desktops()))
        displays.append({id, model.displayName(id), model.displayIsBuiltIn(id)});
    return displays;
}

AppInfo appInfo(const TovelModel &model, const RunningApp &app)
{
    return {app.id, app.name, app.running != nullptr, model.selected().contains(app.id)};
}

QList<AppInfo> flockInfos(const TovelModel &model)
{
    QList<AppInfo> flock;
    for (const RunningApp &app : model.chosenApps())
        flock.append(appInfo(model, app));
    return flock;
}

WindowInfo windowInfo(const TovelModel &model, const TravelWindow &window)
{
    WindowInfo info{window.id, window.appID, window.appName, window.title, {}, window.skipReason};
    for (const std::uint64_t space : window.spaces) {
        if (const Desktop *desktop = desktopWithID(model.desktops(), space))
            info.desktops.append(desktop->index);
    }
    return info;
}

MoveOutcome outcomeOf(const WindowRecord &window)
{
    if (window.reason == WindowReason::putBack)
        return MoveOutcome::PutBack;
    switch (window.outcome) {
    case WindowOutcome::untried:
        return MoveOutcome::Untried;
    case WindowOutcome::moved:
        return MoveOutcome::Moved;
    case WindowOutcome::already:
        return MoveOutcome::Already;
    case WindowOutcome::skipped:
        return MoveOutcome::Skipped;
    case WindowOutcome::failed:
        return MoveOutcome::Failed;
    }
    Q_UNREACHABLE();
}

} // namespace

DesktopInfo desktopInfo(const TovelModel &model, const Desktop &desktop)
{
    return {desktop.index, model.name(desktop), desktop.display, desktop.current,
            model.distribution().value(desktop.id)};
}

StatusContent statusContent(const TovelModel &model, const QStringList &limits)
{
    StatusContent status;
    status.trusted = model.trusted();
    status.available = model.available();
    status.follow = model.follow();
    status.choicesKnown = model.choicesKnown();
    status.displays = displayInfos(model);
    for (const Desktop &desktop : model.desktops())
        status.desktops.append(desktopInfo(model, desktop));
    status.flock = flockInfos(model);
    if (const auto id = model.flockDesktopID()) {
        if (const Desktop *desktop = desktopWithID(model.desktops(), *id))
            status.flockDesktop = desktop->index;
    }
    for (const TravelWindow &window : model.windows())
        status.windows.append(windowInfo(model, window));
    status.limits = limits;
    return status;
}

AppsContent appsContent(const TovelModel &model)
{
    AppsContent content;
    for (const RunningApp &app : model.apps())
        content.apps.append(appInfo(model, app));
    return content;
}

FlockContent flockContent(const TovelModel &model) { return {flockInfos(model)}; }

MoveContent moveContent(const TovelModel &model, const Desktop &target)
{
    const MigrationRecord &run = model.latestMigration();
    MoveContent move;
    Desktop gone = target;
    gone.current = false;
    const Desktop *now = desktopWithID(model.desktops(), target.id);
    move.desktop = desktopInfo(model, now ? *now : gone);
    move.issues = ModelTexts::issues(run);
    move.complete = run.complete;
    move.untried = static_cast<int>(count(run, WindowReason::stopped));
    move.summary = run.obstacle == MigrationObstacle::alreadyThere
        ? u"The flock is already on %1."_s.arg(model.name(target))
        : ModelTexts::summary(run);
    if (move.untried > 0)
        move.summary += u" · %1 not tried"_s.arg(move.untried);
    for (const WindowRecord &window : run.windows) {
        MovedWindowInfo info{window.id, window.appID, window.title, outcomeOf(window), {}};
        if (window.reason != WindowReason::none)
            info.reason = ModelTexts::reason(window);
        move.windows.append(info);
    }
    return move;
}

} // namespace tovel
