#include "support/desktop_reading.h"
#include "support/panel_user.h"
#include "support/test_client.h"

#include <QDir>
#include <QJsonArray>
#include <QTest>

using namespace tovel;
using namespace Qt::StringLiterals;

namespace {

const QString move = QStringLiteral("Move apps to ");

} // namespace

// The whole program, used by the mouse and by the keys; where the windows ended is read with other
// tools.
class TestPanel : public QObject
{
    Q_OBJECT

private:
    std::uint32_t xterm(const QString &application, const QString &title)
    {
        m_session.start(
            u"xterm"_s,
            {u"-class"_s, application, u"-name"_s, application, u"-T"_s, title, u"-e"_s, u"cat"_s});
        return windowTitled(m_session, title);
    }

    bool isOn(std::uint32_t window, std::uint32_t desktop)
    {
        return eventually([&] { return desktopOf(m_session, window) == desktop; });
    }

    bool shows(std::uint32_t desktop)
    {
        return eventually([&] { return shownDesktop(m_session) == desktop; });
    }

    // The tile of the desktop, as it is called now.
    QString tile(int desktop) { return move + m_user.buttons(move).value(desktop); }

    bool isListed(const QString &title)
    {
        const QList<ListedWindow> windows = listedWindows(m_session);
        return std::any_of(windows.cbegin(), windows.cend(),
                           [&](const ListedWindow &it) { return it.title == title; });
    }

    // By the popover, left open.
    bool add(const QString &application)
    {
        return m_user.click(u"Add app"_s) && m_user.click(u"Add "_s + application)
            && m_user.find(application, u"panel"_s);
    }

    bool choose(const QString &item)
    {
        return m_user.click(u"Tovel settings"_s) && m_user.click(item) && m_user.isGone(item);
    }

    QStringList flock()
    {
        QStringList identifiers;
        for (const QJsonValue &identifier : m_user.stored()[u"selected"_s].toArray())
            identifiers.append(identifier.toString());
        return identifiers;
    }

    bool flockBecomes(const QStringList &identifiers)
    {
        return eventually([&] { return flock() == identifiers; });
    }

    PrivateSession m_session{managerFromEnvironment(), {.assistive = true}};
    PanelUser m_user{m_session};
    std::unique_ptr<TestClient> m_client;
    std::uint32_t m_first = 0;
    std::uint32_t m_second = 0;
    std::uint32_t m_bystander = 0;

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_session.isReady());
        m_client = std::make_unique<TestClient>(m_session.display());
        m_session.install(u"org.example.herd"_s, u"Herd"_s, u"Herd"_s,
                          u"xterm -class Herd -name Herd -T reopened -e cat"_s);
        m_session.install(u"org.example.bystander"_s, u"Bystander"_s, u"Bystander"_s);
        m_first = xterm(u"Herd"_s, u"first"_s);
        m_second = xterm(u"Herd"_s, u"second"_s);
        m_bystander = xterm(u"Bystander"_s, u"bystander"_s);
        QVERIFY(m_first && m_second && m_bystander);
    }

    // Nobody is in the flock to begin with, and everything is on the first desktop.
    void init()
    {
        QDir(m_session.environment().value(u"XDG_CONFIG_HOME"_s) + u"/org.tovel.Tovel"_s)
            .removeRecursively();
        m_client->showDesktop(0);
        for (const std::uint32_t window : {m_first, m_second, m_bystander}) {
            m_client->askForDesktop(window, 0);
            QVERIFY(isOn(window, 0));
        }
        QVERIFY(shows(0));
        QVERIFY(m_user.start());
    }

    void cleanup() { m_user.stop(); }

    void movesWhatIsAddedByMouse()
    {
        QVERIFY(m_user.find(u"Choose apps for your flock."_s));
        QVERIFY(m_user.click(u"Add app"_s));
        QVERIFY(m_user.isFocused(u"Search apps"_s));
        m_user.type(u"hER"_s);
        QVERIFY(m_user.isGone(u"Add Bystander"_s));
        QVERIFY(m_user.click(u"Add Herd"_s));
        QVERIFY(m_user.find(u"No apps found"_s));
        QVERIFY(flockBecomes({u"org.example.herd"_s}));
        m_user.press({u"Escape"_s});
        QVERIFY(m_user.isGone(u"Search apps"_s));
        QVERIFY(m_user.find(u"Herd"_s, u"panel"_s));

        const QString third = tile(2);
        QVERIFY(m_user.click(third));
        QVERIFY(isOn(m_first, 2));
        QVERIFY(isOn(m_second, 2));
        QVERIFY(shows(2));
        QCOMPARE(desktopOf(m_session, m_bystander), 0u);
        const auto seen = [&](const QString &description) {
            return eventually([&] {
                const auto found = m_user.find(third);
                return found && found->description == description;
            });
        };
        QVERIFY(seen(u"Apps are already here. 2 selected windows"_s));
        QVERIFY(m_user.find(u"Your flock is on "_s + third.mid(move.size()) + u'.'));
        QVERIFY(m_user.find(u"Tovel"_s, u"frame"_s)->is("active"_L1));

        // What is done cannot be done again.
        QVERIFY(m_user.click(third));
        QVERIFY(!m_user.find(third)->is("enabled"_L1));
        QCOMPARE(desktopOf(m_session, m_first), 2u);

        m_client->askForDesktop(m_second, 1);
        QVERIFY(choose(u"Refresh"_s));
        QVERIFY(m_user.find(u"Your flock is across 2 desktops."_s));
        QVERIFY(seen(u"1 selected windows"_s));
    }

    void renamesADesktop()
    {
        const QStringList names = m_user.buttons(move);
        QVERIFY(m_user.click(tile(1), 3));
        QVERIFY(m_user.click(u"Rename…"_s));
        QVERIFY(m_user.isFocused(u"Name"_s));
        QVERIFY(m_user.textIs(u"Name"_s, names[1]));
        m_user.type(u"Pond & Reed"_s);
        m_user.press({u"Return"_s});
        QVERIFY(m_user.find(u"Move apps to Pond & Reed"_s));
        QCOMPARE(m_user.stored()[u"aliases"_s].toObject().size(), 1);
        const QStringList renamed = m_user.buttons(move);

        const QStringList toCancel[] = {{u"Escape"_s}, {u"Tab"_s, u"Tab"_s, u"Return"_s}};
        for (const QStringList &keys : toCancel) {
            QVERIFY(m_user.click(tile(2), 3));
            QVERIFY(m_user.click(u"Rename…"_s));
            QVERIFY(m_user.isFocused(u"Name"_s));
            m_user.type(u"Unwanted"_s);
            m_user.press(keys);
            QVERIFY(m_user.isGone(u"Rename desktop"_s));
        }
        QCOMPARE(m_user.buttons(move), renamed);
        QCOMPARE(renamed, (QStringList{names[0], u"Pond & Reed"_s, names[2], names[3]}));

        m_user.stop();
        QVERIFY(m_user.start());
        QCOMPARE(m_user.buttons(move), renamed);
    }

    void removesAndReopensAnApplication()
    {
        const std::uint32_t only = xterm(u"Brief"_s, u"brief"_s);
        QVERIFY(only);
        m_session.install(u"org.example.brief"_s, u"Brief"_s, u"Brief"_s,
                          u"xterm -class Brief -name Brief -T again -e cat"_s);
        m_user.stop();
        QVERIFY(m_user.start());
        QVERIFY(add(u"Brief"_s));
        QVERIFY(m_user.click(u"Add Herd"_s));
        m_user.press({u"Escape"_s});
        QVERIFY(flockBecomes({u"org.example.brief"_s, u"org.example.herd"_s}));

        m_session.run(u"xdotool"_s, {u"windowkill"_s, QString::number(only)});
        QVERIFY(eventually([&] { return !isListed(u"brief"_s); }));
        QVERIFY(choose(u"Refresh"_s));
        QCOMPARE(m_user.find(u"App closed"_s)->group, u"Brief"_s);
        QVERIFY(m_user.click(u"Reopen Brief"_s));
        QVERIFY(windowTitled(m_session, u"again"_s));
        QVERIFY(m_user.isGone(u"App closed"_s));

        QVERIFY(m_user.point(u"Brief"_s));
        QVERIFY(m_user.click(u"Remove Brief"_s));
        QVERIFY(m_user.isGone(u"Remove Brief"_s));
        QVERIFY(flockBecomes({u"org.example.herd"_s}));
        QVERIFY(m_user.click(u"Herd"_s, 3));
        m_user.press({u"Down"_s, u"Return"_s});
        QVERIFY(m_user.isGone(u"Remove Herd"_s));
        QVERIFY(flockBecomes({}));
        QVERIFY(isListed(u"again"_s));
        QVERIFY(isListed(u"first"_s));
    }

    void tellsWhatStaysAndGoesStepByStep()
    {
        m_client->askForDesktop(m_second, allDesktops);
        QVERIFY(isOn(m_second, allDesktops));
        QVERIFY(add(u"Herd"_s));
        m_user.press({u"Escape"_s});
        const QString label = u"Herd: On multiple desktops"_s;
        QVERIFY(m_user.click(label));
        QVERIFY(m_user.find(u"Windows not moving"_s));
        QVERIFY(m_user.find(u"On multiple desktops — set Assign To to None"_s));
        m_user.press({u"Escape"_s});
        QVERIFY(m_user.isGone(u"Windows not moving"_s));
        QVERIFY(m_user.isFocused(label));

        QVERIFY(m_user.click(tile(1)));
        QVERIFY(isOn(m_first, 1));
        QCOMPARE(desktopOf(m_session, m_second), allDesktops);

        // The button of an open popover closes it; the next Escape is for the panel.
        QVERIFY(m_user.click(label));
        QVERIFY(m_user.find(u"Windows not moving"_s));
        QVERIFY(m_user.click(label));
        QVERIFY(m_user.isGone(u"Windows not moving"_s));
        QVERIFY(isListed(u"Tovel"_s));
        m_user.press({u"Escape"_s});
        QVERIFY(eventually([&] { return !isListed(u"Tovel"_s); }));
        QVERIFY(m_user.isRunning());
    }

    void keepsWhatTheMenuSets()
    {
        const auto isAbove = [&](bool wanted) {
            const std::uint32_t panel = windowTitled(m_session, u"Tovel"_s);
            return eventually(
                [&] { return hasState(m_session, panel, u"_NET_WM_STATE_ABOVE"_s) == wanted; });
        };
        QVERIFY(isAbove(false));
        QVERIFY(choose(u"Pin window"_s));
        QVERIFY(isAbove(true));
        QVERIFY(choose(u"Follow windows"_s));
        QVERIFY(eventually([&] { return m_user.stored().contains(u"follow"_s); }));

        m_user.stop();
        QVERIFY(m_user.start());
        QVERIFY(isAbove(true));
        QVERIFY(m_user.click(u"Tovel settings"_s));
        QVERIFY(m_user.find(u"Pin window"_s)->is("checked"_L1));
        QVERIFY(!m_user.find(u"Follow windows"_s)->is("checked"_L1));
        m_user.press({u"Escape"_s});
        QVERIFY(add(u"Herd"_s));
        m_user.press({u"Escape"_s});
        QVERIFY(m_user.click(tile(3)));
        QVERIFY(isOn(m_first, 3));
        QVERIFY(isOn(m_second, 3));
        QCOMPARE(shownDesktop(m_session), 0u);

        QVERIFY(choose(u"Pin window"_s));
        QVERIFY(isAbove(false));
        QVERIFY(isListed(u"Tovel"_s));
    }

    void everyControlIsReachedByKeys()
    {
        QVERIFY(add(u"Herd"_s));
        m_user.press({u"Escape"_s});
        QVERIFY(m_user.isFocused(u"Add app"_s));
        const QStringList tiles = m_user.buttons(move);
        QStringList order{u"Remove Herd"_s};
        order.append(u"Show desktops on "_s + m_user.buttons(u"Show desktops on "_s).value(0));
        for (const QString &name : tiles)
            order.append(move + name);
        order += {u"Tovel settings"_s, u"Add app"_s};
        for (const QString &name : order) {
            m_user.press({u"Tab"_s});
            QVERIFY(m_user.isFocused(name));
        }
        for (qsizetype i = order.size() - 2; i >= 0; --i) {
            m_user.press({u"shift+Tab"_s});
            QVERIFY(m_user.isFocused(order[i]));
        }
    }

    void worksByKeysAlone()
    {
        QVERIFY(m_user.find(u"Add app"_s));
        for (int i = 0; m_user.focused() != u"Add app"_s && i < 20; ++i)
            m_user.press({u"Tab"_s});
        m_user.press({u"space"_s});
        QVERIFY(m_user.isFocused(u"Search apps"_s));
        m_user.type(u"herd"_s);
        QVERIFY(m_user.isGone(u"Add Bystander"_s));
        m_user.press({u"Return"_s});
        QVERIFY(m_user.find(u"Herd"_s, u"panel"_s));
        m_user.press({u"Escape"_s});
        QVERIFY(m_user.isFocused(u"Add app"_s));

        const QString second = tile(1);
        m_user.press({u"Tab"_s, u"Tab"_s, u"Tab"_s, u"Tab"_s});
        QVERIFY(m_user.isFocused(second));
        m_user.press({u"Menu"_s});
        QVERIFY(m_user.isFocused(u"Rename…"_s));
        m_user.press({u"Return"_s});
        QVERIFY(m_user.isFocused(u"Name"_s));
        m_user.press({u"Escape"_s});
        QVERIFY(m_user.isFocused(second));
        m_user.press({u"Return"_s});
        QVERIFY(isOn(m_first, 1));
        QVERIFY(isOn(m_second, 1));
        QVERIFY(shows(1));
        QVERIFY(m_user.find(u"Your flock is on "_s + second.mid(move.size()) + u'.'));
        QVERIFY(m_user.isFocused(second));

        m_user.press({u"shift+Tab"_s, u"shift+Tab"_s, u"shift+Tab"_s});
        QVERIFY(m_user.isFocused(u"Remove Herd"_s));
        m_user.press({u"space"_s});
        QVERIFY(m_user.isGone(u"Remove Herd"_s));
        QVERIFY(flockBecomes({}));
        QVERIFY(eventually([&] { return !m_user.focused().isEmpty(); }));

        for (int i = 0; m_user.focused() != u"Tovel settings"_s && i < 20; ++i)
            m_user.press({u"Tab"_s});
        m_user.press({u"space"_s});
        QVERIFY(m_user.find(u"Pin window"_s));
        QVERIFY(m_user.isFocused(u"Pin window"_s));
        m_user.press({u"Down"_s, u"Return"_s});
        QVERIFY(eventually([&] { return m_user.stored().contains(u"follow"_s); }));
        QVERIFY(!m_user.stored()[u"follow"_s].toBool(true));
        QVERIFY(m_user.isFocused(u"Tovel settings"_s));
        m_user.press({u"Return"_s});
        QVERIFY(m_user.find(u"Pin window"_s));
        m_user.press({u"Escape"_s});
        QVERIFY(m_user.isGone(u"Pin window"_s));
        QVERIFY(isListed(u"Tovel"_s));
        m_user.press({u"Escape"_s});
        QVERIFY(eventually([&] { return !isListed(u"Tovel"_s); }));
    }

    void quitsFromEverywhere_data()
    {
        QTest::addColumn<QString>("opener");
        QTest::addColumn<QString>("opened");
        QTest::newRow("panel") << QString() << QString();
        QTest::newRow("menu") << u"Tovel settings"_s << u"Quit Tovel"_s;
        QTest::newRow("popover") << u"Add app"_s << u"Search apps"_s;
    }

    void quitsFromEverywhere()
    {
        QFETCH(QString, opener);
        QFETCH(QString, opened);
        if (!opener.isEmpty()) {
            QVERIFY(m_user.click(opener));
            QVERIFY(m_user.find(opened));
        }
        m_user.press({u"ctrl+q"_s});
        const Outcome outcome = m_user.outcome();
        QCOMPARE(outcome.err, QString());
        QCOMPARE(outcome.status, 0);
    }
};

QTEST_GUILESS_MAIN(TestPanel)
#include "tst_panel.moc"
