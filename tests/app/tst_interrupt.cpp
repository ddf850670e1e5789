#include "app/console.h"
#include "app/interrupt.h"
#include "support/test.h"

#include <QCoreApplication>

#include <csignal>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int Patience = 20000; // milliseconds
constexpr unsigned Long = 4; // seconds, more than a hang may last

[[noreturn]] void hang()
{
    for (;;)
        pause();
}

// A process of its own that does this once its signals are waited for, and ends well after it.
pid_t start(Interrupt::Deadline deadline, const std::function<void()> &work,
            const std::function<void()> &after)
{
    int ready[2] = {};
    if (pipe(ready) != 0)
        return -1;
    const pid_t process = fork();
    if (process == 0) {
        int argc = 1;
        char name[] = "child";
        char *arguments[] = {name, nullptr};
        const QCoreApplication application(argc, arguments);
        {
            const Interrupt interrupt([](int) { QCoreApplication::quit(); }, deadline);
            close(ready[1]);
            work();
        }
        after();
        _exit(0);
    }
    close(ready[1]);
    char none = 0;
    [[maybe_unused]] const ssize_t closed = read(ready[0], &none, 1);
    close(ready[0]);
    return process;
}

// The signal that ended the process, or 0.
int endOf(pid_t process)
{
    int status = 0;
    if (!QTest::qWaitFor([&] { return waitpid(process, &status, WNOHANG) == process; }, Patience)) {
        kill(process, SIGKILL);
        waitpid(process, &status, 0);
    }
    return WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status);
}

} // namespace

class TestInterrupt : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theFirstSignalEndsWhatHangs()
    {
        using enum Interrupt::Deadline;
        const auto loop = [] { QCoreApplication::exec(); };
        const auto takeLong = [] {
            for (unsigned left = Long; left > 0;)
                left = sleep(left);
        };
        const pid_t inLoop = start(Call, hang, [] {});
        const pid_t onWayOut = start(End, loop, hang);
        const pid_t slow = start(Call, loop, takeLong);
        for (const pid_t process : {inLoop, onWayOut, slow}) {
            QVERIFY(process > 0);
            kill(process, SIGTERM);
        }
        QCOMPARE(endOf(inLoop), SIGTERM);
        QCOMPARE(endOf(onWayOut), SIGTERM);
        QCOMPARE(endOf(slow), 0);
    }

    void whatWasIgnoredStaysSo()
    {
        std::signal(SIGHUP, SIG_IGN);
        const pid_t process = start(
            Interrupt::Deadline::Call, [] {},
            [] {
                raise(SIGHUP);
                raise(SIGTERM);
            });
        std::signal(SIGHUP, SIG_DFL);
        QCOMPARE(endOf(process), SIGTERM);
    }

    void whatIsMissingIsNotWrittenTo()
    {
        const pid_t process = fork();
        if (process == 0) {
            close(STDOUT_FILENO);
            openMissingStreams();
            _exit(writeText(stdout, QStringLiteral("text"))
                  || open("/dev/null", O_RDONLY) <= STDERR_FILENO);
        }
        QCOMPARE(endOf(process), 0);
    }
};

QTEST_APPLESS_MAIN(TestInterrupt)
#include "tst_interrupt.moc"
