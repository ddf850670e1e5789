#include "support/desktop_reading.h"
#include "support/private_session.h"

#include <QTest>

using namespace tovel;
using namespace Qt::StringLiterals;

// The modes in which the program checks itself, on real windows.
class TestSelfTestModes : public QObject
{
    Q_OBJECT

private:
    PrivateSession m_session{managerFromEnvironment(), {.bus = true}};
    PrivateSession m_narrow{managerFromEnvironment(), {.desktops = 1}};

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_session.isReady());
        // Each mode is a run of its own, whether or not the program runs beside it.
        m_session.start(QStringLiteral(TOVEL), {});
        QVERIFY(windowTitled(m_session, u"Tovel"_s) != 0);
        QVERIFY(m_narrow.isReady());
    }

    void modesEndWithTheirVerdict_data()
    {
        QTest::addColumn<int>("statusOfOneDesktop");
        QTest::addColumn<int>("statusWithoutDisplay");
        QTest::newRow("--self-test") << 0 << 0;
        QTest::newRow("--diagnose") << 0 << 1;
        QTest::newRow("--switch-test") << 2 << 2;
        QTest::newRow("--cross-process-test") << 2 << 1;
        QTest::newRow("--integration-test") << 2 << 2;
        QTest::newRow("--integration-test --minimized") << 2 << 2;
    }

    void modesEndWithTheirVerdict()
    {
        QFETCH(const int, statusOfOneDesktop);
        QFETCH(const int, statusWithoutDisplay);
        const auto mode = QString::fromLatin1(QTest::currentDataTag());
        const QString tovel = QStringLiteral(TOVEL);
        const QStringList arguments = mode.split(u' ');

        const Outcome outcome = m_session.run(tovel, arguments);
        QVERIFY2(outcome.status == 0, qPrintable(outcome.out + outcome.err));
        QVERIFY2(!outcome.out.contains(u"false"), qPrintable(outcome.out));
        QVERIFY(!outcome.out.isEmpty());
        QCOMPARE(outcome.err, QString());

        const Outcome narrow = m_narrow.run(tovel, arguments);
        QVERIFY2(narrow.status == statusOfOneDesktop, qPrintable(narrow.out + narrow.err));
        QCOMPARE(narrow.err.contains(u"SKIP: need two regular desktops on one display"),
                 mode.startsWith(u"--integration-test"));

        QProcessEnvironment nowhere;
        nowhere.insert(u"DISPLAY"_s, QString());
        const Outcome blind = m_session.run(tovel, arguments, nowhere);
        QVERIFY2(blind.status == statusWithoutDisplay, qPrintable(blind.out + blind.err));
        QCOMPARE(blind.out.contains(u"missing"), mode == u"--diagnose");
    }

    void thePanelNeedsADisplay()
    {
        QProcessEnvironment nowhere;
        nowhere.insert(u"DISPLAY"_s, QString());
        const Outcome outcome = m_session.run(QStringLiteral(TOVEL), {}, nowhere);
        QCOMPARE(outcome.status, 3);
        QCOMPARE(outcome.err, u"tovel: there is no display to show the panel on\n"_s);
    }
};

QTEST_GUILESS_MAIN(TestSelfTestModes)
#include "tst_self_test_modes.moc"
