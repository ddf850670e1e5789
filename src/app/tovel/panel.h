#pragma once

#include "app/shell/app_delegate.h"

class QTextStream;

namespace tovel {

// Runs the interactive program until it quits, and gives its exit status: 1 when one runs already
// but does not answer, 2 when the environment asks for an unknown platform, 3 when there is no
// display to show the panel on. Where one runs already on the session's bus, shows the panel of
// that one, unless it was to start hidden, and gives 0.
int runPanel(int &argc, char **argv, AppDelegate::Launch launch, QTextStream &err);

// What the platform plugins of Qt are chosen from, the first that works; none of them leaves a
// program without display running, which can then say so itself. Before the application is made.
void prepareDisplay(const QByteArray &plugins);

} // namespace tovel
