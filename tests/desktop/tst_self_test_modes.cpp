#include "support/private_session.h"
#include "support/test.h"

#include <QRegularExpression>

// The modes in which the program checks itself, on real windows.
class TestSelfTestModes : public QObject
{
    Q_OBJECT

private:
    PrivateSession m_session{managerFromEnvironment(), {.bus = true}};
    PrivateSession m_narrow{managerFromEnvironment(), {.desktops = 1}};
    QProcessEnvironment m_nowhere;
    const QRegularExpression m_remark{u"^QStandardPaths: .*\n"_s};

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_session.isReady());
        // Each mode is a run of its own, whether or not the program runs beside it.
        m_session.start(QStringLiteral(TOVEL), {});
        QCOMPARE(m_session
                     .run(u"gdbus"_s,
                          {u"wait"_s, u"--session"_s, u"--timeout=20"_s, u"org.tovel.Tovel"_s})
                     .status,
                 0);
        QVERIFY(m_narrow.isReady());
        for (const auto &variable :
             {u"DISPLAY"_s, u"WAYLAND_DISPLAY"_s, u"SWAYSOCK"_s, u"QT_QPA_PLATFORM"_s})
            m_nowhere.insert(variable, QString());
    }

    void modesEndWithTheirVerdict()
    {
        const struct
        {
            QString mode;
            int statusOfOneDesktop;
            int statusWithoutDisplay;
        } rows[] = {{u"--self-test"_s, 0, 0},        {u"--diagnose"_s, 0, 1},
                    {u"--switch-test"_s, 2, 2},      {u"--cross-process-test"_s, 2, 1},
                    {u"--integration-test"_s, 2, 2}, {u"--integration-test --minimized"_s, 2, 2}};
        for (const auto &[mode, statusOfOneDesktop, statusWithoutDisplay] : rows) {
            const bool minimizes = managerFromEnvironment() != Manager::Sway
                && managerFromEnvironment() != Manager::I3;
            if (!minimizes && mode.endsWith(u"--minimized"))
                continue;
            const QString tovel = QStringLiteral(TOVEL);
            const QStringList arguments = mode.split(u' ');
            Outcome outcome = m_session.run(tovel, arguments);
            QVERIFY2(outcome.status == 0, qPrintable(mode + outcome.out + outcome.err));
            QVERIFY2(!outcome.out.contains(u"false"), qPrintable(mode + outcome.out));
            QVERIFY(!outcome.out.isEmpty());
            // The toolkit remarks that a session of sway's is another user's, for root.
            QVERIFY2(!outcome.err.remove(m_remark).contains(u'\n'), qPrintable(outcome.err));

            const Outcome narrow = m_narrow.run(tovel, arguments);
            QVERIFY2(narrow.status == statusOfOneDesktop,
                     qPrintable(mode + narrow.out + narrow.err));
            QCOMPARE(narrow.err.contains(u"SKIP: need two regular desktops on one display"),
                     mode.startsWith(u"--integration-test"));

            const Outcome blind = m_session.run(tovel, arguments, m_nowhere);
            QVERIFY2(blind.status == statusWithoutDisplay, qPrintable(mode + blind.err));
            QCOMPARE(blind.out.contains(u"missing"), mode == u"--diagnose");
        }
    }

    void thePanelNeedsADisplay()
    {
        const Outcome outcome = m_session.run(QStringLiteral(TOVEL), {}, m_nowhere);
        QCOMPARE(outcome.status, 3);
        // After what the toolkit says.
        QVERIFY2(outcome.err.endsWith(u"tovel: there is no display to show the panel on\n"_s),
                 qPrintable(outcome.err));
    }
};

QTEST_GUILESS_MAIN(TestSelfTestModes)
#include "tst_self_test_modes.moc"
