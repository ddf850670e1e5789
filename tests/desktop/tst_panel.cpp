#include "support/desktop_reading.h"
#include "support/panel_user.h"
#include "support/test.h"
#include "support/test_client.h"

namespace {

const QString move = QStringLiteral("Move apps to ");

} // namespace

// The whole program, used by the mouse and by the keys; where the windows ended is read with other
// tools.
class TestPanel : public QObject
{
    Q_OBJECT

private:
    // Both windows of the flock.
    bool areOn(std::uint32_t desktop)
    {
        return isOn(m_session, m_first, desktop) && isOn(m_session, m_second, desktop);
    }

    bool shows(std::uint32_t desktop)
    {
        return eventually([&] { return shownDesktop(m_session) == desktop; });
    }

    bool tabTo(const QString &name)
    {
        for (int i = 0; m_user.focused() != name && i < 20; ++i)
            m_user.press({u"Tab"_s});
        return m_user.focused() == name;
    }

    // The tile of the desktop, as it is called now.
    QString tile(int desktop) { return move + m_user.buttons(move).value(desktop); }

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

    QString choicesFolder() const
    {
        return m_session.environment().value(u"XDG_CONFIG_HOME"_s) + u"/org.tovel.Tovel"_s;
    }

    QStringList flock() { return m_user.stored().texts(u"selected"_s).value_or(QStringList()); }

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
        m_first = openTerminal(m_session, u"Herd"_s, u"first"_s);
        m_second = openTerminal(m_session, u"Herd"_s, u"second"_s);
        m_bystander = openTerminal(m_session, u"Bystander"_s, u"bystander"_s);
        QVERIFY(m_first && m_second && m_bystander);
    }

    // Nobody is in the flock to begin with, and everything is on the first desktop.
    void init()
    {
        QDir(choicesFolder()).removeRecursively();
        m_client->showDesktop(0);
        for (const std::uint32_t window : {m_first, m_second, m_bystander}) {
            m_client->askForDesktop(window, 0);
            QVERIFY(isOn(m_session, window, 0));
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
        QVERIFY(flockBecomes({u"org.example.herd"_s}));
        m_user.press({u"Escape"_s});
        QVERIFY(m_user.isGone(u"Search apps"_s));
        QVERIFY(m_user.find(u"Herd"_s, u"panel"_s));

        const QString third = tile(2);
        QVERIFY(m_user.click(third));
        QVERIFY(areOn(2) && shows(2));
        QCOMPARE(desktopOf(m_session, m_bystander), 0u);
        QVERIFY(m_user.find(u"Your flock is on "_s + third.mid(move.size()) + u'.'));
        QVERIFY(m_user.isActive());

        // What is done cannot be done again.
        QVERIFY(!m_user.find(third)->is("enabled"_L1));
        m_client->askForDesktop(m_second, 1);
        QVERIFY(choose(u"Refresh"_s));
        QVERIFY(m_user.find(u"Your flock is across 2 desktops."_s));

        QVERIFY(m_user.click(u"Herd"_s, 3));
        m_user.press({u"Down"_s, u"Return"_s});
        QVERIFY(m_user.isGone(u"Remove Herd"_s));
        QVERIFY(flockBecomes({}));
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
        QVERIFY(areOn(3));
        QCOMPARE(shownDesktop(m_session), 0u);

        QVERIFY(choose(u"Pin window"_s));
        QVERIFY(isAbove(false));
    }

    // Ornaments, hidden controls and what has no name are not there.
    void assistiveProgramsFindEveryControl()
    {
        QProcessEnvironment simulated; // two displays, and a flock of one
        simulated.insert(u"TOVEL_DESKTOP"_s, u"simulated"_s);
        QVERIFY(m_user.start(simulated) && m_user.find(u"All together now."_s));
        QStringList told;
        for (const SeenObject &seen : m_user.look()) {
            if (seen.role == u"filler"_s || seen.role == u"application"_s
                || (seen.role == u"panel"_s && seen.name.isEmpty()))
                continue;
            told.append(u"%1 %2 in %3, %4:%5%6%7"_s.arg(
                seen.role, seen.name, seen.group, seen.description,
                seen.is("sensitive"_L1) ? u" live"_s : QString(),
                seen.is("focusable"_L1) ? u" by keys"_s : QString(),
                seen.is("selected"_L1) ? u" selected"_s : QString()));
        }
        const QStringList expected{
            u"frame Tovel in org.tovel.Tovel, : live"_s,
            u"label Tovel in Tovel, : live"_s,
            u"push button Tovel settings in Tovel, Settings: live by keys"_s,
            u"label Fly these tovel… in Tovel, : live"_s,
            u"panel Messages in Tovel, : live"_s,
            u"label Messages in Messages, : live"_s,
            u"push button Remove Messages in Messages, : live by keys"_s,
            u"push button Add app in Tovel, : live by keys"_s,
            u"label Displays: in Tovel, : live"_s,
            u"push button Show desktops on Built-in Display in Tovel, : live by keys selected"_s,
            u"push button Show desktops on Desk Monitor in Tovel, : live by keys"_s,
            u"label To this pond: in Tovel, : live"_s,
            u"push button Move apps to Desktop 1 in Tovel, 0 selected windows: live by keys"_s,
            u"push button Move apps to Desktop 2 in Tovel, 0 selected windows: live by keys"_s,
            u"push button Move apps to Desktop 3 in Tovel, 0 selected windows: live by keys"_s,
            u"push button Move apps to Desktop 4 in Tovel, "
            "Apps are already here. 1 selected windows: by keys"_s,
            u"label Your flock is on Desktop 4. in Tovel, : live by keys"_s,
            u"label All together now. in Tovel, : live"_s};
        QCOMPARE(told.join(u'\n'), expected.join(u'\n'));
        QVERIFY(m_user.click(u"Show desktops on Desk Monitor"_s));
        QVERIFY(m_user.isGone(u"Move apps to Desktop 4"_s));
        QVERIFY(!m_user.find(u"Show desktops on Built-in Display"_s)->is("selected"_L1));

        QVERIFY(m_user.click(u"Add app"_s));
        QVERIFY(m_user.find(u"Add app"_s, u"dialog"_s));
        QCOMPARE(m_user.find(u"Add Mail"_s)->group, u"Add app"_s);
        m_user.type(u"Videos"_s);
        QVERIFY(m_user.isGone(u"Add Mail"_s));
        m_user.press({u"Return"_s, u"Escape"_s});
        const QString label = u"Videos: Full screen"_s;
        QCOMPARE(m_user.find(label)->description, u"Show which windows won’t move and why"_s);
        QVERIFY(m_user.click(u"Move apps to Desktop 6"_s));
        QVERIFY(m_user.find(u"In progress"_s, u"progress bar"_s));
        QVERIFY(m_user.isGone(u"In progress"_s));
    }

    void worksByKeysAlone()
    {
        QVERIFY(tabTo(u"Add app"_s));
        m_user.press({u"space"_s});
        QVERIFY(m_user.isFocused(u"Search apps"_s));
        m_user.type(u"herd"_s);
        QVERIFY(m_user.isGone(u"Add Bystander"_s));
        m_user.press({u"Return"_s});
        QVERIFY(m_user.find(u"Herd"_s, u"panel"_s));
        m_user.press({u"Escape"_s});
        QVERIFY(m_user.isFocused(u"Add app"_s));

        // Every control, in the order in which it is read.
        QString second = tile(1);
        QStringList order{u"Remove Herd"_s};
        order.append(u"Show desktops on "_s + m_user.buttons(u"Show desktops on "_s).value(0));
        for (const QString &name : m_user.buttons(move))
            order.append(move + name);
        order += {u"Tovel settings"_s, u"Add app"_s};
        for (const QString &name : order) {
            m_user.press({u"Tab"_s});
            QVERIFY(m_user.isFocused(name));
        }
        m_user.press({u"Tab"_s, u"Tab"_s, u"Tab"_s, u"Tab"_s});
        QVERIFY(m_user.isFocused(second));
        m_user.press({u"Menu"_s});
        QVERIFY(m_user.isFocused(u"Rename…"_s));
        m_user.press({u"Return"_s});
        QVERIFY(m_user.isFocused(u"Name"_s));
        QVERIFY(m_user.textIs(u"Name"_s, second.mid(move.size())));
        m_user.type(u"Pond & Reed"_s);
        m_user.press({u"Return"_s});
        second = move + u"Pond & Reed"_s;
        QVERIFY(m_user.isFocused(second));
        QCOMPARE(tile(1), second);
        QCOMPARE(m_user.stored().textDictionary(u"aliases"_s)->size(), 1);
        m_user.press({u"Return"_s});
        QVERIFY(areOn(1) && shows(1));
        QVERIFY(m_user.find(u"Your flock is on "_s + second.mid(move.size()) + u'.'));
        QVERIFY(m_user.isFocused(second));

        m_user.press({u"shift+Tab"_s, u"shift+Tab"_s, u"shift+Tab"_s});
        QVERIFY(m_user.isFocused(u"Remove Herd"_s));
        m_user.press({u"space"_s});
        QVERIFY(m_user.isGone(u"Remove Herd"_s) && flockBecomes({}));
        QVERIFY(tabTo(u"Tovel settings"_s));
        m_user.press({u"space"_s});
        QVERIFY(m_user.isFocused(u"Pin window"_s));
        m_user.press({u"Down"_s, u"Return"_s});
        QVERIFY(eventually([&] { return m_user.stored().boolean(u"follow"_s) == false; }));
        QVERIFY(m_user.isFocused(u"Tovel settings"_s));
        QVERIFY(isListed(m_session, u"Tovel"_s));
        m_user.press({u"Escape"_s});
        QVERIFY(eventually([&] { return !isListed(m_session, u"Tovel"_s); }));
    }

    void keepsItsChoicesWhileTheirStoreIsDamaged()
    {
        const auto tells = [&](const QString &beginning, bool wanted) {
            return eventually([&] {
                const QList<SeenObject> seen = m_user.look();
                return wanted == std::ranges::any_of(seen, [&](const SeenObject &it) {
                           return it.name.contains(beginning);
                       });
            });
        };
        const QString unreadable = u"Your choices cannot be read: "_s;
        QVERIFY(add(u"Herd"_s));
        m_user.press({u"Escape"_s});
        QVERIFY(choose(u"Follow windows"_s));
        const auto holds = [&](const QStringList &identifiers) {
            return flockBecomes(identifiers) && m_user.stored().boolean(u"follow"_s) == false;
        };
        QVERIFY(holds({u"org.example.herd"_s}));

        QFile store(choicesFolder() + u"/defaults.sqlite"_s);
        QVERIFY(store.open(QIODevice::ReadWrite));
        const QByteArray good = store.readAll();
        QVERIFY(store.resize(good.size() / 2)); // as a slow restore has it at first
        QVERIFY(choose(u"Refresh"_s) && tells(unreadable, true));
        QVERIFY(m_user.find(u"Herd"_s, u"panel"_s));
        QVERIFY(add(u"Bystander"_s)); // shown, but not stored
        m_user.press({u"Escape"_s});
        QVERIFY(store.seek(0));
        QCOMPARE(store.readAll(), good.first(good.size() / 2));

        QVERIFY(store.seek(0) && store.write(good) == good.size() && store.flush());
        const QString unstored = u"Your choices could not be stored; make them again later: "_s;
        QVERIFY(choose(u"Refresh"_s) && tells(unreadable, false) && tells(unstored, true));
        QVERIFY(holds({u"org.example.herd"_s}));
        QVERIFY(m_user.click(u"Remove Bystander"_s));
        QVERIFY(tells(unstored, false));
        QVERIFY(add(u"Bystander"_s));
        QVERIFY(holds({u"org.example.bystander"_s, u"org.example.herd"_s}));
    }

    // Now, and again as soon as it is there.
    void tellsWhatAccessNeeds()
    {
        const QString wanted = u"Allow Accessibility access to move apps.\n"
                               "No window manager that can move windows between desktops is "
                               "running: start one that follows the Extended Window Manager "
                               "Hints. Tovel then goes on by itself."_s;
        QVERIFY(m_user.find(u"Choose apps for your flock."_s));
        m_session.killManager();
        QVERIFY(m_user.find(wanted));
        QVERIFY(choose(u"Accessibility Settings…"_s));
        QVERIFY(m_user.find(u"Access to windows"_s, u"dialog"_s));
        m_session.startManager();
        QVERIFY(m_session.isReady());
        QVERIFY(m_user.isGone(wanted));
        QVERIFY(m_user.isGone(u"Access to windows"_s));
    }

    void staysWhereItIsPut()
    {
        const std::uint32_t panel = windowTitled(m_session, u"Tovel"_s);
        const auto hide = [&] {
            return eventually([&] {
                m_user.press({u"Escape"_s}); // again where a manager took its time with the focus
                return !isListed(m_session, u"Tovel"_s);
            });
        };
        const auto show = [&] {
            m_user.press({u"super+ctrl+alt+t"_s}); // icewm keeps a Super that comes later
            return windowTitled(m_session, u"Tovel"_s) == panel
                && isOn(m_session, panel, allDesktops) && m_user.find(u"Add app"_s);
        };
        const auto comesTo = [&](const QRect &place) {
            return eventually([&] { return m_client->place(panel) == place; });
        };
        // In two steps, of which the first one only begins the move.
        const auto drag = [&](QPoint from) {
            const QStringList pause{u"sleep"_s, u"0.1"_s};
            const QStringList step = pause + QStringList{u"mousemove_relative"_s, u"20"_s, u"15"_s};
            m_session.run(u"xdotool"_s,
                          QStringList{u"mousemove"_s, QString::number(from.x()),
                                      QString::number(from.y()), u"mousedown"_s, u"1"_s}
                              + step + step + pause + QStringList{u"mouseup"_s, u"1"_s});
        };
        QVERIFY(isOn(m_session, panel, allDesktops));
        // By the title and by the strip beside its text, not by what is there to be clicked.
        const int left = m_client->place(panel).left();
        drag(m_user.find(u"Tovel settings"_s)->place.center());
        drag(m_user.find(u"Tovel"_s, u"label"_s)->place.center());
        QVERIFY(eventually([&] { return m_client->place(panel).left() == left + 20; }));
        const QRect status = m_user.find(u"Choose apps for your flock."_s)->place;
        drag(status.center());
        drag({status.right() + 100, status.center().y()});
        QVERIFY(eventually([&] { return m_client->place(panel).left() == left + 40; }));
        QVERIFY(hide() && show());
        const QRect place = m_client->place(panel);
        QCOMPARE(place.left(), left + 40);
        m_client->minimize(panel); // of no use to what is on every desktop
        QVERIFY(hide() && show() && comesTo(place));

        const auto maximize = [&](const QString &change) {
            m_session.run(u"wmctrl"_s,
                          {u"-i"_s, u"-r"_s, QString::number(panel), u"-b"_s,
                           change + u",maximized_vert,maximized_horz"_s});
        };
        maximize(u"add"_s);
        QVERIFY(eventually([&] { return m_client->place(panel) != place; }));
        QVERIFY(hide() && show());
        QVERIFY(hasState(m_session, panel, u"_NET_WM_STATE_MAXIMIZED_VERT"_s));
        maximize(u"remove"_s);
        QVERIFY(comesTo(place) && hide());
        m_user.stop();
        QVERIFY(m_user.start() && comesTo(place));
    }

    void quitsFromEverywhere()
    {
        for (const QString &opener : {QString(), u"Tovel settings"_s, u"Add app"_s}) {
            if (!opener.isEmpty()) {
                QVERIFY(m_user.start());
                QVERIFY(m_user.click(opener));
                QVERIFY(m_user.find(opener == u"Add app"_s ? u"Search apps"_s : u"Quit Tovel"_s));
            }
            m_user.press({u"ctrl+q"_s});
            const Outcome outcome = m_user.outcome();
            QCOMPARE(outcome.err, QString());
            QCOMPARE(outcome.status, 0);
        }
    }
};

QTEST_GUILESS_MAIN(TestPanel)
#include "tst_panel.moc"
