#include "support/desktop_reading.h"
#include "support/private_session.h"
#include "support/stored_choices.h"
#include "support/test.h"
#include "support/test_client.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusVariant>
#include <QLocalServer>
#include <QScopeGuard>

#include <csignal>

// Has the program's name and object, and is something else.
class Stranger : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.tovel.Tovel1")
    Q_PROPERTY(QVariantList Display MEMBER m_display)

    QVariantList m_display{1, 2};
};

// The program as the one of its session: what a second start, tovelctl and other programs on the
// bus make of it, and how it ends.
class TestRunningProgram : public QObject
{
    Q_OBJECT

private:
    PrivateSession m_session{managerFromEnvironment(), {.bus = true}};
    TestClient m_client{m_session.display()};
    std::unique_ptr<QProcess> m_program;
    QDBusConnection m_bus = QDBusConnection::connectToBus(
        m_session.environment().value(u"DBUS_SESSION_BUS_ADDRESS"_s), u"others"_s);

    bool startProgram(const QStringList &arguments = {})
    {
        m_program = m_session.launch(QStringLiteral(TOVEL), arguments, m_session.environment());
        return eventually([this] {
            return call(u"org.freedesktop.DBus.Peer"_s, u"Ping"_s).errorName().isEmpty();
        });
    }

    bool isShown() const { return isListed(m_session, u"Tovel"_s); }

    QDBusMessage message(const QString &interface, const QString &method,
                         const QVariantList &arguments = {}) const
    {
        QDBusMessage call = QDBusMessage::createMethodCall(
            u"org.tovel.Tovel"_s, u"/org/tovel/Tovel"_s, interface, method);
        call.setArguments(arguments);
        return call;
    }

    QDBusMessage call(const QString &interface, const QString &method,
                      const QVariantList &arguments = {}) const
    {
        return m_bus.call(message(interface, method, arguments));
    }

    QDBusMessage act(const QString &action) const
    {
        return call(u"org.freedesktop.Application"_s, u"ActivateAction"_s,
                    {action, QVariantList(), QVariantMap()});
    }

    Outcome ctl(const QString &line) const
    {
        return m_session.run(QStringLiteral(TOVELCTL), line.split(u' '));
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_session.isReady());
        m_session.install(u"org.example.Boats"_s, u"Boats"_s, u"boats"_s);
        for (const QString &title : {u"Sloop"_s, u"Ketch"_s, u"Yawl"_s}) {
            m_client.open({.application = u"boats"_s, .title = title});
            QVERIFY(windowTitled(m_session, title) != 0);
        }
        QCOMPARE(ctl(u"flock add Boats"_s).status, 0);
    }

    void init() { QVERIFY(startProgram()); }

    void cleanup()
    {
        m_program->terminate();
        const Outcome outcome = outcomeOf(*m_program);
        QVERIFY2(outcome.status == 0, qPrintable(outcome.err));
        QCOMPARE(outcome.err, QString());
    }

    void aSecondStartShowsTheFirst()
    {
        QVERIFY(eventually([this] { return isShown(); }));
        // The first only raises a panel that has not got the keyboard yet.
        QVERIFY(eventually([this] {
            return act(u"toggle"_s).errorName().isEmpty()
                && eventually([this] { return !isShown(); }, 2000);
        }));
        const QString tovel = QStringLiteral(TOVEL);
        QCOMPARE(m_session.run(tovel, {u"--hidden"_s}).status, 0);
        QVERIFY(!isShown());
        const Outcome second = m_session.run(tovel, {});
        QCOMPARE(second.status, 0);
        QCOMPARE(second.err, QString());
        QVERIFY(eventually([this] { return isShown(); }));
        QCOMPARE(act(u"sink"_s).errorName(), u"org.freedesktop.DBus.Error.InvalidArgs"_s);

        // The demonstration is nobody's second start, nor is one whose bus says nothing.
        QLocalServer silentBus;
        QVERIFY(silentBus.listen(m_session.environment().value(u"HOME"_s) + u"/silent"_s));
        const std::pair<QString, QString> changes[]
            = {{u"TOVEL_DESKTOP"_s, u"simulated"_s},
               {u"DBUS_SESSION_BUS_ADDRESS"_s, u"unix:path="_s + silentBus.fullServerName()}};
        for (const auto &[variable, value] : changes) {
            QProcessEnvironment environment = m_session.environment();
            environment.insert(variable, value);
            const auto another = m_session.launch(tovel, {}, environment);
            QVERIFY(eventually([this] { return listedWindows(m_session).size() == 5; }));
            QCOMPARE(another->state(), QProcess::Running);
            another->terminate();
            QCOMPARE(outcomeOf(*another).status, 0);
            QVERIFY(eventually([this] { return listedWindows(m_session).size() == 4; }));
        }
    }

    void commandsAreCarriedOutByTheRunningProgram()
    {
        QVERIFY(ctl(u"rename 2 Harbour"_s).out.contains(u"Harbour"));
        const QString interface = u"org.tovel.Tovel1"_s;
        const auto status = [&] {
            const QString text = call(interface, u"Status"_s).arguments().value(0).toString();
            return QJsonDocument::fromJson(text.toUtf8()).object();
        };
        QCOMPARE(status()[u"desktops"_s][1][u"name"_s], u"Harbour"_s);
        const QVariantMap before = storedChoices(m_session).values;
        QCOMPARE(ctl(u"flock add Sharks"_s).status, 3);
        QCOMPARE(storedChoices(m_session).values, before);

        const Outcome moved = ctl(u"move Harbour --no-follow"_s);
        QCOMPARE(moved.out, u"3 moved · 0 already there\n"_s);
        for (const QString &title : {u"Sloop"_s, u"Ketch"_s, u"Yawl"_s})
            QCOMPARE(desktopOf(m_session, windowTitled(m_session, title)), 1U);

        const QDBusPendingCall first
            = m_bus.asyncCall(message(interface, u"Move"_s, {u"3"_s, QVariantMap()}));
        const QDBusMessage second = call(interface, u"Move"_s, {u"1"_s, QVariantMap()});
        QCOMPARE(second.errorName(), u"org.tovel.Tovel1.Error.Busy"_s);
        QVERIFY(eventually([&] { return first.isFinished(); }));
        QVERIFY(first.reply().arguments().value(0).toString().contains(u"\"status\":0"));
        QCOMPARE(status()[u"flockDesktop"_s], 3);
    }

    void commandsWorkBesideAProgramThatHangs()
    {
        setPaused(*m_program, true);
        const Outcome moved = ctl(u"move 1 --no-follow"_s);
        const Outcome second = m_session.run(QStringLiteral(TOVEL), {});
        setPaused(*m_program, false);
        QCOMPARE(moved.status, 0);
        QCOMPARE(moved.err,
                 u"tovelctl: the running Tovel does not answer; going on without it\n"_s);
        QCOMPARE(second.status, 1);
        QCOMPARE(second.err, u"tovel: Tovel runs already, but does not answer\n"_s);
    }

    void commandsWorkBesideAStranger()
    {
        m_program->terminate();
        QCOMPARE(outcomeOf(*m_program).status, 0);
        Stranger stranger;
        const QString path = u"/org/tovel/Tovel"_s;
        QVERIFY(m_bus.registerObject(path, &stranger, QDBusConnection::ExportAllProperties));
        QVERIFY(m_bus.registerService(u"org.tovel.Tovel"_s));
        const auto asker = m_session.launch(QStringLiteral(TOVELCTL), {u"move"_s, u"1"_s},
                                            m_session.environment());
        QVERIFY(eventually([&] { return asker->state() == QProcess::NotRunning; }));
        QCOMPARE(outcomeOf(*asker).status, 0);
        QVERIFY(m_bus.unregisterService(u"org.tovel.Tovel"_s));
        m_bus.unregisterObject(path);
        QVERIFY(startProgram());
    }

    void aCommandAloneSaysWhatItCannotReadOrStore()
    {
        m_session.write(u"config/org.tovel.Tovel/simulated.sqlite"_s, u"no database"_s);
        const auto alone = [this](const QString &line) {
            QProcessEnvironment changes;
            changes.insert(u"TOVEL_DESKTOP"_s, u"simulated"_s);
            const Outcome outcome
                = m_session.run(QStringLiteral(TOVELCTL), line.split(u' '), changes);
            return outcome.err.count(u'\n') == 1 && outcome.status == 1 ? outcome.out : u"!"_s;
        };
        QCOMPARE(alone(u"rename 3 Sea"_s), QString());
        const QString told = alone(u"status"_s);
        QVERIFY(told.contains(u"After a move:      unknown\n"));
        QVERIFY(told.contains(u"Flock\n  unknown\n"));
        QVERIFY(alone(u"status --json"_s).contains(u"\"choicesKnown\": false"));
    }

    void anySignalEndsItInMidMove()
    {
        for (const int number : {SIGHUP, SIGINT, SIGTERM})
            endsInMidMove(number);
    }

private:
    void endsInMidMove(int number)
    {
        call(u"org.tovel.Tovel1"_s, u"RemoveFromFlock"_s, {QStringList{u"Boats"_s}});
        call(u"org.tovel.Tovel1"_s, u"AddToFlock"_s, {QStringList{u"Boats"_s}});
        QVERIFY(eventually([this] { return isShown(); }));
        // Nothing arrives meanwhile, so that the move runs when the signal comes.
        m_session.pauseManager(true);
        const auto resume = qScopeGuard([this] { m_session.pauseManager(false); });
        const auto asker = m_session.launch(QStringLiteral(TOVELCTL), {u"move"_s, u"4"_s},
                                            m_session.environment());
        QVERIFY(eventually([this] {
            const QDBusMessage busy = call(u"org.freedesktop.DBus.Properties"_s, u"Get"_s,
                                           {u"org.tovel.Tovel1"_s, u"Busy"_s});
            return busy.arguments().value(0).value<QDBusVariant>().variant().toBool();
        }));
        kill(static_cast<pid_t>(m_program->processId()), number);
        QCOMPARE(outcomeOf(*m_program).status, 0);
        QVERIFY(outcomeOf(*asker).err.contains(u"ended in the middle of the move"));
        m_session.pauseManager(false);
        QVERIFY(eventually([this] {
            for (const ListedWindow &window : listedWindows(m_session)) {
                if (window.desktop == 3)
                    return true;
            }
            return false;
        }));
        QVERIFY(storedChoices(m_session).texts(u"selected"_s)->contains(u"org.example.Boats"_s));
        QCOMPARE(ctl(u"move 1"_s).status, 0); // alone
        QVERIFY(startProgram());
    }
};

QTEST_GUILESS_MAIN(TestRunningProgram)
#include "tst_running_program.moc"
