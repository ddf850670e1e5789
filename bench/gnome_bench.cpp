// Measures Tovel on a private GNOME Shell, side by side with what else asks the same Shell or shows
// a window there.
#include "figures.h"
#include "timing.h"

#include "model/tovel_model.h"
#include "platform/linux/linux_desktop.h"
#include "platform/session/gnome/gnome_session.h"
#include "support/gnome_user.h"
#include "support/private_session.h"
#include "support/wayland_client.h"

#include <QCoreApplication>
#include <QDBusMessage>

#include <optional>
#include <thread>

using namespace tovel;
using namespace Qt::StringLiterals;

namespace {

constexpr int Applications = 20;
constexpr int Windows = 50;
constexpr int MoreWindows = 100;
constexpr int Starts = 11;
constexpr int Gaps = 20;

// What a user would run to read the same.
const QString Listing
    = u"JSON.stringify(global.display.list_all_windows().map(w => ({id: w.get_stable_sequence(), "
      "title: w.get_title(), workspace: w.get_workspace()?.index(), class: w.get_wm_class(), "
      "pid: w.get_pid(), minimized: w.minimized, frame: w.get_frame_rect().x})))"_s;

class Bench
{
public:
    bool start()
    {
        for (int i = 0; i < Applications; ++i) {
            const QString name = u"Bench%1"_s.arg(i);
            m_session.install(name, name, name);
        }
        if (!m_session.isReady())
            return false;
        m_session.adopt();
        m_client.emplace(qgetenv("WAYLAND_DISPLAY"));
        return open(Windows);
    }

    bool open(int count)
    {
        for (int i = windows(); i < count; ++i)
            m_client->open({.application = u"Bench%1"_s.arg(i % Applications)});
        return eventually([&] { return windows() == count; });
    }

    void measureStatus()
    {
        const auto times
            = medians(Starts,
                      {whole(u"gdbus"_s,
                             {u"call"_s, u"--session"_s, u"-d"_s, u"org.gnome.Shell"_s, u"-o"_s,
                              u"/org/gnome/Shell"_s, u"-m"_s, u"org.gnome.Shell.Eval"_s, Listing}),
                       whole(QStringLiteral(TOVELCTL), {u"status"_s})});
        std::printf("  tovelctl status %.1f ms, gdbus call %.1f ms\n", times[1], times[0]);
        printFigure("tovelctl status / gdbus call that lists the windows", times[1] / times[0],
                    1.5);
    }

    void measureFirstFrame()
    {
        const auto shown = [this](const QString &program, const QStringList &arguments) {
            return [=, this] { return untilShown(program, arguments); };
        };
        const auto times = medians(
            Starts,
            {shown(QStringLiteral(BARE_WINDOW), {u"Tovel"_s}), shown(QStringLiteral(TOVEL), {})});
        std::printf("  window with a text %.1f ms, tovel %.1f ms\n", times[0], times[1]);
        printFigure("first frame of tovel / window with a text", times[1] / times[0], 1.5);
    }

    void measureReading()
    {
        auto driver = gnome::GnomeSession::open(m_user.bus());
        DesktopSession &session = *driver;
        LinuxDesktop desktop(std::move(driver));
        const PlatformInstallation installation(desktop);
        TovelModel model(desktop);
        model.selectAll(model.apps(), true);
        if (model.traveling().size() != Windows)
            qFatal("the flock has not all of the windows");
        const auto refresh = [&] {
            session.invalidate();
            model.refresh();
        };
        // A key that nobody took: nothing is done.
        auto empty = QDBusMessage::createMethodCall(u"org.tovel.Shell1"_s, u"/org/tovel/Shell1"_s,
                                                    u"org.tovel.Shell1"_s, u"ReleaseKey"_s);
        empty.setArguments({20U, 4U});
        const auto times
            = medians(300,
                      {[&] { return millisecondsOf([&] { (void)m_user.bus().call(empty); }); },
                       [&] { return millisecondsOf(refresh); }});
        std::printf("  warm refresh %.4f ms, empty call %.4f ms\n", times[1], times[0]);
        printFigure("one warm refresh / one empty call to the Shell", times[1] / times[0], 3);

        const Desktop target = model.desktops().at(1);
        const double moved = millisecondsOf([&] {
            bool ended = false;
            auto task = model.migrate(target, false).then([&] { ended = true; });
            while (!ended)
                QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        });
        if (model.flockDesktopID() != target.id)
            qFatal("not every window has moved");
        printFigure("50 windows moved / 50 x 0.06 s", moved / (Windows * 60), 1.05);

        if (!open(MoreWindows))
            qFatal("the windows do not come");
        m_user.evaluate(
            u"(globalThis.gap = {longest: 0, last: GLib.get_monotonic_time()}, "
            "GLib.timeout_add(GLib.PRIORITY_HIGH, 1, () => { const now = GLib.get_monotonic_time();"
            " gap.longest = Math.max(gap.longest, now - gap.last); gap.last = now; return true; }))"_s);
        const auto gapDuring = [&](const std::function<void()> &body) {
            return [&, body] {
                m_user.evaluate(u"(gap.last = GLib.get_monotonic_time(), gap.longest = 0)"_s);
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
                body();
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
                return m_user.evaluate(u"gap.longest"_s).toDouble() / 1000;
            };
        };
        const auto gaps = medians(Gaps, {gapDuring([] {}), gapDuring(refresh)});
        std::printf("  the Shell's longest gap without Tovel %.1f ms\n", gaps[0]);
        printFigure("the Shell's longest gap with a refresh of 100 windows, ms", gaps[1], 10);
    }

private:
    int windows() const { return m_user.evaluate(u"listed.length"_s).toInt(); }

    std::function<double()> whole(const QString &program, const QStringList &arguments)
    {
        return [=, this] {
            return millisecondsOf([&] {
                if (m_session.run(program, arguments).status != 0)
                    qFatal("%s failed", qPrintable(program));
            });
        };
    }

    double untilShown(const QString &program, const QStringList &arguments)
    {
        const int others = windows();
        std::unique_ptr<QProcess> process;
        const double taken = millisecondsOf([&] {
            process = m_session.launch(program, arguments, m_session.environment());
            while (windows() == others)
                std::this_thread::sleep_for(std::chrono::microseconds(200));
        });
        process->terminate();
        outcomeOf(*process);
        if (!eventually([&] { return windows() == others; }))
            qFatal("the window of %s does not go away", qPrintable(program));
        return taken;
    }

    PrivateSession m_session{Manager::Gnome, {.evaluates = true}};
    GnomeUser m_user;
    std::optional<WaylandClient> m_client;
};

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    Bench bench;
    if (!bench.start())
        qFatal("there is no GNOME Shell");
    std::printf("\nGNOME Shell with %d windows of %d applications\n", Windows, Applications);
    bench.measureStatus();
    bench.measureFirstFrame();
    bench.measureReading();
    return 0;
}
