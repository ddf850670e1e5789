#include "app/platform_choice.h"
#include "app/tovelctl/arguments.h"
#include "app/tovelctl/commands.h"
#include "app/tovelctl/interrupt.h"

#include <QCoreApplication>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include <langinfo.h>
#include <unistd.h>

using namespace tovel;
using namespace Qt::StringLiterals;

namespace {

void write(FILE *stream, const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stream);
    std::fflush(stream);
}

void complain(const QString &line) { write(stderr, u"tovelctl: "_s + line + u'\n'); }

// A line that is written over by the next; a blank one removes it.
void showProgress(const QString &text) { write(stderr, u"\r\x1b[K"_s + text); }

// Qt warns of any other encoding on standard error, where it would be taken for an issue.
void useUtf8()
{
    std::setlocale(LC_ALL, "");
    if (std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0)
        return;
    unsetenv("LC_ALL");
    setenv("LC_CTYPE", "C.UTF-8", 1);
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
    context.print = [clearProgress](const QString &text) {
        clearProgress();
        write(stdout, text);
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

    TovelModel model;
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
    return status;
}

} // namespace

int main(int argc, char *argv[])
{
    useUtf8();
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(u"tovelctl"_s);
    QCoreApplication::setApplicationVersion(QStringLiteral(TOVEL_VERSION));

    const ParsedArguments parsed = parseArguments(QCoreApplication::arguments().sliced(1));
    if (!parsed.error.isEmpty()) {
        complain(parsed.error + u"; see tovelctl --help"_s);
        return ExitStatus::Usage;
    }
    if (parsed.arguments.command == Arguments::Command::Help) {
        write(stdout, helpText());
        return ExitStatus::Done;
    }
    if (parsed.arguments.command == Arguments::Command::Version) {
        write(stdout, u"tovelctl %1\n"_s.arg(QCoreApplication::applicationVersion()));
        return ExitStatus::Done;
    }
    return run(parsed.arguments);
}
