#include "platform/linux/linux_desktop.h"
#include "platform/session/x11/x11_session.h"
#include "support/desktop_reading.h"
#include "support/private_session.h"
#include "support/test.h"
#include "support/test_client.h"

namespace {

constexpr QRect Primary(0, 0, 1280, 800);

} // namespace

// The program on a screen that is divided between two monitors, over which the manager has one row
// of desktops.
class TestTwoMonitors : public QObject
{
    Q_OBJECT

private:
    void divideScreen() const
    {
        const auto add = [this](const QString &name, const QString &place, const QString &output) {
            m_session.run(u"xrandr"_s, {u"--setmonitor"_s, name, place, output});
        };
        add(u"*Left"_s, u"1280/300x800/200+0+0"_s, u"screen"_s);
        add(u"Right"_s, u"1280/300x800/200+1280+0"_s, u"none"_s);
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

    // There is nothing that would depend on where it is.
    void theCursorStaysOnItsMonitor()
    {
        divideScreen();
        const std::uint32_t window = m_client.open({.application = u"Flock"_s});
        QVERIFY(isOn(m_session, window, 0));
        const QString tovelctl = QStringLiteral(TOVELCTL);
        QCOMPARE(m_session.run(tovelctl, {u"flock"_s, u"add"_s, u"Flock"_s}).status, 0);
        const auto points = [this](QPoint place) {
            m_session.run(u"xdotool"_s,
                          {u"mousemove"_s, QString::number(place.x()), QString::number(place.y())});
            return m_client.cursor() == place;
        };
        for (const QPoint place : {QPoint(1900, 300), QPoint(100, 200)}) {
            for (const std::uint32_t desktop : {2U, 0U}) {
                QVERIFY(points(place));
                const QStringList move{u"move"_s, QString::number(desktop + 1), u"--follow"_s};
                QCOMPARE(m_session.run(tovelctl, move).status, 0);
                QCOMPARE(m_client.cursor(), place);
                QCOMPARE(shownDesktop(m_session), desktop);
                QCOMPARE(desktopOf(m_session, window), desktop);
            }
            const Outcome tested = m_session.run(QStringLiteral(TOVEL), {u"--switch-test"_s});
            QVERIFY2(tested.status == 0, qPrintable(tested.out + tested.err));
            QCOMPARE(m_client.cursor(), place);
        }
    }

    void thePanelIsOnThePrimaryMonitor()
    {
        divideScreen();
        const auto panel = m_session.launch(QStringLiteral(TOVEL), {}, m_session.environment());
        const std::uint32_t window = windowTitled(m_session, u"Tovel"_s);
        QVERIFY(window != 0);
        QVERIFY(eventually([&] {
            const QRect place = m_client.place(window);
            return Primary.contains(place) && qAbs(place.center().x() - Primary.center().x()) < 20;
        }));
        panel->terminate();
        QCOMPARE(outcomeOf(*panel).status, 0);
    }
};

QTEST_GUILESS_MAIN(TestTwoMonitors)
#include "tst_two_monitors.moc"
