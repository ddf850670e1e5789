#pragma once

#include <QString>
#include <QStringList>

namespace tovel {

// What a command line asks for that names no self-test mode.
enum class Task {
    ShowPanel,
    StartHidden, // the panel, once it is called for
    PrintHelp,
    PrintVersion
};

// Of several tasks, help comes first and then the version. What is not known asks for nothing, so
// that a session may pass options of its own.
Task task(const QStringList &arguments);

QString usageText();

} // namespace tovel
