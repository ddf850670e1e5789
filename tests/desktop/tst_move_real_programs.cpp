#include "support/desktop_reading.h"
#include "support/private_session.h"
#include "support/test_client.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <algorithm>

using namespace tovel;
using namespace Qt::StringLiterals;

// The command-line tool, on windows of real programs; where they ended is read with other tools.
class TestMoveRealPrograms : public QObject
{
    Q_OBJECT

private:
    Outcome tovelctl(const QStringList &arguments, const QProcessEnvironment &changes = {})
    {
        return m_session->run(QStringLiteral(TOVELCTL), arguments, changes);
    }

    QJsonObject json(const QStringList &arguments)
    {
        const QString out = tovelctl(arguments + QStringList{u"--json"_s}).out;
        return QJsonDocument::fromJson(out.toUtf8()).object();
    }

    std::uint32_t xterm(const QString &application, const QString &title)
    {
        m_session->install(u"org.example."_s + application.simplified().replace(u' ', u'-'),
                           application, application);
        m_session->start(
            u"xterm"_s,
            {u"-class"_s, application, u"-name"_s, application, u"-T"_s, title, u"-e"_s, u"cat"_s});
        return windowTitled(*m_session, title);
    }

    // Waits until the manager has taken the window of the client on.
    std::uint32_t open(TestClient &client, const ClientWindow &window)
    {
        const std::uint32_t id = client.open(window);
        return eventually([&] { return m_client->isManaged(id); }) ? id : 0;
    }

    // Moves and makes sure that no window but those given has left its desktop.
    Outcome move(const QStringList &arguments, const QList<std::uint32_t> &flock)
    {
        const auto others = [&] {
            QMap<std::uint32_t, std::uint32_t> places;
            for (const ListedWindow &window : listedWindows(*m_session)) {
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
            return desktopOf(*m_session, window) == desktop;
        });
    }

    bool show(std::uint32_t desktop)
    {
        m_client->showDesktop(desktop);
        return eventually([&] { return shownDesktop(*m_session) == desktop; });
    }

    std::unique_ptr<PrivateSession> m_session;
    std::unique_ptr<TestClient> m_client;

private Q_SLOTS:
    void initTestCase()
    {
        m_session = std::make_unique<PrivateSession>(managerFromEnvironment());
        QVERIFY(m_session->isReady());
        m_client = std::make_unique<TestClient>(m_session->display());
        m_session->install(u"org.example.twin-one"_s, u"Twin"_s, u"TwinOne"_s);
        m_session->install(u"org.example.twin-two"_s, u"Twin"_s, u"TwinTwo"_s);
        QVERIFY(xterm(u"Bystander"_s, u"bystander"_s));
    }

    // Nobody is in the flock to begin with.
    void init()
    {
        const QString choices = m_session->environment().value(u"XDG_CONFIG_HOME"_s);
        QDir(choices + u"/org.tovel.Tovel"_s).removeRecursively();
        QVERIFY(show(0));
    }

    void cleanupTestCase()
    {
        m_client.reset();
        m_session.reset();
    }

    void gathersProgramsOfEveryToolkit()
    {
        m_session->start(u"zenity"_s, {u"--info"_s, u"--text=Hello"_s, u"--title=Note"_s});
        m_session->start(QStringLiteral(TOVEL_QT_PROGRAM), {u"Qt window"_s});
        const QList<std::uint32_t> flock{
            xterm(u"Herd"_s, u"one"_s), xterm(u"Herd"_s, u"two"_s), xterm(u"Herd"_s, u"three"_s),
            windowTitled(*m_session, u"Note"_s), windowTitled(*m_session, u"Qt window"_s)};
        QVERIFY(!flock.contains(0));
        m_client->askForDesktop(flock[1], 1);
        QVERIFY(eventually([&] { return areOn(1, {flock[1]}); }));

        QCOMPARE(
            tovelctl({u"flock"_s, u"add"_s, u"herd"_s, u"zenity"_s, u"tovel_qt_program"_s}).status,
            0);
        QVERIFY(areOn(0, {flock[0], flock[2], flock[3], flock[4]}));
        Outcome outcome = move({u"3"_s, u"--no-follow"_s}, flock);
        QVERIFY2(outcome.status == 0, qPrintable(outcome.err));
        QCOMPARE(outcome.out, u"5 moved · 0 already there\n"_s);
        QCOMPARE(outcome.err, QString());
        QVERIFY(areOn(2, flock));

        outcome = move({u"3"_s, u"--no-follow"_s}, {});
        QCOMPARE(outcome.status, 0);
        QVERIFY(outcome.out.contains(u"already"));
        QCOMPARE(json({u"status"_s})[u"flockDesktop"_s].toInt(), 3);

        QCOMPARE(tovelctl({u"flock"_s, u"remove"_s, u"zenity"_s}).status, 0);
        QCOMPARE(move({u"1"_s, u"--no-follow"_s}, flock.mid(0, 3) + flock.mid(4)).status, 0);
        QVERIFY(areOn(0, {flock[0], flock[1], flock[2], flock[4]}));
        QVERIFY(areOn(2, {flock[3]}));
    }

    void movesWindowsInEveryState_data()
    {
        QTest::addColumn<QString>("state"); // of _NET_WM_STATE, or empty for all desktops
        QTest::addColumn<QString>("reason"); // empty: it moves
        QTest::newRow("minimized") << u"_NET_WM_STATE_HIDDEN"_s << QString();
        QTest::newRow("maximized") << u"_NET_WM_STATE_MAXIMIZED_VERT"_s << QString();
        QTest::newRow("full screen")
            << u"_NET_WM_STATE_FULLSCREEN"_s << u"Full screen — leave full screen to move"_s;
        QTest::newRow("on all desktops")
            << QString() << u"On multiple desktops — set Assign To to None"_s;
    }

    void movesWindowsInEveryState()
    {
        QFETCH(const QString, state);
        QFETCH(const QString, reason);
        const QString row = QString::fromLatin1(QTest::currentDataTag());
        const std::uint32_t special = xterm(row, row);
        const std::uint32_t plain = xterm(row, row + u" plain"_s);
        if (state.isEmpty())
            m_client->askForDesktop(special, allDesktops);
        else if (state.endsWith(u"HIDDEN"))
            m_client->minimize(special);
        else
            m_client->addState(special, state.toLatin1());
        const auto isAsWanted = [&] {
            return state.isEmpty() ? desktopOf(*m_session, special) == allDesktops
                                   : hasState(*m_session, special, state);
        };
        QVERIFY(eventually(isAsWanted));

        QCOMPARE(tovelctl({u"flock"_s, u"add"_s, row}).status, 0);
        const Outcome outcome = move({u"4"_s, u"--no-follow"_s}, {plain, special});
        QVERIFY2(outcome.status == 0, qPrintable(outcome.err));
        QVERIFY(areOn(3, {plain}));
        QVERIFY(isAsWanted());
        if (reason.isEmpty()) {
            QCOMPARE(outcome.out, u"2 moved · 0 already there\n"_s);
            QVERIFY(areOn(3, {special}));
            return;
        }
        QCOMPARE(outcome.out, u"1 moved · 0 already there · 1 skipped\n"_s);
        QVERIFY(areOn(state.isEmpty() ? allDesktops : 0, {special}));
        QStringList reasons;
        for (const QJsonValue window : json({u"status"_s})[u"windows"_s].toArray())
            reasons.append(window.toObject()[u"reason"_s].toString());
        QVERIFY(reasons.contains(reason));
    }

    void tellsApplicationsOfOneProcessApart()
    {
        const std::uint32_t parent = open(*m_client, {.application = u"Parent"_s});
        const std::uint32_t dialog = open(*m_client,
                                          {.application = u"Parent"_s,
                                           .type = "_NET_WM_WINDOW_TYPE_DIALOG",
                                           .transientFor = parent});
        const std::uint32_t neighbour = open(*m_client, {.application = u"Neighbour"_s});
        QCOMPARE(tovelctl({u"flock"_s, u"add"_s, u"Parent"_s}).status, 0);
        QCOMPARE(move({u"2"_s, u"--no-follow"_s}, {parent, dialog}).status, 0);
        QVERIFY(areOn(1, {parent, dialog}));
        QVERIFY(areOn(0, {neighbour}));
    }

    void movesWindowsWithoutAProcess()
    {
        TestClient remote(m_session->tcpDisplay());
        QVERIFY(remote.isConnected());
        const std::uint32_t window = open(remote, {.application = u"Remote"_s});
        QCOMPARE(tovelctl({u"flock"_s, u"add"_s, u"Remote"_s}).status, 0);
        QCOMPARE(move({u"2"_s, u"--no-follow"_s}, {window}).status, 0);
        QVERIFY(areOn(1, {window}));
    }

    void followsWhenAsked_data()
    {
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<bool>("minimized");
        QTest::addColumn<std::uint32_t>("shown");
        QTest::newRow("follow") << QStringList{u"--follow"_s} << false << 2u;
        QTest::newRow("follow minimized") << QStringList{u"--follow"_s} << true << 2u;
        QTest::newRow("no follow") << QStringList{u"--no-follow"_s} << false << 0u;
        QTest::newRow("as chosen") << QStringList() << false << 2u;
    }

    void followsWhenAsked()
    {
        QFETCH(const QStringList, options);
        QFETCH(const bool, minimized);
        QFETCH(const std::uint32_t, shown);
        const QString row = QString::fromLatin1(QTest::currentDataTag());
        QList<std::uint32_t> flock;
        for (int i = 0; i < 3; ++i) {
            flock.append(open(*m_client, {.application = row}));
            if (minimized)
                m_client->minimize(flock.last());
        }
        QCOMPARE(tovelctl({u"flock"_s, u"add"_s, row}).status, 0);
        const QJsonValue stored = json({u"status"_s})[u"follow"_s];
        QCOMPARE(stored, QJsonValue(true));
        const Outcome outcome = move(QStringList{u"3"_s} + options, flock);
        QVERIFY2(outcome.status == 0, qPrintable(outcome.err));
        QCOMPARE(shownDesktop(*m_session), shown);
        QCOMPARE(json({u"status"_s})[u"follow"_s], stored);
        QVERIFY(areOn(2, flock));
    }

    void namesLeadToDesktopsAndApplications()
    {
        const std::uint32_t one = open(*m_client, {.application = u"TwinOne"_s});
        const std::uint32_t two = open(*m_client, {.application = u"TwinTwo"_s});
        const Outcome ambiguous = tovelctl({u"flock"_s, u"add"_s, u"Twin"_s});
        QCOMPARE(ambiguous.status, 3);
        QVERIFY(ambiguous.err.contains(u"org.example.twin-one, org.example.twin-two"));
        QCOMPARE(json({u"status"_s})[u"flock"_s].toArray().size(), 0);
        QCOMPARE(tovelctl({u"flock"_s, u"add"_s, u"org.example.twin-two"_s}).status, 0);

        QCOMPARE(tovelctl({u"rename"_s, u"2"_s, u"Deep work"_s}).status, 0);
        QCOMPARE(move({u"deep WORK"_s, u"--no-follow"_s}, {two}).status, 0);
        QVERIFY(areOn(1, {two}));
        QVERIFY(areOn(0, {one}));
        QVERIFY(tovelctl({u"status"_s}).out.contains(u"Deep work"));
        QCOMPARE(move({u"Deep play"_s}, {}).status, 3);
    }

    void statusTellsWhatHappened_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QStringList>("environment");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("error");
        const QStringList here;
        QTest::newRow("status") << QStringList{u"status"_s} << here << 0 << QString();
        QTest::newRow("apps") << QStringList{u"apps"_s} << here << 0 << QString();
        QTest::newRow("help") << QStringList{u"--help"_s} << here << 0 << QString();
        QTest::newRow("no command") << QStringList() << here << 2 << u"command"_s;
        QTest::newRow("unknown option")
            << QStringList{u"move"_s, u"1"_s, u"--fast"_s} << here << 2 << u"--fast"_s;
        QTest::newRow("unknown desktop")
            << QStringList{u"move"_s, u"9"_s} << here << 3 << u"no desktop"_s;
        QTest::newRow("nothing to move")
            << QStringList{u"move"_s, u"2"_s} << here << 3 << u"No movable windows"_s;
        QTest::newRow("unknown application")
            << QStringList{u"flock"_s, u"add"_s, u"Nessie"_s} << here << 3 << u"Nessie"_s;
        for (const auto &command : {QStringList{u"status"_s}, QStringList{u"move"_s, u"2"_s}}) {
            const QString name = command.first();
            const auto row = [&](const char *text) -> QTestData & {
                return QTest::newRow(qPrintable(name + QLatin1StringView(text))) << command;
            };
            row(" on none") << QStringList{u"TOVEL_DESKTOP=none"_s} << 3 << u"none"_s;
            row(" on a bad value") << QStringList{u"TOVEL_DESKTOP=w32"_s} << 2 << u"w32"_s;
            row(" without a display") << QStringList{u"DISPLAY="_s} << 3 << u"DISPLAY"_s;
            row(" on a dead display") << QStringList{u"DISPLAY=:65000"_s} << 3 << u":65000"_s;
        }
    }

    void statusTellsWhatHappened()
    {
        QFETCH(const QStringList, arguments);
        QFETCH(const QStringList, environment);
        QFETCH(const int, status);
        QFETCH(const QString, error);
        QProcessEnvironment changes;
        for (const QString &variable : environment)
            changes.insert(variable.section(u'=', 0, 0), variable.section(u'=', 1));
        const Outcome outcome = tovelctl(arguments, changes);
        QVERIFY2(outcome.status == status, qPrintable(outcome.err));
        QVERIFY2(outcome.err.contains(error), qPrintable(outcome.err));
        QCOMPARE(outcome.err.count(u'\n'), error.isEmpty() ? 0 : 1);

        if (arguments.isEmpty() || status == 2 || arguments.first().startsWith(u"--"))
            return;
        const Outcome asJson = tovelctl(arguments + QStringList{u"--json"_s}, changes);
        QCOMPARE(asJson.status, status);
        const QJsonObject object = QJsonDocument::fromJson(asJson.out.toUtf8()).object();
        QCOMPARE(object[u"schema"_s], QJsonValue(1));
        QCOMPARE(object.contains(u"error"_s), status == 3);
    }
};

QTEST_GUILESS_MAIN(TestMoveRealPrograms)
#include "tst_move_real_programs.moc"
