#include "app/tovel/command_line.h"

namespace tovel {

using namespace Qt::StringLiterals;

Task task(const QStringList &arguments)
{
    if (arguments.contains("--help"_L1) || arguments.contains("-h"_L1))
        return Task::PrintHelp;
    if (arguments.contains("--version"_L1))
        return Task::PrintVersion;
    return arguments.contains("--hidden"_L1) ? Task::StartHidden : Task::ShowPanel;
}

QString usageText()
{
    return uR"(Usage: tovel [--hidden | MODE]

Opens the panel, from which the windows of your flock, the applications you
chose, go to one desktop.

Options:
  --hidden                 start without showing the panel
  -h, --help               print this text
  --version                print the version

Self-test modes, which show no panel:
  --diagnose               tell whether windows can be moved here
  --switch-test            go to another desktop and back
  --cross-process-test     move a window of another process and back
  --fixture                open that test's windows, and stay
  --integration-test [--minimized]
                           move a window of its own and back
  --self-test              check the rules; needs no desktop

Exit status: 0 done; 1 failed; 2 wrong usage, or the session does not allow the
test; 3 there is no display to show the panel on.
)"_s;
}

} // namespace tovel
