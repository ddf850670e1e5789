#include "model/tovel_model.h"
#include "platform/linux/linux_desktop.h"
#include "platform/session/x11/x11_session.h"
#include "support/desktop_reading.h"
#include "support/private_session.h"
#include "support/test.h"
#include "support/test_client.h"

// The command-line tool on windows of real programs, read with other tools where they ended; and
// programs that are started from their entries.
class TestMoveRealPrograms : public QObject
{
    Q_OBJECT

private:
    Outcome tovelctl(const QStringList &arguments, const QProcessEnvironment &changes = {})
    {
        return m_session.run(QStringLiteral(TOVELCTL), arguments, changes);
    }

    QJsonObject json(const QStringList &arguments)
    {
        const QString out = tovelctl(arguments + QStringList{u"--json"_s}).out;
        return QJsonDocument::fromJson(out.toUtf8()).object();
    }

    // Waits until the manager has taken the window of the client on.
    std::uint32_t open(TestClient &client, const ClientWindow &window)
    {
        const std::uint32_t id = client.open(window);
        return eventually([&] { return m_client.isManaged(id); }) ? id : 0;
    }

    // Moves and makes sure that no window but those given has left its desktop.
    Outcome move(const QStringList &arguments, const QList<std::uint32_t> &flock)
    {
        const auto others = [&] {
            QMap<std::uint32_t, std::uint32_t> places;
            for (const ListedWindow &window : listedWindows(m_session)) {
                if (!flock.contains(window.id))
                    places.insert(window.id, window.desktop);
            }
            return places;
        };
        const auto before = others();
        const Outcome outcome = tovelctl(QStringList{u"move"_s} + arguments);
        if (others() != before)
            return {-1, {}, u"a window that is not of the flock moved"_s};
        return outcome;
    }

    bool areOn(std::uint32_t desktop, const QList<std::uint32_t> &windows)
    {
        return std::all_of(windows.cbegin(), windows.cend(), [&](std::uint32_t window) {
            return desktopOf(m_session, window) == desktop;
        });
    }

    bool show(std::uint32_t desktop)
    {
        m_client.showDesktop(desktop);
        return eventually([&] { return shownDesktop(m_session) == desktop; });
    }

    PrivateSession m_session{managerFromEnvironment(), {.tcp = true}};
    TestClient m_client{m_session.display()};

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_session.isReady());
        QVERIFY(openTerminal(m_session, u"Bystander"_s, u"bystander"_s));
    }

    // Nobody is in the flock to begin with.
    void init()
    {
        const QString choices = m_session.environment().value(u"XDG_CONFIG_HOME"_s);
        QDir(choices + u"/org.tovel.Tovel"_s).removeRecursively();
        QVERIFY(show(0));
    }

    void gathersProgramsOfEveryToolkit()
    {
        m_session.start(u"zenity"_s, {u"--info"_s, u"--text=Hello"_s, u"--title=Note"_s});
        m_session.start(QStringLiteral(TOVEL_QT_PROGRAM), {u"Qt window"_s});
        // Two applications in one process, and one whose process cannot be known.
        TestClient remote(m_session.tcpDisplay());
        const std::uint32_t parent = open(m_client, {.application = u"Parent"_s});
        QVERIFY(open(m_client, {.application = u"Neighbour"_s}));
        QList<std::uint32_t> flock{windowTitled(m_session, u"Note"_s),
                                   windowTitled(m_session, u"Qt window"_s),
                                   openTerminal(m_session, u"Herd"_s, u"one"_s),
                                   openTerminal(m_session, u"Herd"_s, u"two"_s),
                                   parent,
                                   open(m_client,
                                        {.application = u"Parent"_s,
                                         .type = "_NET_WM_WINDOW_TYPE_DIALOG",
                                         .transientFor = parent}),
                                   open(remote, {.application = u"Remote"_s})};
        QVERIFY(!flock.contains(0));
        m_client.askForDesktop(flock[3], 1);
        QVERIFY(eventually([&] { return areOn(1, {flock[3]}); }));

        QCOMPARE(tovelctl({u"flock"_s, u"add"_s, u"herd"_s, u"zenity"_s, u"tovel_qt_program"_s,
                           u"Parent"_s, u"Remote"_s})
                     .status,
                 0);
        QCOMPARE(tovelctl({u"rename"_s, u"3"_s, u"Deep work"_s}).status, 0);
        const QStringList deepWork{u"deep WORK"_s, u"--no-follow"_s};
        Outcome outcome = move(deepWork, flock);
        QVERIFY2(outcome.status == 0, qPrintable(outcome.err));
        QVERIFY2(outcome.out.contains(u" already there\n"), qPrintable(outcome.out));
        QCOMPARE(outcome.err, QString());
        QVERIFY(areOn(2, flock));
        QCOMPARE(shownDesktop(m_session), 0u);

        outcome = move(deepWork, {});
        QCOMPARE(outcome.status, 0);
        QVERIFY(outcome.out.contains(u"already"));
        QCOMPARE(json({u"status"_s})[u"flockDesktop"_s].toInt(), 3);

        QCOMPARE(tovelctl({u"flock"_s, u"remove"_s, u"zenity"_s}).status, 0);
        const std::uint32_t removed = flock.takeFirst();
        for (const std::uint32_t window : flock)
            m_client.minimize(window); // it is followed all the same
        QCOMPARE(move({u"2"_s}, flock).status, 0);
        QVERIFY(areOn(1, flock));
        QVERIFY(areOn(2, {removed}));
        QCOMPARE(shownDesktop(m_session), 1u);
    }

    void reopensApplications()
    {
        m_session.adopt();
        // The '-' of an identifier may stand for a folder.
        m_session.install(u"vendor/works"_s, u"Terminal"_s, u"Reopened"_s,
                          u"xterm -class Reopened"_s);
        m_session.install(u"org.example.broken"_s, u"Terminal"_s, u"Broken"_s,
                          u"no-such-program"_s);
        LinuxDesktop desktop(x11::X11Session::open({}));
        const PlatformInstallation installation(desktop);
        TovelModel model;
        for (const auto &[identifier, issue] :
             {std::pair(u"org.example.broken"_s, u"Couldn’t open Terminal: Failed to execute"_s),
              {u"vendor-works"_s, QString()}}) {
            const RunningApp app{.id = identifier, .name = u"Terminal"_s};
            model.select(app, true);
            const auto task = model.reopen(app);
            // Before it would be given up, after ten seconds.
            QVERIFY(eventually([&] { return task.isReady(); }, 8000));
            QVERIFY(model.issues().join(u'|').startsWith(issue));
            const auto listed = std::ranges::find(model.apps(), identifier, &RunningApp::id);
            QCOMPARE(listed->running != nullptr, issue.isEmpty());
            QCOMPARE(model.windows().size(), issue.isEmpty() ? 1 : 0);
        }
    }

    void saysWhatItCannotWorkWith()
    {
        const struct
        {
            QString variable;
            QString value;
            int status;
        } rows[] = {{u"TOVEL_DESKTOP"_s, u"none"_s, 3},
                    {u"TOVEL_DESKTOP"_s, u"w32"_s, 2},
                    {u"DISPLAY"_s, u""_s, 3},
                    {u"DISPLAY"_s, u":65000"_s, 3}};
        for (const auto &[variable, value, status] : rows) {
            QProcessEnvironment changes;
            changes.insert(variable, value);
            const Outcome outcome = tovelctl({u"move"_s, u"2"_s, u"--json"_s}, changes);
            QVERIFY2(outcome.status == status, qPrintable(outcome.err));
            QVERIFY2(outcome.err.contains(value.isEmpty() ? variable : value),
                     qPrintable(outcome.err));
            QCOMPARE(outcome.err.count(u'\n'), 1);
            QCOMPARE(QJsonDocument::fromJson(outcome.out.toUtf8()).object().contains(u"error"_s),
                     status == 3);
        }
    }
};

QTEST_GUILESS_MAIN(TestMoveRealPrograms)
#include "tst_move_real_programs.moc"
