#pragma once

#include "model/migration_record.h"

#include <QString>
#include <QStringList>

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

// Choices that are not what is stored.
QString choicesUnreadable(const QString &reason);
QString choicesNotStored(const QString &reason);

// Why nothing can be moved.
QString accessNeeded();
QString desktopGone();
QString nothingToMove();
QString makesNoDesktops();

// A migration under way. Positions count from 1.
QString moving(qsizetype position, qsizetype count);

// Why the window was not moved, or did not stay; empty without a reason.
QString reason(const WindowRecord &window);

// A migration that ended. Nothing is said of skipped and failed windows when there are none.
QString summary(const MigrationRecord &record);

// The problems of a migration, in their order: why it did not begin, the windows that failed, the
// desktop that was not shown.
QStringList issues(const MigrationRecord &record);
// Those of one window.
QStringList issues(const WindowRecord &window);
// Those that were found when it had ended, which issues() has none of.
QStringList laterProblems(const MigrationRecord &record);
QString couldNotSwitch();

} // namespace tovel::ModelTexts
