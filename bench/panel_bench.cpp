// Measures the panel's program from outside, as its user sees it: the start side by side with that
// of a bare window, memory, what it does while nobody uses it, and how soon the tray icon and the
// panel are there. Wants a display of its own with openbox, 1280 x 800 pixels, and trayer where the
// panel does not come; scripts/bench provides it.
#include "figures.h"
#include "keyboard.h"
#include "open_windows.h"
#include "process_figures.h"
#include "screen_watch.h"
#include "tray_watch.h"

#include <QCoreApplication>
#include <QProcess>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr int Windows = 20;
constexpr int Starts = 21;
constexpr auto Settling = 3s;
constexpr auto ShownIdleness = 20s;
constexpr auto HiddenIdleness = 60s;
constexpr int KeyPresses = 20;
constexpr std::array<std::uint32_t, 4> HotKey{0xffe3, 0xffe9, 0xffeb, 't'}; // Control, Alt, Super

// Of the panel's own background: one in the title row, one at the lower edge. The bare window, in
// the middle of the screen as well, covers both.
constexpr std::array<ScreenPoint, 2> Points{{{190, 70}, {185, 752}}};

double millisecondsSince(Clock::time_point begin)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
}

double medianOf(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

class Program
{
public:
    explicit Program(std::vector<std::string> line)
    {
        std::vector<char *> arguments;
        for (std::string &word : line)
            arguments.push_back(word.data());
        arguments.push_back(nullptr);
        if (posix_spawn(&m_pid, arguments[0], nullptr, nullptr, arguments.data(), environ) != 0)
            qFatal("%s cannot be started", arguments[0]);
    }

    ~Program()
    {
        kill(m_pid, SIGTERM);
        waitpid(m_pid, nullptr, 0);
    }

    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;

    pid_t pid() const { return m_pid; }

private:
    pid_t m_pid = 0;
};

// One program to be started again and again.
class Subject
{
public:
    // Starts the program once, to learn the colours of its window.
    Subject(ScreenWatch &screen, std::vector<std::string> line)
        : m_screen(screen)
        , m_line(std::move(line))
        , m_background(screen.colors(Points))
    {
        {
            const Program program(m_line);
            std::this_thread::sleep_for(Settling);
            m_painted = screen.colors(Points);
        }
        for (std::size_t i = 0; i < Points.size(); ++i) {
            if (m_painted[i] == m_background[i])
                qFatal("the window of %s is not where it is looked for", m_line[0].c_str());
        }
        waitForEnd();
    }

    // Starts the program and ends it when all of its window has its colours.
    void start()
    {
        const auto begin = Clock::now();
        {
            const Program program(m_line);
            if (!shows(m_painted))
                qFatal("the window of %s does not appear", m_line[0].c_str());
            m_times.push_back(millisecondsSince(begin));
        }
        waitForEnd();
    }

    // Milliseconds.
    double median() const { return medianOf(m_times); }

private:
    bool shows(const ScreenWatch::Colors &wanted) const
    {
        return m_screen.waitFor(Points, [&](const auto &colors) { return colors == wanted; });
    }

    void waitForEnd() const
    {
        if (!shows(m_background))
            qFatal("the window of %s does not go away", m_line[0].c_str());
    }

    ScreenWatch &m_screen;
    std::vector<std::string> m_line;
    ScreenWatch::Colors m_background;
    ScreenWatch::Colors m_painted;
    std::vector<double> m_times;
};

void measureStarts(ScreenWatch &screen)
{
    Subject emptyWindow(screen, {BARE_WINDOW});
    Subject textWindow(screen, {BARE_WINDOW, "Tovel"});
    Subject panel(screen, {TOVEL});
    for (int i = 0; i < Starts; ++i) {
        emptyWindow.start();
        textWindow.start();
        panel.start();
    }
    const double empty = emptyWindow.median();
    const double text = textWindow.median();
    const double tovel = panel.median();
    std::printf("\nFrom the start of a program to its first frame, median of %d in turn\n", Starts);
    std::printf("  empty window %.1f ms, window with a text %.1f ms, tovel %.1f ms\n", empty, text,
                tovel);
    printFigure("first frame of tovel / empty window", tovel / empty, 1.5);
    printFigure("first frame of tovel / window with a text", tovel / text, 1.5);
}

void measureIdleness(const char *state, pid_t pid, std::chrono::seconds time,
                     double wantedMebibytes, double wantedPerMille)
{
    std::this_thread::sleep_for(Settling);
    const double before = processorMilliseconds(pid);
    const auto waitsBefore = waits(pid);
    std::this_thread::sleep_for(time);
    const double used = processorMilliseconds(pid) - before;
    const auto seconds = static_cast<double>(time.count());
    std::printf("\nThe panel %s: %.1f ms of processor time and %ld wake-ups in %.0f s\n", state,
                used, waitsSince(waitsBefore, pid), seconds);
    printFigure("processor time, per mille", used / seconds, wantedPerMille);
    printFigure("memory (PSS), MiB", pssMebibytes(pid), wantedMebibytes);
}

void measureShown(ScreenWatch &screen)
{
    const ScreenWatch::Colors background = screen.colors(Points);
    const Program tovel({TOVEL});
    if (!screen.waitFor(Points, [&](const auto &colors) { return colors != background; }))
        qFatal("the panel does not appear");
    measureIdleness("shown", tovel.pid(), ShownIdleness, 40, 5);
}

void measureIcon()
{
    TrayWatch tray;
    std::vector<double> times;
    for (int i = 0; i < Starts; ++i) {
        const auto begin = Clock::now();
        {
            const Program tovel({TOVEL, "--hidden"});
            if (!tray.waitForIcon(true))
                qFatal("the icon does not appear");
            times.push_back(millisecondsSince(begin));
        }
        if (!tray.waitForIcon(false))
            qFatal("the icon does not go away");
    }
    std::printf("\nFrom the start of tovel --hidden, median of %d\n", Starts);
    printFigure("icon in the tray, ms", medianOf(times), 500);
}

// One press of all its keys, each a real one that the focused window of another program might get.
void pressHotKey(Keyboard &keyboard)
{
    for (const std::uint32_t key : HotKey)
        keyboard.press(key);
    for (const std::uint32_t key : HotKey)
        keyboard.release(key);
}

void measureHotKey(ScreenWatch &screen)
{
    Keyboard keyboard;
    const ScreenWatch::Colors background = screen.colors(Points);
    pressHotKey(keyboard);
    std::this_thread::sleep_for(Settling);
    const ScreenWatch::Colors painted = screen.colors(Points);
    if (painted == background)
        qFatal("the hot key does not show the panel");
    std::vector<double> times;
    for (int i = 0; i < KeyPresses; ++i) {
        QProcess::execute(QStringLiteral("wmctrl"),
                          {QStringLiteral("-F"), QStringLiteral("-c"), QStringLiteral("Tovel")});
        if (!screen.waitFor(Points, [&](const auto &colors) { return colors == background; }))
            qFatal("the panel does not close");
        std::this_thread::sleep_for(300ms); // until another window has the keyboard
        const auto begin = Clock::now();
        pressHotKey(keyboard);
        if (!screen.waitFor(Points, [&](const auto &colors) { return colors == painted; }))
            qFatal("the hot key does not show the panel");
        times.push_back(millisecondsSince(begin));
    }
    std::printf("\nFrom the hot key to all of the panel on the screen, %d times, at most %.1f ms\n",
                KeyPresses, *std::max_element(times.cbegin(), times.cend()));
    printFigure("median, ms", medianOf(times), 100);
}

void measureHidden(ScreenWatch &screen)
{
    TrayWatch tray;
    const Program tovel({TOVEL, "--hidden"});
    if (!tray.waitForIcon(true))
        qFatal("the icon does not appear");
    measureIdleness("hidden", tovel.pid(), HiddenIdleness, 36, 0.1);
    measureHotKey(screen);
    QProcess::execute(QStringLiteral("wmctrl"),
                      {QStringLiteral("-F"), QStringLiteral("-c"), QStringLiteral("Tovel")});
    measureIdleness("hidden after that", tovel.pid(), HiddenIdleness, 40, 0.1);
}

// A flock of half of the applications.
void chooseFlock()
{
    QStringList line{QStringLiteral("flock"), QStringLiteral("add")};
    for (int i = 0; i < Windows / 2; ++i)
        line.append(QStringLiteral("Bench%1").arg(i));
    QProcess tovelctl;
    tovelctl.start(QString::fromUtf8(TOVELCTL), line);
    if (!tovelctl.waitForFinished() || tovelctl.exitCode() != 0)
        qFatal("there is no flock");
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const OpenWindows open(Windows, Windows);
    chooseFlock();
    ScreenWatch screen;
    measureStarts(screen);
    measureShown(screen);
    measureIcon();
    measureHidden(screen);
    return 0;
}
