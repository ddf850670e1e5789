#include "app/commands/answer_json.h"
#include "app/commands/carry_out.h"
#include "app/console.h"
#include "app/interrupt.h"
#include "app/platform_choice.h"
#include "app/program.h"
#include "app/service/running_tovel.h"
#include "app/session_bus.h"
#include "app/tovelctl/arguments.h"
#include "app/tovelctl/running_application.h"
#include "app/tovelctl/text.h"

#include <QCoreApplication>

#include <QCoroTask>

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

constexpr int UsageError = 2;
constexpr int Signalled = 128; // plus the signal's number

void complain(const QString &line) { writeText(stderr, u"tovelctl: "_s + printable(line) + u'\n'); }

// Prints what was asked for; a script must not take nothing for an answer.
int print(const QString &text)
{
    if (writeText(stdout, text))
        return static_cast<int>(AnswerStatus::Done);
    complain(u"the output could not be written"_s);
    return static_cast<int>(AnswerStatus::Incomplete);
}

// A line on a terminal that is written over by the next, and removed at the end.
class ProgressLine
{
public:
    ~ProgressLine()
    {
        if (m_isThere)
            write({});
    }

    void show(const QString &text)
    {
        if (!isatty(STDERR_FILENO))
            return;
        m_isThere = true;
        write(printable(text));
    }

private:
    static void write(const QString &text) { writeText(stderr, u"\r\x1b[K"_s + text); }

    bool m_isThere = false;
};

// Qt warns of any other encoding on standard error, where it would be taken for an issue.
void useUtf8()
{
    std::setlocale(LC_ALL, "");
    if (std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0)
        return;
    unsetenv("LC_ALL");
    setenv("LC_CTYPE", "C.UTF-8", 1);
}

// The answer of the Tovel that runs; nothing where none does.
std::optional<Answer> askRunning(const Request &request, int &interrupted)
{
    const QDBusConnection bus = sessionBus();
    const RunningTovel running = findRunningTovel(bus);
    if (running == RunningTovel::Silent)
        complain(u"the running Tovel does not answer; going on without it"_s);
    if (running != RunningTovel::Answers)
        return std::nullopt;
    ProgressLine line;
    RunningApplication application(bus, [&line](const QString &text) { line.show(text); });
    const Interrupt interrupt([&](int number) {
        interrupted = number;
        application.stopMove();
    });
    return QCoro::waitFor(application.carryOut(request));
}

Answer workAlone(PlatformChoice &choice, const Request &request, int &interrupted)
{
    const PlatformInstallation installation(choice.platform());
    const Surroundings surroundings{choice.missingSession(), choice.limits(), choice.sessionName(),
                                    false};
    TovelModel model;
    ProgressLine line;
    QObject::connect(&model, &TovelModel::didChange, &model, [&](TovelModel::Property property) {
        if (property == TovelModel::Property::message && model.busy())
            line.show(model.message());
    });
    const Interrupt interrupt([&](int number) {
        interrupted = number;
        model.stopMigration();
    });
    return QCoro::waitFor(carryOut(model, request, surroundings));
}

int tell(const Arguments &arguments, const Answer &answer, int interrupted)
{
    const QString text
        = arguments.json ? indentedJson(answer) : answerText(arguments.request, answer);
    const int outputStatus = text.isEmpty() ? static_cast<int>(AnswerStatus::Done) : print(text);
    for (const QString &problem : answer.problems)
        complain(problem);
    if (interrupted != 0 && answer.status != AnswerStatus::NothingTried)
        return Signalled + interrupted;
    return answer.status == AnswerStatus::Done ? outputStatus : static_cast<int>(answer.status);
}

int allowAccess()
{
    const auto choice = choosePlatform();
    if (!choice) {
        complain(unknownPlatformText());
        return UsageError;
    }
    choice->requestAccess(AccessPatience);
    const AccessText access = accessText(*choice);
    if (access.isGranted)
        return print(access.text + u'\n');
    complain(access.text);
    return static_cast<int>(AnswerStatus::NothingTried);
}

int run(const Arguments &arguments)
{
    int interrupted = 0;
    if (isUsersSession()) {
        if (const auto answer = askRunning(arguments.request, interrupted))
            return tell(arguments, *answer, interrupted);
    }
    const auto choice = choosePlatform();
    if (!choice) {
        complain(unknownPlatformText());
        return UsageError;
    }
    const Answer answer = workAlone(*choice, arguments.request, interrupted);
    return tell(arguments, answer, interrupted);
}

} // namespace

int runProgram(int argc, char *argv[])
{
    openMissingStreams();
    useUtf8();
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(u"tovelctl"_s);
    QCoreApplication::setApplicationVersion(QStringLiteral(TOVEL_VERSION));

    const ParsedArguments parsed = parseArguments(QCoreApplication::arguments().sliced(1));
    if (!parsed.error.isEmpty()) {
        complain(parsed.error + u"; see tovelctl --help"_s);
        return UsageError;
    }
    switch (parsed.arguments.purpose) {
    case Arguments::Purpose::Help:
        return print(helpText());
    case Arguments::Purpose::Version:
        return print(u"tovelctl %1\n"_s.arg(QCoreApplication::applicationVersion()));
    case Arguments::Purpose::Access:
        return allowAccess();
    case Arguments::Purpose::Command:
        break;
    }
    return run(parsed.arguments);
}
