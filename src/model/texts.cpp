#include "model/texts.h"

namespace tovel::ModelTexts {

namespace {

QString problem(const WindowRecord &window)
{
    return window.appName + QStringLiteral(": ") + reason(window) + QChar(u'.');
}

QStringList issues(MigrationObstacle obstacle)
{
    switch (obstacle) {
    case MigrationObstacle::noAccess:
        return {accessNeeded()};
    case MigrationObstacle::desktopGone:
        return {desktopGone()};
    case MigrationObstacle::nothingToMove:
        return {nothingToMove()};
    case MigrationObstacle::alreadyThere:
        return {};
    }
    Q_UNREACHABLE();
}

} // namespace

QString fullScreen() { return QStringLiteral(u"Full screen \u2014 leave full screen to move"); }

QString onMultipleDesktops()
{
    return QStringLiteral(u"On multiple desktops \u2014 set Assign To to None");
}

QString desktopUnavailable() { return QStringLiteral("Desktop unavailable"); }

QString notOnRegularDesktop() { return QStringLiteral("Not on a regular desktop"); }

QString untitledWindow() { return QStringLiteral("Window"); }

QString unknownDisplay() { return QStringLiteral("Unknown display"); }

QString desktopNumber(std::int64_t index)
{
    return QStringLiteral("Desktop ") + QString::number(index);
}

QString couldNotFind(const QString &application)
{
    return QStringLiteral(u"Couldn\u2019t find ") + application
        + QStringLiteral(". Reinstall it or remove it from your flock.");
}

QString couldNotOpen(const QString &application, const QString &reason)
{
    return QStringLiteral(u"Couldn\u2019t open ") + application + QStringLiteral(": ") + reason;
}

QString choicesUnreadable(const QString &reason)
{
    return QStringLiteral("Your choices cannot be read: ") + reason;
}

QString choicesNotStored(const QString &reason)
{
    return QStringLiteral("Your choices could not be stored; make them again later: ") + reason;
}

QString accessNeeded() { return QStringLiteral("Allow Accessibility access to move apps."); }

QString desktopGone() { return QStringLiteral("That desktop is no longer available."); }

QString nothingToMove()
{
    return QStringLiteral("No movable windows. Add an app or restore its windows.");
}

QString makesNoDesktops() { return QStringLiteral("this session makes no desktops on request"); }

QString moving(qsizetype position, qsizetype count)
{
    return QStringLiteral("Moving ") + QString::number(position) + QStringLiteral(" of ")
        + QString::number(count) + QChar(u'\u2026');
}

QString reason(const WindowRecord &window)
{
    switch (window.reason) {
    case WindowReason::none:
        return {};
    case WindowReason::cannotMove:
        return window.skipReason;
    case WindowReason::desktopChanged:
        return QStringLiteral("desktop changed; skipped");
    case WindowReason::windowChanged:
        return QStringLiteral("window changed; skipped");
    case WindowReason::notConfirmed:
        return QStringLiteral("could not move (") + QString::number(window.status) + QChar(u')');
    case WindowReason::stopped:
        return QStringLiteral("stopped before its turn");
    case WindowReason::cameTooLate:
        return QStringLiteral("can move only since the move began; not tried");
    case WindowReason::putBack:
        return QStringLiteral("arrived, but did not stay");
    }
    Q_UNREACHABLE();
}

QString summary(const MigrationRecord &record)
{
    const QString separator = QStringLiteral(u" \u00B7 ");
    const auto counted = [&](WindowOutcome outcome, const QString &words) {
        return QString::number(count(record, outcome)) + words;
    };
    QString text = counted(WindowOutcome::moved, QStringLiteral(" moved")) + separator
        + counted(WindowOutcome::already, QStringLiteral(" already there"));
    if (count(record, WindowOutcome::skipped) > 0)
        text += separator + counted(WindowOutcome::skipped, QStringLiteral(" skipped"));
    if (count(record, WindowOutcome::failed) > 0)
        text += separator + counted(WindowOutcome::failed, QStringLiteral(" failed"));
    return text;
}

QStringList issues(const WindowRecord &window)
{
    return window.outcome == WindowOutcome::failed ? QStringList{problem(window)} : QStringList();
}

QStringList issues(const MigrationRecord &record)
{
    if (record.obstacle)
        return issues(*record.obstacle);
    QStringList result;
    for (const WindowRecord &window : record.windows)
        result += issues(window);
    if (hasFailedToFollow(record))
        result += couldNotSwitch();
    return result;
}

QStringList laterProblems(const MigrationRecord &record)
{
    if (record.obstacle)
        return {};
    if (!record.seenAfterwards)
        return {QStringLiteral("The windows could not be looked at afterwards.")};
    QStringList result;
    for (const WindowRecord &window : record.windows) {
        if (window.reason == WindowReason::cameTooLate || window.reason == WindowReason::putBack)
            result += problem(window);
    }
    return result;
}

QString couldNotSwitch()
{
    return QStringLiteral(
        "Apps moved. Could not switch desktops; check Mission Control shortcuts.");
}

} // namespace tovel::ModelTexts
