#include "support/desktop_reading.h"
#include "support/kwin_user.h"
#include "support/panel_user.h"
#include "support/wayland_client.h"

#include <QLibraryInfo>
#include <QTest>
#include <QVersionNumber>

#include <linux/input-event-codes.h>

using namespace tovel;
using namespace Qt::StringLiterals;

// The panel as a native program of KWin's Wayland session, used by the mouse and by the keys; where
// the windows are is KWin's word.
class TestWaylandPanel : public QObject
{
    Q_OBJECT

private:
    PrivateSession m_session{Manager::KWin, {.xwayland = true, .assistive = true}};
    std::optional<WaylandClient> m_client;
    std::optional<KWinUser> m_kwin;
    std::optional<PanelUser> m_user;

    bool meetKWin()
    {
        if (!m_session.isReady())
            return false;
        m_session.adopt();
        m_client.emplace(qgetenv("WAYLAND_DISPLAY"));
        m_kwin.emplace(qgetenv("WAYLAND_DISPLAY"));
        return m_client->isConnected() && m_kwin->isConnected();
    }

    KWinWindow panel()
    {
        const std::uint32_t number = m_kwin->windowTitled(u"Tovel"_s);
        return number ? m_kwin->window(number) : KWinWindow();
    }
    bool panelBecomes(const std::function<bool(const KWinWindow &)> &wanted)
    {
        return eventually([&] { return wanted(panel()); });
    }
    bool hasKeyboard()
    {
        return panelBecomes([](const KWinWindow &it) { return it.isActive(); });
    }
    bool isHidden()
    {
        return panelBecomes([](const KWinWindow &it) { return it.title.isEmpty(); });
    }
    // With the title bar, if there is one.
    QPoint corner()
    {
        const QRect frame = panel().frame;
        const int content = m_user->find(u"Tovel"_s, u"frame"_s)->place.height();
        return frame.topLeft() + QPoint(0, frame.height() - content);
    }

    std::uint32_t open(const QString &application)
    {
        const auto before = m_kwin->windows().size();
        m_client->open({.application = application, .title = application});
        return eventually([&] { return m_kwin->windows().size() == before + 1; })
            ? m_kwin->windows().last()
            : 0;
    }

    bool tabTo(const QString &name)
    {
        for (int i = 0; m_user->focused() != name && i < 20; ++i)
            m_user->press({u"Tab"_s});
        return m_user->isFocused(name);
    }
    bool choose(const QString &item)
    {
        return m_user->click(u"Tovel settings"_s) && m_user->click(item) && m_user->isGone(item);
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(meetKWin());
        m_user.emplace(m_session,
                       Hands{.press = [this](const QString &keys) { m_kwin->press(keys); },
                             .click =
                                 [this](QPoint place, int button) {
                                     m_kwin->click(corner() + place,
                                                   button == 1 ? BTN_LEFT : BTN_RIGHT);
                                 }});
        QVERIFY(m_user->start() && hasKeyboard());
    }
    void cleanupTestCase()
    {
        m_user.reset();
        m_kwin.reset();
        m_client.reset();
    }

    void movesWhatIsAddedByKeys()
    {
        QCOMPARE(panel().application, u"org.tovel.Tovel"_s);
        QVERIFY(listedWindows(m_session).isEmpty()); // nothing of it is X11's
        const std::uint32_t first = open(u"flock"_s);
        const std::uint32_t second = open(u"flock"_s);
        const std::uint32_t bystander = open(u"bystander"_s);
        QVERIFY(choose(u"Refresh"_s) && hasKeyboard());
        QVERIFY(tabTo(u"Add app"_s));
        m_user->press({u"space"_s});
        QVERIFY(m_user->isFocused(u"Search apps"_s));
        m_user->press({u"f"_s, u"l"_s, u"o"_s, u"c"_s, u"k"_s});
        QVERIFY(m_user->isGone(u"Add bystander"_s));
        m_user->press({u"Return"_s});
        QVERIFY(m_user->find(u"flock"_s, u"panel"_s));
        m_user->press({u"Escape"_s});
        QVERIFY(m_user->isFocused(u"Add app"_s));
        QVERIFY(tabTo(u"Move apps to Desktop 3"_s));
        m_user->press({u"Return"_s});
        QVERIFY(m_user->find(u"Your flock is on Desktop 3."_s));
        m_kwin->windows();
        QCOMPARE(m_kwin->desktopsOf(first), QList<int>{2});
        QCOMPARE(m_kwin->desktopsOf(second), QList<int>{2});
        QCOMPARE(m_kwin->desktopsOf(bystander), QList<int>{0});
        QVERIFY(hasKeyboard());
    }

    void opensAndClosesWhatIsClicked()
    {
        QVERIFY(m_user->click(u"Add app"_s));
        QVERIFY(m_user->isFocused(u"Search apps"_s));
        m_kwin->click(corner() + QPoint(300, 20), BTN_LEFT);
        QVERIFY(m_user->isGone(u"Search apps"_s));
        QVERIFY(m_user->click(u"Move apps to Desktop 2"_s, 3) && m_user->click(u"Rename…"_s));
        QVERIFY(m_user->isFocused(u"Name"_s));
        m_user->press({u"Escape"_s});
        QVERIFY(m_user->isGone(u"Name"_s));
        QVERIFY(choose(u"Keyboard Shortcut… (⌃⌥⌘T)"_s));
        QVERIFY(m_user->find(u"Keyboard Shortcut"_s, u"dialog"_s));
        m_user->press({u"Escape"_s});
        QVERIFY(m_user->isGone(u"Keyboard Shortcut"_s) && hasKeyboard());
    }

    void comesBackAsItWas()
    {
        QVERIFY(choose(u"Pin window"_s));
        const auto isPinned = [this](bool wanted) {
            return panelBecomes([wanted](const KWinWindow &it) {
                return it.isActive() && it.isOnAllDesktops() && it.isAbove() == wanted;
            });
        };
        QVERIFY(isPinned(true));
        const std::uint32_t other = open(u"other"_s);
        const QString shortcut = u"super+ctrl+alt+t"_s;
        m_user->press({u"Escape"_s});
        QVERIFY(isHidden());
        m_user->press({shortcut});
        QVERIFY(isPinned(true));
        // The panel may learn of its keyboard later than others do; a press before only calls it.
        const auto isGone = [this] { return panel().title.isEmpty(); };
        m_user->press({shortcut});
        if (!eventually(isGone, 2000))
            m_user->press({shortcut});
        QVERIFY(isHidden());
        const auto startAgain
            = [this] { return m_session.run(QStringLiteral(TOVEL), {}).status == 0; };
        QVERIFY(startAgain() && isPinned(true));
        m_kwin->activate(other);
        QVERIFY(panelBecomes([](const KWinWindow &it) { return !it.isActive(); }));
        QVERIFY(startAgain() && isPinned(true));
        QVERIFY(choose(u"Pin window"_s) && isPinned(false));
    }

    void keepsTheSizeThatItIsGiven()
    {
        const QRect frame = panel().frame;
        const QPoint below = corner() + QPoint(300, 20);
        m_kwin->drag(below, QPoint(60, 30), BTN_LEFT);
        QVERIFY(panelBecomes([&](const KWinWindow &it) { return it.frame != frame; }));
        QCOMPARE(panel().frame.size(), frame.size());
        m_kwin->holdKey(KEY_LEFTMETA, true);
        m_kwin->drag(panel().frame.bottomRight() - QPoint(40, 40), QPoint(-20, -60), BTN_RIGHT);
        m_kwin->holdKey(KEY_LEFTMETA, false);
        const QSize size = frame.size() - QSize(20, 60);
        QVERIFY(panelBecomes([&](const KWinWindow &it) { return it.frame.size() == size; }));
        m_user->stop();
        QVERIFY(m_user->start());
        // Qt's own frame, where KWin has none to give, is taken off the size at each start.
        const int lower = size.height() - 33;
        const bool isKept = panelBecomes([&](const KWinWindow &it) {
            return it.frame.size() == size || it.frame.height() == lower;
        });
        QVERIFY2(isKept,
                 qPrintable(u"%1 by %2"_s.arg(panel().frame.width()).arg(panel().frame.height())));
        if (panel().frame.height() == lower)
            QSKIP("this KWin has no decorations");
    }

    void runsOnXWaylandWhereThatIsAskedFor()
    {
        QProcessEnvironment xcb;
        xcb.insert(u"QT_QPA_PLATFORM"_s, u"xcb"_s);
        QVERIFY(m_user->start(xcb));
        QVERIFY(windowTitled(m_session, u"Tovel"_s) != 0);
        QVERIFY(panelBecomes([](const KWinWindow &it) { return it.isOnAllDesktops(); }));
        QVERIFY(m_user->find(u"Your flock is on Desktop 3."_s));
        QVERIFY(m_user->start());
    }

    // Or lives on, where the toolkit can.
    void endsWithKWinAndKeepsItsChoices()
    {
        m_session.killManager();
        if (QLibraryInfo::version() < QVersionNumber(6, 5)) {
            const Outcome outcome = m_user->outcome();
            QCOMPARE(outcome.status, 1);
            QVERIFY(outcome.err.contains(u"Wayland"));
        }
        m_kwin.reset();
        m_client.reset();
        m_session.startManager();
        QVERIFY(meetKWin());
        if (!m_user->isRunning())
            QVERIFY(m_user->start());
        QVERIFY(panelBecomes([](const KWinWindow &it) { return it.isOnAllDesktops(); }));
        QVERIFY(m_user->find(u"flock"_s, u"panel"_s));
        m_user->press({u"ctrl+q"_s});
        QCOMPARE(m_user->outcome().status, 0);
    }
};

QTEST_GUILESS_MAIN(TestWaylandPanel)
#include "tst_wayland_panel.moc"
