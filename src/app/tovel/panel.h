#pragma once

class QTextStream;

namespace tovel {

// Runs the interactive program until it quits, and gives its exit status: 2 when the environment
// asks for an unknown platform, 3 when there is no display to show the panel on.
int runPanel(int &argc, char **argv, QTextStream &err);

// What the platform plugins of Qt are chosen from, the first that works; none of them leaves a
// program without display running, which can then say so itself. Before the application is made.
void prepareDisplay(const char *plugins);

} // namespace tovel
