#pragma once

#include <QString>

#include <cstdint>

// What the model says to the user.
namespace tovel::ModelTexts {

// Why a window cannot move.
QString fullScreen();
QString onMultipleDesktops();
QString desktopUnavailable();
QString notOnRegularDesktop();

// Names of what has none of its own.
QString untitledWindow();
QString unknownDisplay();
QString desktopNumber(std::int64_t index);

// Launching an application.
QString couldNotFind(const QString &application);
QString couldNotOpen(const QString &application, const QString &reason);

// A migration that does not start.
QString accessNeeded();
QString desktopGone();
QString nothingToMove();

// A migration under way. Positions count from 1.
QString moving(qsizetype position, qsizetype count);
QString desktopChanged(const QString &application);
QString windowChanged(const QString &application);
QString couldNotMove(const QString &application, std::int32_t status);

// A migration that ended. Nothing is said of skipped and failed windows when there are none.
QString summary(int moved, int already, qsizetype skipped, int failed);
QString couldNotSwitch();

} // namespace tovel::ModelTexts
