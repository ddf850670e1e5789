// Measures Tovel on a private KWin, side by side with what else reads the same session or shows a
// window there. KWin asks for a desktop file of each program, as it does for every user.
#include "figures.h"
#include "timing.h"

#include "model/tovel_model.h"
#include "platform/linux/linux_desktop.h"
#include "platform/session/kwin/kwin_session.h"
#include "support/kwin_user.h"
#include "support/private_session.h"
#include "support/wayland_client.h"

#include <QCoreApplication>
#include <QDBusConnection>

#include <functional>
#include <optional>
#include <thread>

using namespace tovel;
using namespace Qt::StringLiterals;

namespace {

constexpr int Applications = 20;
constexpr int Windows = 100;
constexpr int FlockApplications = 10; // of half of the windows
constexpr int Starts = 11;

// What a user would run: a script of KWin's, loaded, run and unloaded.
void writeScript(const PrivateSession &session)
{
    session.write(u"home/list.js"_s,
                  u"workspace.clientList().forEach(function (window) {"
                  "print(window.caption, window.resourceClass, window.desktop); });\n"_s);
    session.write(u"home/list.sh"_s,
                  u"call() { gdbus call --session -d org.kde.KWin -o /Scripting"
                  " -m org.kde.kwin.Scripting.$1 \"${@:2}\"; }\n"
                  "call loadScript ~/list.js list && call start && call unloadScript list\n"_s);
}

class Bench
{
public:
    bool start()
    {
        for (const auto &program : {QCoreApplication::applicationFilePath(), QStringLiteral(TOVEL),
                                    QStringLiteral(TOVELCTL)}) {
            m_session.write(u"data/applications/%1.desktop"_s.arg(program.section(u'/', -1)),
                            u"[Desktop Entry]\nType=Application\nName=Tovel\nExec=%1\n"
                            "X-KDE-Wayland-Interfaces=org_kde_plasma_window_management,"
                            "org_kde_kwin_fake_input\n"_s.arg(program));
        }
        for (int i = 0; i < Applications; ++i) {
            const QString name = u"Bench%1"_s.arg(i);
            m_session.install(name, name, name);
        }
        if (!m_session.isReady())
            return false;
        m_session.adopt();
        const QByteArray socket = qgetenv("WAYLAND_DISPLAY");
        m_client.emplace(socket);
        return eventually([&] {
                   m_user.emplace(socket);
                   return m_user->isConnected();
               })
            && open();
    }

    void measureReading()
    {
        auto driver
            = kwin::KWinSession::open(qgetenv("WAYLAND_DISPLAY"), QDBusConnection::sessionBus());
        DesktopSession &session = *driver;
        LinuxDesktop desktop(std::move(driver));
        const PlatformInstallation installation(desktop);
        TovelModel model(desktop);
        const auto apps = model.apps();
        for (const RunningApp &app : apps)
            model.select(app, app.id.mid(5).toInt() < FlockApplications);
        if (model.traveling().size() != Windows / 2)
            qFatal("the flock has not half of the windows");

        const auto times = medians(500,
                                   {[&] { return millisecondsOf([&] { m_user->windows(); }); },
                                    [&] {
                                        return millisecondsOf([&] {
                                            session.invalidate();
                                            model.refresh();
                                        });
                                    }});
        std::printf("  warm refresh %.4f ms, bare sync %.4f ms\n", times[1], times[0]);
        printFigure("one warm refresh / one bare sync", times[1] / times[0], 20);

        std::size_t next = 1;
        const auto move = [&] {
            const Desktop target = model.desktops().at(static_cast<qsizetype>(next));
            next = next % 3 + 1;
            const double taken = millisecondsOf([&] {
                bool ended = false;
                auto task = model.migrate(target, false).then([&] { ended = true; });
                while (!ended)
                    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
            });
            if (model.flockDesktopID() != target.id)
                qFatal("not every window has moved");
            return taken;
        };
        printFigure("50 windows moved / 50 x 0.06 s", medians(3, {move})[0] / 3000, 1.05);
    }

    void measureStatus()
    {
        writeScript(m_session);
        const auto status = whole(QStringLiteral(TOVELCTL), {u"status"_s});
        const auto times = medians(
            Starts, {whole(u"bash"_s, {qEnvironmentVariable("HOME") + u"/list.sh"_s}), status});
        const auto running
            = m_session.launch(QStringLiteral(TOVEL), {u"--hidden"_s}, m_session.environment());
        m_session.run(u"gdbus"_s, {u"wait"_s, u"--session"_s, u"org.tovel.Tovel"_s});
        const double asked = medians(Starts, {status})[0];
        end(*running);
        std::printf("  tovelctl status %.1f ms, %.1f ms while Tovel runs, script %.1f ms\n",
                    times[1], asked, times[0]);
        printFigure("tovelctl status / a script that lists the windows", times[1] / times[0], 1);
        printFigure("the same while Tovel runs", asked / times[0], 1);
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

private:
    bool open()
    {
        for (int i = 0; i < Windows; ++i)
            m_client->open({.application = u"Bench%1"_s.arg(i % Applications)});
        return eventually([&] { return m_user->windows().size() == Windows; });
    }

    std::function<double()> whole(const QString &program, const QStringList &arguments)
    {
        return [=, this] {
            return millisecondsOf([&] {
                if (m_session.run(program, arguments).status != 0)
                    qFatal("%s failed", qPrintable(program));
            });
        };
    }

    static void end(QProcess &process)
    {
        process.terminate();
        outcomeOf(process);
    }

    // KWin gives a window its place with its first picture.
    double untilShown(const QString &program, const QStringList &arguments)
    {
        const auto others = m_user->windows().size();
        std::unique_ptr<QProcess> process;
        const double taken = millisecondsOf([&] {
            process = m_session.launch(program, arguments, m_session.environment());
            while (m_user->windows().size() == others
                   || m_user->window(m_user->windows().last()).frame.isEmpty())
                std::this_thread::sleep_for(std::chrono::microseconds(200));
        });
        end(*process);
        if (!eventually([&] { return m_user->windows().size() == others; }))
            qFatal("the window of %s does not go away", qPrintable(program));
        return taken;
    }

    PrivateSession m_session{Manager::KWin, {.permitsAll = false}};
    std::optional<WaylandClient> m_client;
    std::optional<KWinUser> m_user;
};

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    Bench bench;
    if (!bench.start())
        qFatal("there is no KWin");
    std::printf("\nKWin with %d windows of %d applications\n", Windows, Applications);
    bench.measureStatus();
    bench.measureFirstFrame();
    bench.measureReading();
    return 0;
}
