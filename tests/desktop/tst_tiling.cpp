#include "platform/session/i3/frames.h"
#include "platform/session/i3/i3_session.h"
#include "platform/session/i3/ipc_connection.h"
#include "platform/session/x11/x11_session.h"
#include "support/test_client.h"
#include "support/tiling_user.h"
#include "support/virtual_keyboard.h"
#include "support/wayland_client.h"

#include <QElapsedTimer>
#include <QTest>

#include <algorithm>
#include <optional>
#include <thread>

#include <linux/input-event-codes.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using namespace tovel;
using namespace Qt::StringLiterals;

namespace {

constexpr int Limit = 15000; // milliseconds within which a run ends, whatever becomes of sway or i3

} // namespace

// The command-line tool and the driver on sway and on i3, with workspaces that come and go on two
// outputs, and where either hangs, goes, and comes back.
class TestTiling : public QObject
{
    Q_OBJECT

private:
    bool start(const SessionOptions &options = {})
    {
        m_session.emplace(managerFromEnvironment(), options);
        if (!m_session->isReady())
            return false;
        m_session->adopt();
        m_session->install(u"flock"_s, u"Flock"_s, u"Flock"_s);
        m_user.emplace(*m_session);
        m_x11.emplace(m_session->display());
        if (isSway())
            m_native.emplace(qgetenv("WAYLAND_DISPLAY"));
        return m_x11->isConnected() && (!m_native || m_native->isConnected());
    }
    static bool isSway() { return managerFromEnvironment() == Manager::Sway; }

    Outcome tovelctl(const QStringList &arguments) const
    {
        return m_session->run(QStringLiteral(TOVELCTL), arguments);
    }

    // A window of the flock, of a Wayland program where there are any.
    QJsonObject open(const QString &title, const QString &workspace, const QString &then = {})
    {
        if (!m_native)
            return openX11(u"Flock"_s, title, workspace, then);
        m_native->open({.application = u"Flock"_s, .title = title});
        return place(title, workspace, then);
    }
    QJsonObject openX11(const QString &application, const QString &title, const QString &workspace,
                        const QString &then = {})
    {
        const std::uint32_t window = m_x11->open({.application = application, .title = title});
        eventually([&] {
            m_x11->redraw(window);
            return !m_user->windowTitled(title).isEmpty();
        });
        return place(title, workspace, then);
    }
    QJsonObject place(const QString &title, const QString &workspace, const QString &then = {})
    {
        if (!eventually([&] { return !m_user->windowTitled(title).isEmpty(); }))
            return {};
        const QString it = u"[title=\"^%1$\"] "_s.arg(title);
        m_user->command(it + u"move --no-auto-back-and-forth container to workspace "_s
                        + workspace);
        if (!then.isEmpty())
            m_user->command(it + then);
        return m_user->windowTitled(title);
    }
    QString workspaceOf(const QString &title) const
    {
        return m_user->windowTitled(title)["workspace"_L1].toString();
    }
    bool openFlock(int count)
    {
        for (int i = 0; i < count; ++i) {
            if (m_native)
                m_native->open({.application = u"Flock"_s});
            else
                m_x11->open({.application = u"Flock"_s});
        }
        return eventually([&] { return m_user->windows().size() == count; }, 30000)
            && tovelctl({u"flock"_s, u"add"_s, u"flock"_s}).status == 0;
    }
    qsizetype countOn(const QString &workspace) const
    {
        const auto windows = m_user->windows();
        return std::ranges::count_if(windows, [&](const QJsonObject &window) {
            return window["workspace"_L1] == workspace;
        });
    }
    std::unique_ptr<DesktopSession> openDriver() const
    {
        if (isSway())
            return i3::I3Session::open(qgetenv("SWAYSOCK"));
        auto x11 = x11::X11Session::open(m_session->display());
        const QByteArray socket = x11->managerSocket();
        return i3::I3Session::open(socket, std::move(x11));
    }

    std::optional<PrivateSession> m_session;
    std::optional<TilingUser> m_user;
    std::optional<TestClient> m_x11;
    std::optional<WaylandClient> m_native;

private Q_SLOTS:
    void cleanup()
    {
        m_native.reset();
        m_x11.reset();
        m_user.reset();
        m_session.reset();
    }

    void gathersAFlockOverTwoOutputs()
    {
        QVERIFY(start());
        QVERIFY(!open(u"one"_s, u"2"_s, u"floating disable, layout tabbed"_s).isEmpty());
        QVERIFY(!open(u"two"_s, u"2"_s, u"floating disable"_s).isEmpty());
        QVERIFY(!open(u"three"_s, u"5"_s).isEmpty());
        QVERIFY(!openX11(u"Flock"_s, u"of X11"_s, u"'it is: me'"_s).isEmpty());
        QVERIFY(!openX11(u"Stranger"_s, u"stranger"_s, u"2"_s, u"floating disable"_s).isEmpty());
        QVERIFY(!open(u"put away"_s, u"1"_s, u"move scratchpad"_s).isEmpty());
        QVERIFY(!open(u"sticky"_s, u"1"_s, u"sticky enable"_s).isEmpty());
        QVERIFY(!open(u"full"_s, u"3"_s, u"fullscreen enable"_s).isEmpty());

        QCOMPARE(tovelctl({u"flock"_s, u"add"_s, u"flock"_s}).err, QString());
        const QString status = tovelctl({u"status"_s}).out;
        QVERIFY2(status.contains(u"Session:           "_s + (isSway() ? u"sway 1."_s : u"i3 4."_s)),
                 qPrintable(status));
        for (const auto &line : {u"it is: me"_s, u"scratchpad"_s, u"Flock  flock  running\n"_s})
            QVERIFY2(status.contains(line), qPrintable(status));

        // It has no windows, but the configuration puts it on the second output.
        const Outcome moved = tovelctl({u"move"_s, u"6: FAR"_s, u"--no-follow"_s});
        QVERIFY2(moved.status == 0, qPrintable(moved.out + moved.err));
        for (const auto &title : {u"one"_s, u"two"_s, u"three"_s, u"of X11"_s})
            QCOMPARE(workspaceOf(title), u"6: far"_s);
        QCOMPARE(workspaceOf(u"stranger"_s), u"2"_s);
        QCOMPARE(workspaceOf(u"put away"_s), u"__i3_scratch"_s);
        QCOMPARE(workspaceOf(u"sticky"_s), u"1"_s);
        QCOMPARE(workspaceOf(u"full"_s), u"3"_s);
        QVERIFY(!tovelctl({u"status"_s}).out.contains(u"it is: me"_s));
        QCOMPARE(tovelctl({u"move"_s, u"it is: me"_s}).status, 3);
    }

    void movesToADesktopOfItsOwn_data()
    {
        QTest::addColumn<bool>("asksRunning");
        QTest::newRow("alone") << false;
        QTest::newRow("by the running one") << true;
    }
    void movesToADesktopOfItsOwn()
    {
        QFETCH(const bool, asksRunning);
        QVERIFY(start({.bus = asksRunning}));
        // What cannot work alone.
        QProcessEnvironment asking;
        if (asksRunning) {
            m_session->start(QStringLiteral(TOVEL), {u"--hidden"_s});
            for (const auto &variable : {u"SWAYSOCK"_s, u"I3SOCK"_s, u"DISPLAY"_s})
                asking.insert(variable, QString());
            QVERIFY(eventually([&] {
                return m_session->run(QStringLiteral(TOVELCTL), {u"status"_s}, asking).status == 0;
            }));
        }
        const auto moveToNew = [&](const QStringList &name) {
            return m_session->run(QStringLiteral(TOVELCTL),
                                  QStringList{u"move"_s, u"--no-follow"_s, u"--new"_s} + name,
                                  asking);
        };
        QVERIFY(!open(u"one"_s, u"2"_s).isEmpty());
        QCOMPARE(moveToNew({u"web"_s}).status, 3);
        QCOMPARE(tovelctl({u"flock"_s, u"add"_s, u"flock"_s}).status, 0);
        for (const auto &[name, workspace] :
             {std::pair(u"web"_s, u"web"_s), std::pair(QString(), u"7"_s)}) {
            const Outcome moved = moveToNew(name.isEmpty() ? QStringList() : QStringList{name});
            QVERIFY2(moved.status == 0, qPrintable(moved.out + moved.err));
            QCOMPARE(workspaceOf(u"one"_s), workspace);
        }
        for (const auto &name :
             {u"7"_s, u"6: FAR"_s, u"Desktop 2"_s, isSway() ? u"next"_s : u"__x"_s}) {
            const Outcome refused = moveToNew({name});
            QCOMPARE(refused.status, 3);
            QVERIFY2(refused.err.contains(name, Qt::CaseInsensitive), qPrintable(refused.err));
        }
        QCOMPARE(workspaceOf(u"one"_s), u"7"_s);
    }

    void panelComesBackWhereItWas()
    {
        if (isSway())
            QSKIP("sway places every window itself");
        QVERIFY(start({.bus = true}));
        m_session->start(QStringLiteral(TOVEL), {});
        const auto place = [&] { return m_user->windowTitled(u"Tovel"_s)["rect"_L1].toObject(); };
        const auto isShown
            = [&](bool wanted) { return eventually([&] { return place().isEmpty() != wanted; }); };
        QVERIFY(isShown(true));
        QVERIFY(m_user->command(u"[title=^Tovel$] move position 100 px 40 px"_s));
        QVERIFY(eventually([&] { return place()["x"_L1] == 100; }));
        const QJsonObject before = place();
        const auto toggle = [&] {
            m_session->run(u"gdbus"_s,
                           {u"call"_s, u"--session"_s, u"--dest"_s, u"org.tovel.Tovel"_s,
                            u"--object-path"_s, u"/org/tovel/Tovel"_s, u"--method"_s,
                            u"org.freedesktop.Application.ActivateAction"_s, u"toggle"_s, u"[]"_s,
                            u"{}"_s});
        };
        toggle();
        QVERIFY(isShown(false));
        toggle();
        QVERIFY(isShown(true) && eventually([&] { return place() == before; }));
    }

    void newDesktopIsThereUntilItWasUsed()
    {
        QVERIFY(start());
        const auto session = openDriver();
        const auto place = [&](const QString &name) {
            session->invalidate();
            QString found;
            for (const SessionOutput &output : session->outputs()) {
                for (const SessionWorkspace &workspace : output.workspaces)
                    found += workspace.uuid == name ? QString::number(*output.screen) : QString();
            }
            return found;
        };
        // Where it will come up.
        for (const auto &[shown, name] :
             {std::pair(u"1"_s, u"near"_s), std::pair(u"5"_s, u"new"_s)}) {
            QVERIFY(m_user->command(u"workspace "_s + shown));
            session->invalidate();
            QVERIFY(session->makeWorkspace(name).id != 0);
            QCOMPARE(place(name), place(shown));
        }
        QVERIFY(session->makeWorkspace(u"New"_s).refusal.contains(u"“new”"_s));
        QVERIFY(m_user->command(u"reload"_s));
        QCOMPARE(place(u"new"_s), place(u"5"_s));
        QVERIFY(!open(u"one"_s, u"new"_s).isEmpty());
        QCOMPARE(place(u"new"_s), place(u"5"_s));
        QVERIFY(m_user->command(u"[title=one] move container to workspace 1"_s));
        QCOMPARE(place(u"new"_s), QString());
        QCOMPARE(place(u"near"_s), place(u"1"_s));
    }

    // Whose desktops have no numbers to rely on by X11 alone.
    void i3IsLeftAloneWithoutItsSocket()
    {
        if (isSway())
            QSKIP("sway is no window manager of X11");
        QVERIFY(start());
        QVERIFY(openFlock(1));
        QProcessEnvironment byX11;
        byX11.insert(u"TOVEL_DESKTOP"_s, u"x11"_s);
        for (const auto &arguments : {QStringList{u"status"_s}, {u"move"_s, u"1"_s}}) {
            const Outcome outcome = m_session->run(QStringLiteral(TOVELCTL), arguments, byX11);
            QCOMPARE(outcome.status, 3);
            QVERIFY2(outcome.err.contains(u"i3 gives its workspaces new numbers"_s),
                     qPrintable(outcome.err));
        }
    }

    void gathersManyWindows()
    {
        if (!isSway())
            QSKIP("i3 draws for each of them");
        QVERIFY(start());
        QVERIFY(openFlock(200));
        const auto move = m_session->launch(QStringLiteral(TOVELCTL), {u"move"_s, u"4"_s},
                                            m_session->environment());
        QVERIFY(eventually([&] { return move->state() == QProcess::NotRunning; }, 120000));
        const Outcome moved = outcomeOf(*move);
        QVERIFY2(moved.status == 0, qPrintable(moved.out + moved.err));
        QCOMPARE(countOn(u"4"_s), 200);
        QVERIFY(tovelctl({u"status"_s}).out.contains(u"Desktop 4  shown"_s));
    }

    void endsInTimeWhereItHangsOrGoes_data()
    {
        QTest::addColumn<bool>("gone");
        QTest::newRow("hangs") << false;
        QTest::newRow("goes") << true;
    }
    void endsInTimeWhereItHangsOrGoes()
    {
        QFETCH(const bool, gone);
        QVERIFY(start());
        QVERIFY(openFlock(100));
        const auto move
            = m_session->launch(QStringLiteral(TOVELCTL), {u"move"_s, u"4"_s, u"--no-follow"_s},
                                m_session->environment());
        QVERIFY(eventually([&] { return countOn(u"4"_s) >= 2; }));
        QCOMPARE(move->state(), QProcess::Running);
        QElapsedTimer timer;
        timer.start();
        if (gone)
            m_session->killManager();
        else
            m_session->pauseManager(true);
        const Outcome outcome = outcomeOf(*move);
        QVERIFY2(timer.elapsed() < Limit, qPrintable(QString::number(timer.elapsed())));
        QCOMPARE(outcome.status, 1);
        timer.restart();
        QCOMPARE(tovelctl({u"move"_s, u"2"_s}).status, 3);
        QVERIFY2(timer.elapsed() < Limit, qPrintable(QString::number(timer.elapsed())));
        m_session->pauseManager(false);
    }

    void comesBackWithIt()
    {
        QVERIFY(start());
        const auto session = openDriver();
        QVERIFY(session && session->isControllable());
        int changes = 0;
        session->setShownWorkspaceHandler([&] { ++changes; });
        const auto outputs = session->outputs();
        m_session->pauseManager(true);
        session->invalidate();
        QVERIFY(!session->isControllable());
        QVERIFY(session->outputs().isEmpty());
        QVERIFY(!session->showWorkspace(outputs[0].workspaces[1].id));
        QCOMPARE(session->limits().size(), 1);
        // Nobody waits for it a second time.
        QElapsedTimer timer;
        timer.start();
        for (int i = 0; i < 10; ++i) {
            session->invalidate();
            QVERIFY(!session->hasManager());
        }
        QVERIFY(timer.elapsed() < 600);
        m_session->pauseManager(false);
        QVERIFY(eventually([&] { return session->isControllable(); }));
        QCOMPARE(session->outputs(), outputs);

        m_session->killManager();
        QVERIFY(eventually([&] { return !session->hasManager(); }));
        m_session->startManager();
        QVERIFY(m_session->isReady());
        QVERIFY(eventually([&] { return session->outputs() == outputs; }));
        changes = 0;
        QVERIFY(session->showWorkspace(outputs[0].workspaces[1].id));
        QVERIFY(eventually([&] { return changes == 1; }));
    }

    void keysOutliveAReload()
    {
        if (!isSway())
            QSKIP("keys of i3 are those of its X server");
        QVERIFY(start());
        VirtualKeyboard keyboard(qgetenv("WAYLAND_DISPLAY"));
        QVERIFY(keyboard.isConnected());
        const auto session = openDriver();
        int presses = 0;
        session->setKeyHandler([&](const SessionKey &) { ++presses; });
        const SessionKey key{.position = KEY_T, .control = true, .super = true};
        QCOMPARE(session->grabKey(key), KeyGrab::Granted);
        const auto press = [&] {
            keyboard.setModifiers(4 | 64, 0);
            for (const bool isDown : {true, false})
                keyboard.holdKey(KEY_T, isDown);
            keyboard.setModifiers(0, 0);
        };
        press();
        QVERIFY(eventually([&] { return presses == 1; }));
        QVERIFY(m_user->command(u"reload"_s));
        QVERIFY(eventually([&] {
            press();
            QTest::qWait(50);
            return presses > 1;
        }));
        // What its user has bound is left alone, and counts; that it is taken cannot be told.
        session->releaseKey(key);
        const int before = presses;
        const auto shown = [&] { return session->outputs().value(0).shown; };
        const auto third = session->outputs()[0].workspaces[2].id;
        for (const auto &flags : {u""_s, u"--locked "_s, u"--locked --no-repeat "_s}) {
            const QString place = flags + u"Ctrl+Mod4+%1"_s.arg(KEY_T + 8);
            QVERIFY(m_user->command(u"bindcode "_s + place + u" workspace 3"_s));
            QCOMPARE(session->grabKey(key), KeyGrab::Granted);
            for (const bool isGrabbed : {true, false}) {
                QVERIFY(m_user->command(u"workspace 1"_s));
                QVERIFY(eventually([&] { return shown() != third; }));
                press();
                QVERIFY2(eventually([&] { return shown() == third; }), qPrintable(place));
                if (isGrabbed)
                    session->releaseKey(key);
            }
            QVERIFY(m_user->command(u"unbindcode "_s + place));
        }
        QCOMPARE(presses, before);
    }

    void asksNobodyWhoDoesNotAnswer_data()
    {
        QTest::addColumn<bool>("listens");
        QTest::addColumn<QByteArray>("noise");
        QTest::addColumn<bool>("hasEnd"); // or it goes on for ever
        QTest::addColumn<bool>("isAnothers");
        // As sway does at first.
        const QByteArray version = R"({"human_readable":"1.7","variant":"sway"})";
        const QByteArray greeting = i3::frameBytes(i3::MessageType::GetVersion, version)
            + i3::frameBytes(i3::MessageType::Subscribe, "{}").repeated(2)
            + i3::frameBytes(i3::MessageType::GetConfig, "{}");
        const QByteArray talk
            = i3::frameBytes(i3::MessageType::WorkspaceEvent, "{}").repeated(1 << 16);
        const QByteArray noTree = i3::frameBytes(i3::MessageType::GetTree, "[]");
        QTest::newRow("nobody there") << false << QByteArray() << true << false;
        QTest::newRow("one who is deaf") << true << QByteArray() << true << false;
        QTest::newRow("one who only talks") << true << talk << false << false;
        QTest::newRow("one who falls silent") << true << greeting << true << false;
        QTest::newRow("one who has no tree") << true << greeting + noTree << true << false;
        QTest::newRow("another user's") << true << greeting << true << true;
    }
    void asksNobodyWhoDoesNotAnswer()
    {
        QFETCH(const bool, listens);
        QFETCH(const QByteArray, noise);
        QFETCH(const bool, hasEnd);
        QFETCH(const bool, isAnothers);
        if (isAnothers && ::getuid() != 0)
            QSKIP("only root can be two users");
        const QTemporaryDir folder;
        const QByteArray path = QFile::encodeName(folder.filePath(u"socket"_s));
        const int server = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
        std::ranges::copy(path, address.sun_path);
        QCOMPARE(::bind(server, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
        if (listens)
            QCOMPARE(::listen(server, 1), 0);
        std::jthread talker([&] {
            const int peer = noise.isEmpty() ? -1 : ::accept(server, nullptr, nullptr);
            while (::send(peer, noise.data(), static_cast<std::size_t>(noise.size()), MSG_NOSIGNAL)
                       > 0
                   && !hasEnd) { }
            char heard = 0;
            while (::recv(peer, &heard, 1, 0) > 0) { }
            ::close(peer);
        });
        QElapsedTimer timer;
        timer.start();
        constexpr uid_t Nobody = 65534;
        for (const QByteArray &shared : {QFile::encodeName(folder.path()), path})
            QVERIFY(!isAnothers || ::chmod(shared.constData(), 0777) == 0);
        QVERIFY(!isAnothers || ::seteuid(Nobody) == 0);
        auto session = i3::I3Session::open(path);
        const bool isOpen = session != nullptr;
        const bool isUsed = isOpen && session->isControllable();
        session.reset();
        const i3::Listener listener = i3::listenerAt(path);
        QVERIFY(!isAnothers || ::seteuid(0) == 0);
        QVERIFY(!isUsed);
        QCOMPARE(isOpen, hasEnd && !noise.isEmpty() && !isAnothers);
        QCOMPARE(listener == i3::Listener::Anothers, isAnothers);
        QVERIFY2(timer.elapsed() < Limit, qPrintable(QString::number(timer.elapsed())));
        talker.join();
        ::close(server);
    }
};

QTEST_GUILESS_MAIN(TestTiling)
#include "tst_tiling.moc"
