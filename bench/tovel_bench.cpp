// Measures Tovel side by side with what else reads the same session. Wants a display of its own
// with openbox and four desktops; scripts/bench provides it.
#include "bare_read.h"
#include "figures.h"
#include "open_windows.h"

#include "model/tovel_model.h"
#include "platform/linux/linux_desktop.h"
#include "platform/session/x11/x11_session.h"

#include <QCoreApplication>
#include <QProcess>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include <benchmark/benchmark.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace tovel;

namespace {

std::uint64_t waits = 0; // for the server; for each piece of a long answer

} // namespace

// The X library waits by this function alone, Qt's event loop by another.
extern "C" int poll(pollfd *descriptors, nfds_t count, int timeout)
{
    static const auto real = reinterpret_cast<decltype(&poll)>(dlsym(RTLD_NEXT, "poll"));
    waits += descriptors->events == POLLIN;
    return real(descriptors, count, timeout);
}

namespace {

constexpr int Applications = 20;
constexpr int Windows = 200;

using SteadyClock = std::chrono::steady_clock;

double secondsSince(SteadyClock::time_point start)
{
    return std::chrono::duration<double>(SteadyClock::now() - start).count();
}

// A model on the session, which has seen it once.
class Warm
{
public:
    Warm()
        : m_session(nullptr)
        , m_desktop(open())
        , m_installation(m_desktop)
        , m_model(m_desktop)
    { }

    // A flock of the first so many applications.
    void choose(int flockApplications)
    {
        const auto apps = m_model.apps();
        for (const RunningApp &app : apps)
            m_model.select(app, number(app) < flockApplications);
    }

    TovelModel &model() { return m_model; }

    std::uint64_t revision()
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        m_session->invalidate();
        return m_session->revision();
    }

    void refresh()
    {
        m_session->invalidate();
        m_model.refresh();
    }

private:
    static int number(const RunningApp &app)
    {
        return app.id.mid(QStringLiteral("Bench").size()).toInt();
    }

    std::unique_ptr<DesktopSession> open()
    {
        auto session = x11::X11Session::open({});
        if (!session)
            qFatal("there is no display");
        m_session = session.get();
        return session;
    }

    x11::X11Session *m_session;
    LinuxDesktop m_desktop;
    PlatformInstallation m_installation;
    TovelModel m_model;
};

// Seconds that a whole program takes, from its start to its end, with its output thrown away.
double run(std::vector<std::string> line)
{
    std::vector<char *> arguments;
    for (std::string &word : line)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    const auto start = SteadyClock::now();
    pid_t pid = 0;
    if (posix_spawnp(&pid, arguments[0], &actions, nullptr, arguments.data(), environ) != 0)
        qFatal("%s cannot be started", arguments[0]);
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    waitpid(pid, &status, 0);
    const double seconds = secondsSince(start);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        qFatal("%s failed", line.front().c_str());
    return seconds;
}

double peakMebibytes(const QStringList &line)
{
    QProcess process;
    process.start(QString::fromUtf8(PEAK_MEMORY), line);
    if (!process.waitForFinished() || process.exitCode() != 0)
        qFatal("%s failed", qPrintable(line.first()));
    return process.readAllStandardOutput().trimmed().toDouble() / 1024;
}

void bareRead(benchmark::State &state)
{
    BareReader reader;
    for (auto _ : state)
        benchmark::DoNotOptimize(reader.read());
}

void warmRefresh(benchmark::State &state)
{
    Warm warm;
    warm.choose(Applications / 2);
    if (warm.model().windows().size() != Windows / 2)
        qFatal("the flock has not half of the windows");
    warm.refresh();
    const std::uint64_t before = waits;
    for (auto _ : state)
        warm.refresh();
    state.counters["waits"]
        = static_cast<double>(waits - before) / static_cast<double>(state.iterations());
}

void firstRefresh(benchmark::State &state)
{
    std::uint64_t firstWaits = 0;
    for (auto _ : state) {
        waits = 0;
        const auto start = SteadyClock::now();
        const Warm warm;
        state.SetIterationTime(secondsSince(start));
        firstWaits = waits;
    }
    state.counters["waits"] = static_cast<double>(firstWaits);
}

void wholeProgram(benchmark::State &state, const std::vector<std::string> &line)
{
    for (auto _ : state)
        state.SetIterationTime(run(line));
}

void moveFifty(benchmark::State &state)
{
    Warm warm;
    warm.choose(Applications / 4);
    if (warm.model().traveling().size() != 50)
        qFatal("the flock has not fifty windows");
    std::size_t next = 1;
    for (auto _ : state) {
        const Desktop target = warm.model().desktops().at(next);
        next = next % 3 + 1;
        const auto start = SteadyClock::now();
        bool ended = false;
        auto task = warm.model().migrate(target, false).then([&] { ended = true; });
        while (!ended)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        state.SetIterationTime(secondsSince(start));
        if (warm.model().flockDesktopID() != target.id)
            qFatal("not every window has moved");
    }
}

// How often one refresh waits: when the session is seen for the first time, and when nothing has
// changed since the last, which is waited for.
void printWaits(int windows)
{
    const OpenWindows open(windows, Applications);
    Warm warm;
    warm.choose(Applications);
    waits = 0;
    Warm();
    const std::uint64_t first = waits;
    std::uint64_t revision = 0;
    while (std::exchange(revision, warm.revision()) != warm.revision())
        warm.refresh();
    const std::uint64_t before = waits;
    warm.refresh();
    std::printf("  %3d windows: %llu when nothing changed, %llu to start with\n", windows,
                static_cast<unsigned long long>(waits - before),
                static_cast<unsigned long long>(first));
}

// Prints as usual and remembers the figures for the comparison.
class Remembering final : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run> &runs) override
    {
        for (const Run &run : runs) {
            if (run.run_type == Run::RT_Aggregate && run.aggregate_name != "median")
                continue;
            m_seconds[run.run_name.function_name]
                = run.GetAdjustedRealTime() / benchmark::GetTimeUnitMultiplier(run.time_unit);
        }
        ConsoleReporter::ReportRuns(runs);
    }

    double seconds(const std::string &name) const { return m_seconds.at(name); }

private:
    std::map<std::string, double> m_seconds;
};

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);

    std::printf("Waits for the server in a refresh\n");
    for (const int windows : {10, 100, 500})
        printWaits(windows);

    const OpenWindows open(Windows, Applications);
    benchmark::RegisterBenchmark("bare_read", bareRead)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("refresh_first", firstRefresh)
        ->Unit(benchmark::kMillisecond)
        ->UseManualTime();
    benchmark::RegisterBenchmark("refresh_warm", warmRefresh)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("wmctrl", wholeProgram,
                                 std::vector<std::string>{"wmctrl", "-lGpx"})
        ->Unit(benchmark::kMillisecond)
        ->UseManualTime();
    { // leaves a flock of half of the windows in the user defaults
        Warm warm;
        warm.choose(Applications / 2);
    }
    benchmark::RegisterBenchmark("tovelctl_status", wholeProgram,
                                 std::vector<std::string>{TOVELCTL, "status"})
        ->Unit(benchmark::kMillisecond)
        ->UseManualTime();
    benchmark::RegisterBenchmark("move_50_windows", moveFifty)
        ->Unit(benchmark::kMillisecond)
        ->UseManualTime()
        ->Iterations(3);

    Remembering reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);

    std::printf("\n%d windows of %d applications\n", Windows, Applications);
    const double refresh = reporter.seconds("refresh_warm");
    const double wmctrl = reporter.seconds("wmctrl");
    printFigure("one warm refresh / bare pipelined read", refresh / reporter.seconds("bare_read"),
                1.5);
    printFigure("one warm refresh / wmctrl -lGpx", refresh / wmctrl, 0.05);
    printFigure("tovelctl status / wmctrl -lGpx", reporter.seconds("tovelctl_status") / wmctrl,
                0.3);
    printFigure("50 windows moved / 50 x 0.06 s", reporter.seconds("move_50_windows") / 3.0, 1.05);
    printFigure("peak memory of tovelctl status, MiB",
                peakMebibytes({QString::fromUtf8(TOVELCTL), QStringLiteral("status")}), 24);
    return 0;
}
