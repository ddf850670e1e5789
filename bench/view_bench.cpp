// Measures what the panel's view costs within its own process: a redraw with far more applications
// and desktops than people have, and the memory that refreshes of a real session leave behind.
// Wants a display of its own with openbox; scripts/bench provides it.
#include "figures.h"
#include "open_windows.h"
#include "process_figures.h"

#include "model/tovel_model.h"
#include "platform/linux/linux_desktop.h"
#include "platform/session/x11/x11_session.h"
#include "platform/simulated/simulated_desktop.h"
#include "settings/bundle.h"
#include "views/tovel_view.h"

#include <QApplication>
#include <QFileInfo>
#include <QWindow>

#include <chrono>
#include <cstdio>

#include <benchmark/benchmark.h>
#include <unistd.h>

using namespace tovel;
using namespace Qt::StringLiterals;

namespace {

constexpr int Applications = 100;
constexpr int Desktops = 40;
constexpr std::uint64_t FirstDesktop = 10;
constexpr int Repetitions = 5;
constexpr int Windows = 20;
constexpr int WarmUp = 100;
constexpr int Refreshes = 1000;
constexpr QSize ViewSize(940, 668);

// A crowded desktop: everything is in the flock, and its windows are all on one desktop.
class Crowd
{
public:
    Crowd()
        : m_installation(m_desktop.platform())
    {
        SimDisplay display{.identifier = u"A"_s, .number = 1, .currentSpace = FirstDesktop};
        for (int i = 0; i < Desktops; ++i)
            display.spaces.append(SimSpace{.id = FirstDesktop + static_cast<std::uint64_t>(i)});
        m_desktop.addDisplay(display);
        const QString icons
            = QFileInfo(mainBundle().pathForResource(u"demo/files"_s, u"svg"_s).value_or(QString()))
                  .absolutePath();
        QStringList flock;
        for (std::int32_t i = 0; i < Applications; ++i) {
            const QString identifier = u"org.example.application%1"_s.arg(i);
            m_desktop.addApplication({.pid = 500 + i,
                                      .bundleIdentifier = identifier,
                                      .icon = NSImage{icons + u"/files.svg"_s}});
            m_desktop.addWindow(
                {.number = 1000U + static_cast<std::uint32_t>(i), .pid = 500 + i, .spaces = {0}});
            flock.append(identifier);
        }
        m_desktop.userDefaults().standardUserDefaults().put(u"selected"_s, flock);
        m_desktop.setRecording(false);
        change();
        m_model = std::make_unique<TovelModel>(m_desktop.platform());
        if (m_model->windows().size() != Applications || m_model->desktops().size() != Desktops)
            qFatal("the crowd is not complete");
    }

    TovelModel &model() { return *m_model; }

    // Another name for every application and every desktop, and the flock elsewhere. The model
    // knows at its next refresh, and of the desktops' names at once.
    void change()
    {
        ++m_step;
        const std::uint64_t space = FirstDesktop + m_step % Desktops;
        for (std::int32_t i = 0; i < Applications; ++i) {
            m_desktop.application(500 + i).name = u"Application %1 of step %2"_s.arg(i).arg(m_step);
            m_desktop.window(1000U + static_cast<std::uint32_t>(i)).spaces = {space};
        }
        if (!m_model)
            return;
        const auto desktops = m_model->desktops();
        for (const Desktop &desktop : desktops)
            m_model->rename(desktop, u"Pond %1 of step %2"_s.arg(desktop.id).arg(m_step));
    }

private:
    SimulatedDesktop m_desktop;
    PlatformInstallation m_installation;
    std::unique_ptr<TovelModel> m_model;
    std::uint64_t m_step = 0;
};

// Does what a change has scheduled, and paints the whole view.
void show(QWidget &view)
{
    QCoreApplication::processEvents();
    view.repaint();
}

void redraw(benchmark::State &state)
{
    Crowd crowd;
    TovelView view(crowd.model());
    view.resize(ViewSize);
    view.show();
    while (!view.windowHandle()->isExposed())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    show(view);
    for (auto _ : state) {
        crowd.change();
        crowd.model().refresh();
        const auto start = std::chrono::steady_clock::now();
        show(view);
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
        state.SetIterationTime(time.count());
    }
}

void measureGrowth()
{
    const OpenWindows open(Windows, Windows);
    auto connection = x11::X11Session::open({});
    if (!connection)
        qFatal("there is no display");
    x11::X11Session &session = *connection;
    LinuxDesktop desktop(std::move(connection));
    const PlatformInstallation installation(desktop);
    TovelModel model(desktop);
    TovelView view(model);
    view.resize(ViewSize);
    view.show();

    const auto refresh = [&](int times) {
        for (int i = 0; i < times; ++i) {
            // An application goes from the flock or comes to it, so that there is something new.
            const RunningApp app = model.apps().at(i / 2 % model.apps().size());
            model.select(app, !model.selected().contains(app.id));
            session.invalidate();
            model.refresh();
            show(view);
        }
    };
    refresh(WarmUp);
    const double before = ownMebibytes(getpid());
    refresh(Refreshes);
    const double after = ownMebibytes(getpid());
    std::printf("\nOwn memory before %d refreshes %.2f MiB, after them %.2f MiB\n", Refreshes,
                before, after);
    printFigure("growth, MiB", after - before, 0.25);
}

class Remembering final : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run> &runs) override
    {
        for (const Run &run : runs) {
            if (run.run_type != Run::RT_Aggregate || run.aggregate_name == "median")
                m_milliseconds = run.GetAdjustedRealTime();
        }
        ConsoleReporter::ReportRuns(runs);
    }

    double milliseconds() const { return m_milliseconds; }

private:
    double m_milliseconds = 0;
};

} // namespace

int main(int argc, char *argv[])
{
    QApplication::setStyle(u"fusion"_s);
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RegisterBenchmark("redraw", redraw)
        ->Unit(benchmark::kMillisecond)
        ->UseManualTime()
        ->Repetitions(Repetitions)
        ->ReportAggregatesOnly();
    Remembering reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::printf("\n%d applications in the flock, %d desktops\n", Applications, Desktops);
    printFigure("redraw of everything, ms", reporter.milliseconds(), 16);
    measureGrowth();
    return 0;
}
