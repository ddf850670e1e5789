#include "platform/linux/linux_desktop.h"
#include "platform/session/x11/x11_session.h"
#include "support/desktop_reading.h"
#include "support/private_session.h"
#include "support/test_client.h"

#include <QTest>

using namespace tovel;
using namespace Qt::StringLiterals;

namespace {

const QList<QRect> Monitors{QRect(0, 0, 1280, 800), QRect(1280, 0, 1280, 800)};
constexpr QPoint OnTheSecond(2000, 300);

} // namespace

// The program on a screen that is divided between two monitors, over which the manager has one row
// of desktops.
class TestTwoMonitors : public QObject
{
    Q_OBJECT

private:
    Outcome tovelctl(const QStringList &arguments) const
    {
        return m_session.run(QStringLiteral(TOVELCTL), arguments);
    }

    // Gives the screen a monitor.
    void addMonitor(const QString &name, const QRect &place, const QString &output) const
    {
        const QString text
            = u"%1/300x%2/200+%3+0"_s.arg(place.width()).arg(place.height()).arg(place.x());
        m_session.run(u"xrandr"_s, {u"--setmonitor"_s, name, text, output});
    }
    void divideScreen() const
    {
        addMonitor(u"*Left"_s, Monitors[0], u"screen"_s);
        addMonitor(u"Right"_s, Monitors[1], u"none"_s);
    }

    PrivateSession m_session{managerFromEnvironment(), {.screen = "2560x800x24"}};
    TestClient m_client{m_session.display()};

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_session.isReady()); }

    // First: the server's own monitor is the only one yet.
    void oneRowMakesOneDisplayOfAllMonitors()
    {
        LinuxDesktop platform(x11::X11Session::open(m_session.display()));
        const auto screens = [&] { return platform.workspace().screens(); };
        QCOMPARE(screens().size(), 1);
        const QString own = screens().first().localizedName;
        QVERIFY(!own.isEmpty() && own != u"All displays"_s);

        divideScreen();
        QVERIFY(eventually([&] { return screens().first().localizedName == u"All displays"_s; }));
        QCOMPARE(screens().size(), 1);
        const std::uint32_t number = screens().first().NSScreenNumber.value();
        QCOMPARE(platform.quartz().CGDisplayBounds(number), QRectF(0, 0, 2560, 800));
        QVERIFY(!platform.quartz().CGDisplayIsBuiltin(number));
    }

    void aFollowLeavesTheCursorWhereItIs()
    {
        divideScreen();
        const std::uint32_t window = m_client.open({.application = u"Flock"_s});
        QVERIFY(eventually([&] { return m_client.number(window, "_NET_WM_DESKTOP") == 0u; }));
        QCOMPARE(tovelctl({u"flock"_s, u"add"_s, u"Flock"_s}).status, 0);
        QVERIFY(tovelctl({u"status"_s}).out.contains(u"All displays"_s));
        m_client.moveCursor(OnTheSecond);
        const auto process = m_session.launch(
            QStringLiteral(TOVELCTL), {u"move"_s, u"3"_s, u"--follow"_s}, m_session.environment());
        bool wasMoved = false;
        QVERIFY(eventually([&] {
            wasMoved = wasMoved || m_client.cursor() != OnTheSecond;
            return process->state() == QProcess::NotRunning;
        }));
        const Outcome outcome = outcomeOf(*process);
        QVERIFY2(outcome.status == 0, qPrintable(outcome.err));
        QVERIFY(!wasMoved);
        QCOMPARE(m_client.cursor(), OnTheSecond);
        QCOMPARE(shownDesktop(m_session), 2u);
        QCOMPARE(m_client.number(window, "_NET_WM_DESKTOP"), 2u);
        m_client.close(window);
    }

    void whatWasSentLastHasArrivedWhenTheProgramEnds()
    {
        for (int x = 0; x < 50; ++x) {
            const QPoint place(100 + x, 200);
            auto session = x11::X11Session::open(m_session.display());
            // A socket that is closed before all has been read of it takes along what was written.
            m_client.setProperty(m_client.root(), "_TEST", "STRING", 8, "x");
            session->moveCursor(place);
            session.reset();
            QCOMPARE(m_client.cursor(), place);
        }
    }

    void thePanelIsOnThePrimaryMonitor()
    {
        divideScreen();
        const auto panel = m_session.launch(QStringLiteral(TOVEL), {}, m_session.environment());
        const std::uint32_t window = windowTitled(m_session, u"Tovel"_s);
        QVERIFY(window != 0);
        QRect place;
        QVERIFY(eventually([&] {
            place = m_client.place(window);
            return !place.isEmpty() && qAbs(place.center().x() - Monitors[0].center().x()) < 20;
        }));
        QVERIFY(Monitors[0].contains(place));
        panel->terminate();
        QCOMPARE(outcomeOf(*panel).status, 0);
    }
};

QTEST_GUILESS_MAIN(TestTwoMonitors)
#include "tst_two_monitors.moc"
