#include "app/choices_lock.h"
#include "app/console.h"
#include "app/interrupt.h"
#include "app/platform_choice.h"
#include "app/tovelctl/arguments.h"
#include "app/tovelctl/commands.h"
#include "platform/user_defaults.h"

#include <QCoreApplication>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <utility>

#include <langinfo.h>
#include <unistd.h>

using namespace tovel;
using namespace Qt::StringLiterals;

namespace {

void complain(const QString &line) { writeText(stderr, u"tovelctl: "_s + printable(line) + u'\n'); }

// Prints what was asked for; a script must not take nothing for an answer.
int print(const QString &text)
{
    if (writeText(stdout, text))
        return ExitStatus::Done;
    complain(u"the output could not be written"_s);
    return ExitStatus::Incomplete;
}

// A line that is written over by the next; a blank one removes it.
void showProgress(const QString &text) { writeText(stderr, u"\r\x1b[K"_s + text); }

// Qt warns of any other encoding on standard error, where it would be taken for an issue.
void useUtf8()
{
    std::setlocale(LC_ALL, "");
    if (std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0)
        return;
    unsetenv("LC_ALL");
    setenv("LC_CTYPE", "C.UTF-8", 1);
}

bool changesChoices(const Arguments &arguments)
{
    using enum Arguments::Command;
    return arguments.command == FlockAdd || arguments.command == FlockRemove
        || arguments.command == Rename;
}

int run(const Arguments &arguments)
{
    const auto choice = choosePlatform();
    if (!choice) {
        complain(unknownPlatformText());
        return ExitStatus::Usage;
    }
    const PlatformInstallation installation(choice->platform());

    int interrupted = 0;
    bool showsProgress = false;
    const auto clearProgress = [&showsProgress] {
        if (std::exchange(showsProgress, false))
            showProgress({});
    };
    CommandContext context;
    context.missingSession = choice->missingSession();
    context.limits = choice->limits();
    context.interrupted = &interrupted;
    int outputStatus = ExitStatus::Done;
    context.print = [clearProgress, &outputStatus](const QString &text) {
        clearProgress();
        outputStatus = print(text);
    };
    context.complain = [clearProgress](const QString &line) {
        clearProgress();
        complain(line);
    };
    if (isatty(STDERR_FILENO)) {
        context.progress = [&showsProgress](const QString &text) {
            showsProgress = true;
            showProgress(text);
        };
    }
    if (!context.missingSession.isEmpty() && !worksWithoutSession(arguments))
        return refuseWithoutSession(arguments, context);

    std::optional<ChoicesLock> lock(std::in_place);
    const UserDefaults &choices = choice->platform().userDefaults().standardUserDefaults();
    // Reading tells whether the stored choices can be read; the model would start afresh in
    // silence.
    choices.object(u"selected"_s);
    if (!choices.errorString().isEmpty())
        complain(u"the stored choices cannot be used: "_s + choices.errorString());
    TovelModel model;
    if (!changesChoices(arguments))
        lock.reset();
    const Interrupt interrupt([&](int number) {
        interrupted = number;
        model.stopMigration();
    });
    int status = ExitStatus::Done;
    bool ended = false;
    auto task = runCommand(model, arguments, context).then([&](int result) {
        status = result;
        ended = true;
        QCoreApplication::quit();
    });
    if (!ended)
        QCoreApplication::exec();
    return status == ExitStatus::Done ? outputStatus : status;
}

} // namespace

int main(int argc, char *argv[])
{
    openMissingStreams();
    useUtf8();
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(u"tovelctl"_s);
    QCoreApplication::setApplicationVersion(QStringLiteral(TOVEL_VERSION));

    const ParsedArguments parsed = parseArguments(QCoreApplication::arguments().sliced(1));
    if (!parsed.error.isEmpty()) {
        complain(parsed.error + u"; see tovelctl --help"_s);
        return ExitStatus::Usage;
    }
    if (parsed.arguments.command == Arguments::Command::Help)
        return print(helpText());
    if (parsed.arguments.command == Arguments::Command::Version)
        return print(u"tovelctl %1\n"_s.arg(QCoreApplication::applicationVersion()));
    return run(parsed.arguments);
}
