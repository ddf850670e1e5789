#include "platform/session/kwin/kwin_session.h"
#include "support/kwin_user.h"
#include "support/private_session.h"
#include "support/wayland_client.h"

#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QTest>

#include <algorithm>
#include <optional>

using namespace tovel;
using namespace Qt::StringLiterals;

namespace {

constexpr int Limit = 15000; // milliseconds within which a run ends, whatever becomes of KWin

// Takes every call and answers none.
struct Silence : QDBusVirtualObject
{
    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &, const QDBusConnection &) override { return true; }
};

} // namespace

// The command-line tool and the driver on KWin's Wayland session: on programs of several toolkits,
// on more windows than one message of KWin's can name, and where KWin refuses, hangs and goes.
class TestKWin : public QObject
{
    Q_OBJECT

private:
    std::optional<PrivateSession> m_session;
    std::optional<WaylandClient> m_client;
    std::optional<KWinUser> m_user;

    bool start(const SessionOptions &options = {})
    {
        m_session.emplace(Manager::KWin, options);
        if (!m_session->isReady())
            return false;
        m_session->adopt();
        meetKWin();
        return m_client->isConnected() && (m_user->isConnected() || !options.permitsAll);
    }
    void meetKWin()
    {
        m_client.emplace(qgetenv("WAYLAND_DISPLAY"));
        m_user.emplace(qgetenv("WAYLAND_DISPLAY"));
    }

    // To this session's own bus, or another: Qt keeps a process's session bus when that has gone.
    static QDBusConnection connectToBus(const QString &address
                                        = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"))
    {
        static int last = 0;
        return QDBusConnection::connectToBus(address, QString::number(++last));
    }
    static std::unique_ptr<kwin::KWinSession> openDriver(const QDBusConnection &bus)
    {
        return kwin::KWinSession::open(qgetenv("WAYLAND_DISPLAY"), bus);
    }

    Outcome tovelctl(const QStringList &arguments)
    {
        return m_session->run(QStringLiteral(TOVELCTL), arguments);
    }

    // Native windows of a flock of its own, on the first desktop.
    bool openFlock(int count)
    {
        const qsizetype before = m_user->windows().size();
        for (int i = 0; i < count; ++i)
            m_client->open({.application = u"Flock"_s});
        return eventually([&] { return m_user->windows().size() == before + count; })
            && tovelctl({u"flock"_s, u"add"_s, u"Flock"_s}).status == 0;
    }
    qsizetype countOn(int desktop)
    {
        const auto windows = m_user->windows();
        return std::ranges::count_if(windows, [&](std::uint32_t window) {
            return m_user->desktopsOf(window) == QList<int>{desktop};
        });
    }
    std::unique_ptr<QProcess> moveUnderWay()
    {
        auto process
            = m_session->launch(QStringLiteral(TOVELCTL), {u"move"_s, u"4"_s, u"--no-follow"_s},
                                m_session->environment());
        eventually([&] { return countOn(3) >= 2; });
        return process;
    }

private Q_SLOTS:
    void cleanup()
    {
        m_user.reset();
        m_client.reset();
        m_session.reset();
    }

    void gathersProgramsOfAllKinds()
    {
        QVERIFY(start({.xwayland = true}));
        m_session->start(u"zenity"_s, {u"--info"_s, u"--title=Gtk"_s});
        m_session->start(QStringLiteral(TOVEL_QT_PROGRAM), {u"Qt"_s});
        m_session->start(u"xterm"_s, {});
        const int minimized = m_client->open({.application = u"Flock"_s});
        m_client->open({.application = u"Flock"_s, .title = u"Question"_s, .isDialog = true});
        m_client->open({.application = u"Flock"_s, .isPanel = true});
        QVERIFY(eventually([&] { return m_user->windows().size() == 7; }));
        m_client->minimize(minimized);
        QVERIFY(
            eventually([&] { return tovelctl({u"apps"_s}).out.contains(u"tovel_qt_program"); }));
        for (const auto &name : {u"zenity"_s, u"tovel_qt_program"_s, u"xterm"_s, u"Flock"_s})
            QCOMPARE(tovelctl({u"flock"_s, u"add"_s, name}).err, QString());
        const Outcome moved = tovelctl({u"move"_s, u"3"_s});
        QCOMPARE(moved.err, QString());
        QCOMPARE(moved.status, 0);
        // All but the panel, which is on all desktops.
        QCOMPARE(countOn(2), 6);
        QVERIFY(tovelctl({u"status"_s}).out.contains(u"Desktop 3  shown"));
    }

    void gathersMoreWindowsThanKWinNamesAtOnce()
    {
        QVERIFY(start());
        QVERIFY(openFlock(120));
        const Outcome moved = tovelctl({u"move"_s, u"2"_s});
        QCOMPARE(moved.err, QString());
        QCOMPARE(moved.status, 0);
        QCOMPARE(countOn(1), 120);
    }

    void endsInTimeWhereKWinHangsOrGoes_data()
    {
        QTest::addColumn<bool>("gone");
        QTest::newRow("hangs") << false;
        QTest::newRow("goes") << true;
    }
    void endsInTimeWhereKWinHangsOrGoes()
    {
        QFETCH(bool, gone);
        QVERIFY(start());
        QVERIFY(openFlock(20));
        const auto move = moveUnderWay();
        QCOMPARE(move->state(), QProcess::Running);
        QElapsedTimer timer;
        timer.start();
        if (gone)
            m_session->killManager();
        else
            m_session->pauseServer(true);
        const Outcome outcome = outcomeOf(*move);
        QVERIFY2(timer.elapsed() < Limit, qPrintable(QString::number(timer.elapsed())));
        QCOMPARE(outcome.status, 1);
        timer.restart();
        QCOMPARE(tovelctl({u"move"_s, u"2"_s}).status, 3);
        QVERIFY2(timer.elapsed() < Limit, qPrintable(QString::number(timer.elapsed())));
    }

    void waitsOnceForAServiceThatIsSilent()
    {
        QVERIFY(start());
        const QString socket = qEnvironmentVariable("XDG_RUNTIME_DIR") + u"/other-bus"_s;
        m_session->start(u"dbus-daemon"_s,
                         {u"--session"_s, u"--nofork"_s, u"--address=unix:path="_s + socket});
        QVERIFY(eventually([&] { return QFile::exists(socket); }));
        Silence silence;
        QDBusConnection service = connectToBus(u"unix:path="_s + socket);
        service.registerVirtualObject(u"/"_s, &silence, QDBusConnection::SubPath);
        for (const auto &name :
             {u"org.kde.KWin"_s, u"org.kde.kglobalaccel"_s, u"org.kde.keyboard"_s})
            QVERIFY(service.registerService(name));
        const auto session = openDriver(connectToBus(u"unix:path="_s + socket));
        QVERIFY(session);
        QElapsedTimer timer;
        timer.start();
        for (std::uint32_t position = 30; position < 34; ++position) {
            QCOMPARE(session->grabKey({.position = position, .control = true}),
                     KeyGrab::Impossible);
        }
        QCOMPARE(session->name(), u"KWin"_s);
        QVERIFY2(timer.elapsed() < 2000, qPrintable(QString::number(timer.elapsed())));
    }

    void worksOnceADesktopFilePermitsIt()
    {
        QVERIFY(start({.permitsAll = false}));
        const Outcome refused = tovelctl({u"move"_s, u"2"_s});
        QCOMPARE(refused.status, 3);
        QVERIFY2(refused.err.contains(QStringLiteral(TOVELCTL)), qPrintable(refused.err));
        const auto session = openDriver(connectToBus());
        QVERIFY(session && session->hasManager() && !session->isControllable());
        for (const QString &program :
             {QStringLiteral(TOVELCTL), QCoreApplication::applicationFilePath()}) {
            m_session->write(
                u"data/applications/%1.desktop"_s.arg(QFileInfo(program).fileName()),
                u"[Desktop Entry]\nType=Application\nName=Tovel\nExec=%1\nNoDisplay=true\n"
                "X-KDE-Wayland-Interfaces=org_kde_plasma_window_management\n"_s.arg(program));
        }
        m_client->open({.application = u"Flock"_s});
        QVERIFY(eventually([&] {
            return tovelctl({u"flock"_s, u"add"_s, u"Flock"_s}).status == 0
                && tovelctl({u"move"_s, u"2"_s}).status == 0;
        }));
        QVERIFY(eventually([&] {
            session->invalidate();
            return session->isControllable();
        }));
        QCOMPARE(session->windows().size(), 1);
    }

    void comesBackWithKWin()
    {
        QVERIFY(start());
        m_client->open({.application = u"Flock"_s, .isDialog = true});
        QVERIFY(eventually([&] { return m_user->windows().size() == 2; }));
        const auto session = openDriver(connectToBus());
        QVERIFY(session && session->isControllable());
        int changes = 0;
        session->setShownWorkspaceHandler([&] { ++changes; });
        const auto outputs = session->outputs();
        const std::uint32_t window = session->windows().value(0).id;
        QCOMPARE(session->windows().size(), 2);
        // Of the older one KWin tells the parent later, or when it is asked again.
        QVERIFY(eventually(
            [&] { return session->windows()[0].transientFor == session->windows()[1].id; }));
        QCOMPARE(session->windows()[0].kind, WindowKind::Dialog);

        m_session->pauseServer(true);
        session->invalidate();
        QVERIFY(!session->isControllable());
        QVERIFY(session->windows().isEmpty() && session->outputs().isEmpty());
        QVERIFY(!session->moveWindow(window, outputs[0].workspaces[1].id));
        QCOMPARE(session->limits().size(), 1);
        // Nobody waits for it a second time.
        QElapsedTimer timer;
        timer.start();
        for (int i = 0; i < 10; ++i) {
            session->invalidate();
            QVERIFY(!session->hasManager());
        }
        QVERIFY(timer.elapsed() < 1000);
        m_session->pauseServer(false);
        QVERIFY(eventually([&] { return session->isControllable(); }));
        QCOMPARE(session->windows().value(0).id, window);

        m_session->killManager();
        QVERIFY(eventually([&] { return !session->hasManager(); }));
        QVERIFY(session->windows().isEmpty());
        m_session->startManager();
        QVERIFY(m_session->isReady());
        QVERIFY(eventually([&] { return session->isControllable(); }));
        QCOMPARE(session->outputs(), outputs);
        QCOMPARE(changes, 0);
        meetKWin();
        m_client->open({.application = u"Flock"_s});
        QVERIFY(eventually([&] { return session->windows().size() == 1; }));
        QVERIFY(session->windows()[0].id != window);
        m_user->showDesktop(1);
        QVERIFY(eventually([&] { return changes == 1; }));
        // Of the desktop that it shows instead of one that is removed, KWin says nothing.
        const auto ask = [this](const QString &method, const QStringList &arguments) {
            return m_session
                ->run(u"gdbus"_s,
                      QStringList{u"call"_s, u"--session"_s, u"--dest"_s, u"org.kde.KWin"_s,
                                  u"--object-path"_s, u"/VirtualDesktopManager"_s, u"--method"_s,
                                  method}
                          + arguments)
                .out;
        };
        const QString interface = u"org.kde.KWin.VirtualDesktopManager"_s;
        ask(interface + u".removeDesktop"_s, {outputs[0].workspaces[1].uuid});
        QVERIFY(eventually([&] { return session->outputs().value(0).workspaces.size() == 3; }));
        QVERIFY(eventually([&] {
            const QString shown
                = ask(u"org.freedesktop.DBus.Properties.Get"_s, {interface, u"current"_s});
            return std::ranges::any_of(
                session->outputs()[0].workspaces, [&](const SessionWorkspace &left) {
                    return left.id == session->outputs()[0].shown && shown.contains(left.uuid);
                });
        }));
    }
};

QTEST_GUILESS_MAIN(TestKWin)
#include "tst_kwin.moc"
