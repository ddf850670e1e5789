#include "model/texts.h"

namespace tovel::ModelTexts {

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

QString accessNeeded() { return QStringLiteral("Allow Accessibility access to move apps."); }

QString desktopGone() { return QStringLiteral("That desktop is no longer available."); }

QString nothingToMove()
{
    return QStringLiteral("No movable windows. Add an app or restore its windows.");
}

QString moving(qsizetype position, qsizetype count)
{
    return QStringLiteral("Moving ") + QString::number(position) + QStringLiteral(" of ")
        + QString::number(count) + QChar(u'\u2026');
}

QString desktopChanged(const QString &application)
{
    return application + QStringLiteral(": desktop changed; skipped.");
}

QString windowChanged(const QString &application)
{
    return application + QStringLiteral(": window changed; skipped.");
}

QString couldNotMove(const QString &application, std::int32_t status)
{
    return application + QStringLiteral(": could not move (") + QString::number(status)
        + QStringLiteral(").");
}

QString summary(int moved, int already, qsizetype skipped, int failed)
{
    const QString separator = QStringLiteral(u" \u00B7 ");
    QString text = QString::number(moved) + QStringLiteral(" moved") + separator
        + QString::number(already) + QStringLiteral(" already there");
    if (skipped > 0)
        text += separator + QString::number(skipped) + QStringLiteral(" skipped");
    if (failed > 0)
        text += separator + QString::number(failed) + QStringLiteral(" failed");
    return text;
}

QString couldNotSwitch()
{
    return QStringLiteral(
        "Apps moved. Could not switch desktops; check Mission Control shortcuts.");
}

} // namespace tovel::ModelTexts
