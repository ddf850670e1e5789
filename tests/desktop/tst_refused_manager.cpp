#include "support/private_session.h"
#include "support/test_client.h"

#include <QTest>

using namespace tovel;
using namespace Qt::StringLiterals;

// A manager whose desktops have no numbers to rely on is left alone by X11's means, and its user is
// told.
class TestRefusedManager : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nothingIsTriedAndTheReasonTold()
    {
        PrivateSession session(managerFromEnvironment());
        QVERIFY(session.isReady());
        TestClient client(session.display());
        const std::uint32_t window = client.open({.application = u"Flock"_s});
        QVERIFY(eventually([&] { return client.isManaged(window); }));
        const auto tovelctl = [&](const QStringList &arguments) {
            QProcessEnvironment changes;
            changes.insert(u"TOVEL_DESKTOP"_s, u"x11"_s);
            return session.run(QStringLiteral(TOVELCTL), arguments, changes);
        };
        QCOMPARE(tovelctl({u"flock"_s, u"add"_s, u"Flock"_s}).status, 0);
        const auto desktop = client.number(window, "_NET_WM_DESKTOP");
        for (const QStringList &arguments :
             {QStringList{u"status"_s}, {u"move"_s, u"1"_s}, {u"move"_s, u"1"_s, u"--follow"_s}}) {
            const Outcome outcome = tovelctl(arguments);
            QCOMPARE(outcome.status, 3);
            QVERIFY2(outcome.err.contains(u"i3 gives its workspaces new numbers"_s),
                     qPrintable(outcome.err));
            QVERIFY(!outcome.err.contains(u"No window manager"_s));
        }
        QCOMPARE(client.number(window, "_NET_WM_DESKTOP"), desktop);
    }
};

QTEST_GUILESS_MAIN(TestRefusedManager)
#include "tst_refused_manager.moc"
