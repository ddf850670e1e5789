#include "platform/session/gnome/gnome_session.h"
#include "support/gnome_user.h"
#include "support/private_session.h"
#include "support/test.h"
#include "support/wayland_client.h"

#include <QAbstractEventDispatcher>
#include <QElapsedTimer>

#include <algorithm>

namespace {

constexpr int Limit = 15000; // milliseconds within which a run ends, whatever becomes of the Shell

const QString Extension = u"tovel@tovel.org"_s;

} // namespace

// The command-line tool and the driver on GNOME Shell's Wayland session: on programs of several
// toolkits, where desktops come and go and monitors have none, where the extension is refused or
// missing, and where it or the Shell goes.
class TestGnome : public QObject
{
    Q_OBJECT

private:
    std::optional<PrivateSession> m_session;
    std::optional<WaylandClient> m_client;
    std::optional<GnomeUser> m_user;

    bool start(const SessionOptions &options)
    {
        m_session.emplace(Manager::Gnome, options);
        return meetShell();
    }
    bool meetShell()
    {
        if (!m_session->isReady())
            return false;
        m_session->adopt();
        m_client.emplace(qgetenv("WAYLAND_DISPLAY"));
        m_user.emplace();
        return m_client->isConnected();
    }
    bool restart(const std::function<void(const QString &folder)> &between)
    {
        m_session->killManager();
        between(qEnvironmentVariable("XDG_DATA_HOME") + u"/gnome-shell/extensions/"_s + Extension);
        m_session->startManager();
        return meetShell();
    }

    Outcome tovelctl(const QStringList &arguments)
    {
        return m_session->run(QStringLiteral(TOVELCTL), arguments);
    }
    Outcome ask(const QString &destination, const QString &path, const QStringList &call)
    {
        return m_session->run(
            u"gdbus"_s,
            QStringList{u"call"_s, u"--session"_s, u"-d"_s, destination, u"-o"_s, path, u"-m"_s}
                + call);
    }
    bool enable(bool on)
    {
        const QString method
            = u"org.gnome.Shell.Extensions.%1Extension"_s.arg(on ? u"Enable"_s : u"Disable"_s);
        return ask(u"org.gnome.Shell"_s, u"/org/gnome/Shell"_s, {method, Extension}).status == 0;
    }

    // Native windows of a flock of its own.
    bool openFlock(int count)
    {
        const int before = m_user->evaluate(u"listed.length"_s).toInt();
        for (int i = 0; i < count; ++i)
            m_client->open({.application = u"Flock"_s});
        return m_user->holds(u"listed.length === %1"_s.arg(before + count))
            && tovelctl({u"flock"_s, u"add"_s, u"Flock"_s}).status == 0;
    }
    QString countOn(int desktop, int count)
    {
        return u"listed.filter(w => !w.is_on_all_workspaces() && w.get_workspace().index() === %1)"
               ".length >= %2"_s.arg(desktop)
                   .arg(count);
    }
    bool ends(const Outcome &outcome, QElapsedTimer &timer, int status)
    {
        if (outcome.status != status || timer.elapsed() > Limit)
            qWarning("%d after %lld ms: %s%s", outcome.status, timer.elapsed(),
                     qPrintable(outcome.out), qPrintable(outcome.err));
        return outcome.status == status && timer.restart() <= Limit;
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
        QVERIFY(start({.evaluates = true}));
        m_session->start(u"zenity"_s, {u"--info"_s, u"--title=Gtk"_s});
        m_session->start(QStringLiteral(TOVEL_QT_PROGRAM), {u"Qt"_s});
        // Without systemd a newer Shell has no X server for others.
        const bool hasX11 = m_session->run(u"xdpyinfo"_s, {}).status == 0;
        if (hasX11)
            m_session->start(u"xterm"_s, {});
        const int minimized = m_client->open({.application = u"Flock"_s});
        m_client->open({.application = u"Flock"_s, .title = u"Question"_s, .isDialog = true});
        QVERIFY(m_user->holds(u"listed.length === %1"_s.arg(hasX11 ? 6 : 5)));
        QVERIFY(openFlock(hasX11 ? 94 : 95));
        m_client->minimize(minimized);
        QVERIFY(
            eventually([&] { return tovelctl({u"apps"_s}).out.contains(u"tovel_qt_program"); }));
        QStringList names{u"zenity"_s, u"tovel_qt_program"_s};
        if (hasX11)
            names.append(u"xterm"_s);
        for (const QString &name : names)
            QCOMPARE(tovelctl({u"flock"_s, u"add"_s, name}).err, QString());
        const Outcome moved = tovelctl({u"move"_s, u"3"_s});
        QCOMPARE(moved.err, QString());
        QCOMPARE(moved.status, 0);
        QVERIFY(m_user->evaluate(countOn(2, 100)).toBool());
        const Outcome status = tovelctl({u"status"_s});
        QVERIFY(status.out.contains(u"Desktop 3  shown"));
        QVERIFY(status.out.contains(u"GNOME Shell "));
        // The panel tells the same, and what is no program of Tovel is told nothing.
        m_session->start(QStringLiteral(TOVEL), {u"--hidden"_s});
        QCOMPARE(m_session
                     ->run(u"gdbus"_s,
                           {u"wait"_s, u"--session"_s, u"--timeout=20"_s, u"org.tovel.Tovel"_s})
                     .status,
                 0);
        QCOMPARE(tovelctl({u"status"_s}).out, status.out);
        const QString name = u"org.tovel.Shell1"_s;
        QVERIFY(ask(name, u"/org/tovel/Shell1"_s, {name + u".Snapshot"_s, u"0"_s})
                    .err.contains(u"AccessDenied"));

        m_user->evaluate(u"Main.sessionMode.pushMode('unlock-dialog')"_s);
        QVERIFY(eventually([&] { return tovelctl({u"move"_s, u"2"_s}).status == 3; }));
        m_user->evaluate(u"Main.sessionMode.popMode('unlock-dialog')"_s);
        QVERIFY(eventually([&] { return tovelctl({u"status"_s}).out == status.out; }));
    }

    void endsInTimeWhereTheShellFails_data()
    {
        QTest::addColumn<QString>("failure");
        for (const auto *failure : {"hangs", "goes", "disables the extension"})
            QTest::newRow(failure) << QString::fromLatin1(failure);
    }
    void endsInTimeWhereTheShellFails()
    {
        QFETCH(QString, failure);
        QVERIFY(start({.evaluates = true}));
        QVERIFY(openFlock(20));
        const auto move
            = m_session->launch(QStringLiteral(TOVELCTL), {u"move"_s, u"4"_s, u"--no-follow"_s},
                                m_session->environment());
        QVERIFY(m_user->holds(countOn(3, 2)) && move->state() == QProcess::Running);
        QElapsedTimer timer;
        timer.start();
        if (failure == u"hangs")
            m_session->pauseServer(true);
        else if (failure == u"goes")
            m_session->killManager();
        else
            QVERIFY(enable(false));
        QVERIFY(ends(outcomeOf(*move), timer, 1));
        QVERIFY(ends(tovelctl({u"move"_s, u"2"_s}), timer, 3));
    }

    void comesBackWithTheShell()
    {
        QVERIFY(start({.evaluates = true}));
        QVERIFY(openFlock(1));
        m_user->evaluate(u"listed[0].change_workspace_by_index(1, false)"_s);
        const auto session = gnome::GnomeSession::open(m_user->bus());
        QVERIFY(session && session->isControllable());
        int changes = 0;
        session->setShownWorkspaceHandler([&] { ++changes; });
        const auto outputs = session->outputs();
        const std::uint32_t window = session->windows().value(0).id;
        QCOMPARE(outputs.value(0).workspaces.size(), 4);

        m_session->pauseServer(true);
        session->invalidate();
        QVERIFY(!session->isControllable());
        QVERIFY(session->windows().isEmpty() && session->outputs().isEmpty());
        QVERIFY(!session->moveWindow(window, outputs[0].workspaces[1].id));
        QCOMPARE(session->limits(), QStringList{u"GNOME Shell does not answer."_s});
        // Nobody waits for it a second time.
        QElapsedTimer timer;
        timer.start();
        for (int i = 0; i < 10; ++i) {
            session->invalidate();
            QVERIFY(session->windows().isEmpty());
        }
        QVERIFY(timer.elapsed() < 500);
        m_session->pauseServer(false);
        QVERIFY(eventually([&] { return session->isControllable(); }));
        QCOMPARE(session->windows().value(0).id, window);

        QVERIFY(enable(false));
        QVERIFY(eventually([&] { return !session->isControllable(); }));
        QVERIFY(session->hasManager());
        const SessionKey key{.position = 30, .control = true};
        QCOMPARE(session->grabKey(key), KeyGrab::Impossible);
        QVERIFY(eventually([] {
            return !QAbstractEventDispatcher::instance()->processEvents(QEventLoop::AllEvents);
        }));
        // Whoever has its name on the bus.
        QVERIFY(m_user->bus().registerService(u"org.tovel.Shell1"_s));
        QVERIFY(enable(true));
        QVERIFY(eventually([&] { return session->isControllable(); }));
        QCOMPARE(session->grabKey(key), KeyGrab::Granted);
        QCOMPARE(session->outputs(), outputs);
        QVERIFY(m_user->bus().unregisterService(u"org.tovel.Shell1"_s));

        QVERIFY(restart(
            [&](const QString &) { QVERIFY(eventually([&] { return !session->hasManager(); })); }));
        QVERIFY(eventually([&] { return session->isControllable(); }));
        QCOMPARE(session->outputs(), outputs);
        QCOMPARE(changes, 0);
        m_user->evaluate(u"row[1].activate(0)"_s);
        QVERIFY(eventually([&] { return changes == 1; }));
    }

    void isAllowedWhereThatIsAllThatItTakes()
    {
        QVERIFY(start({.permitsAll = false}));
        const auto tells = [this](const QString &text, const QString &command = u"access"_s) {
            const Outcome outcome = tovelctl({command});
            const bool told = outcome.status == 3 && (outcome.err + outcome.out).contains(text);
            if (!told)
                qWarning("%d %s", outcome.status, qPrintable(outcome.out + outcome.err));
            return told;
        };
        QVERIFY(tells(u"“tovelctl access”"_s, u"status"_s));
        const QString allowed = u"UserExtensionsEnabled"_s;
        const auto allowExtensions = [&](const QString &on) {
            const QString extensions = u"org.gnome.Shell.Extensions"_s;
            return ask(u"org.gnome.Shell"_s, u"/org/gnome/Shell"_s,
                       {u"org.freedesktop.DBus.Properties.Set"_s, extensions, allowed,
                        u"<%1>"_s.arg(on)})
                       .status
                == 0;
        };
        QVERIFY(allowExtensions(u"false"_s) && tells(u"switched off as a whole"_s));
        QVERIFY(allowExtensions(u"true"_s));
        QCOMPARE(tovelctl({u"access"_s}).status, 0);
        QCOMPARE(tovelctl({u"status"_s}).status, 0);

        QString target;
        const auto link = [&target](const QString &folder) { return QFile::link(target, folder); };
        QString installed;
        QVERIFY(restart([&](const QString &folder) {
            installed = folder;
            target = QFile::symLinkTarget(folder);
            QVERIFY(QFile::remove(folder));
        }));
        QVERIFY(tells(u"not installed"_s));
        QVERIFY(link(installed) && tells(u"log out and in"_s));
        const auto spoil = [&](const QString &file, const QByteArray &from, const QByteArray &to) {
            return restart([&](const QString &folder) {
                QDir(folder).removeRecursively();
                QDir().mkpath(folder);
                for (const QString &name : QDir(target).entryList(QDir::Files)) {
                    QFile source(target + u'/' + name);
                    QFile copy(folder + u'/' + name);
                    QVERIFY(source.open(QIODevice::ReadOnly) && copy.open(QIODevice::WriteOnly));
                    const QByteArray bytes = source.readAll();
                    copy.write(name == file ? QByteArray(bytes).replace(from, to) : bytes);
                }
            });
        };
        QFile::remove(installed);
        QVERIFY(spoil(u"metadata.json"_s, "\"shell-version\": [",
                      "\"shell-version\": [\"3.0\"], \"x\": ["));
        QVERIFY(tells(u"not made for this version"_s));
        QVERIFY(spoil(u"service.js"_s, "const version = 1", "const version = 2"));
        QVERIFY(tells(u"version 2, not 1"_s));
        QVERIFY(spoil(u"service.js"_s, "class", "klass") && tells(u"failed in GNOME Shell"_s));
    }

    void followsDesktopsThatComeAndGo()
    {
        QVERIFY(start({.desktops = 0, .evaluates = true}));
        QVERIFY(openFlock(2) && m_user->holds(u"row.length === 2"_s));
        const auto session = gnome::GnomeSession::open(m_user->bus());
        session->setShownWorkspaceHandler([] {});
        const auto row = [&] { return session->outputs().value(0).workspaces; };
        const auto before = row();
        QCOMPARE(before.size(), 2);
        // The last one is empty, and has no successor until somebody is there.
        QVERIFY(session->moveWindow(session->windows()[0].id, before[1].id));
        QVERIFY(eventually([&] { return row().size() == 3; }));
        const auto three = row();
        QCOMPARE(three.first(2), before);
        QCOMPARE(session->windows()[0].workspaces, QList<std::uint64_t>{before[1].id});
        // The first one goes: the others keep their ids in other places.
        QVERIFY(session->showWorkspace(before[1].id));
        QVERIFY(session->moveWindow(session->windows()[1].id, before[1].id));
        const auto isSame = [&](const QList<SessionWorkspace> &others) {
            return std::ranges::equal(row(), others, {}, &SessionWorkspace::id,
                                      &SessionWorkspace::id);
        };
        QVERIFY(eventually([&] { return isSame(three.sliced(1)); }));
        QVERIFY(!session->moveWindow(session->windows()[0].id, before[0].id));
        QVERIFY(!session->showWorkspace(before[0].id));
        const Outcome moved = tovelctl({u"move"_s, u"2"_s});
        QCOMPARE(moved.err, QString());
        QVERIFY(m_user->holds(countOn(0, 2)));
        const Outcome gone = tovelctl({u"move"_s, u"3"_s});
        QVERIFY2(gone.status == 3, qPrintable(gone.out + gone.err));
    }

    void leavesWhatIsOnAMonitorWithoutDesktops()
    {
        QVERIFY(start({.monitors = 2, .fixedScreens = true, .evaluates = true}));
        QVERIFY(openFlock(2));
        m_user->evaluate(u"listed[1].move_to_monitor(1 - listed[1].get_monitor())"_s);
        QVERIFY(m_user->holds(u"listed.some(w => w.is_on_all_workspaces())"_s));
        const Outcome status = tovelctl({u"status"_s});
        QVERIFY2(status.out.contains(u"on all desktops"), qPrintable(status.out));
        QVERIFY(status.out.contains(u"Meta-0"));
        QCOMPARE(tovelctl({u"move"_s, u"2"_s}).status, 0);
        QVERIFY(m_user->evaluate(countOn(1, 1)).toBool());
    }
};

QTEST_GUILESS_MAIN(TestGnome)
#include "tst_gnome.moc"
