#include "support/panel_user.h"

#include <QTest>

using namespace tovel;
using namespace Qt::StringLiterals;

// The panel as an assistive program finds it, over the bus that such programs use. The desktop
// behind it is simulated: two displays, and windows of every kind.
class TestPanelAccessibility : public QObject
{
    Q_OBJECT

private:
    // The states of those given that the object has.
    static QStringList states(const SeenObject &seen)
    {
        QStringList result;
        for (const auto state :
             {"enabled"_L1, "sensitive"_L1, "focusable"_L1, "selected"_L1, "checked"_L1}) {
            if (seen.is(state))
                result.append(state);
        }
        return result;
    }

    bool open(const QString &button, const QString &opened)
    {
        return m_user.click(button) && m_user.find(opened);
    }

    bool close(const QString &opened)
    {
        m_user.press({u"Escape"_s});
        return m_user.isGone(opened);
    }

    PrivateSession m_session{managerFromEnvironment(), {.assistive = true}};
    PanelUser m_user{m_session};

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_session.isReady());
        QProcessEnvironment simulated;
        simulated.insert(u"TOVEL_DESKTOP"_s, u"simulated"_s);
        QVERIFY(m_user.start(simulated));
    }

    void everyControlIsDescribed_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("role");
        QTest::addColumn<QString>("group");
        QTest::addColumn<QString>("description");
        QTest::addColumn<QStringList>("expected");

        const QStringList fixed{u"enabled"_s, u"sensitive"_s};
        const QStringList control = fixed + QStringList{u"focusable"_s};
        const QString button = u"push button"_s;
        const QString tovel = u"Tovel"_s;
        QTest::newRow("window") << tovel << u"frame"_s << u"org.tovel.Tovel"_s << u""_s << fixed;
        QTest::newRow("title") << tovel << u"label"_s << tovel << u""_s << fixed;
        QTest::newRow("gear") << u"Tovel settings"_s << button << tovel << u"Settings"_s << control;
        QTest::newRow("plus") << u"Add app"_s << button << tovel << u""_s << control;
        QTest::newRow("card") << u"Messages"_s << u"panel"_s << tovel << u""_s << fixed;
        QTest::newRow("name") << u"Messages"_s << u"label"_s << u"Messages"_s << u""_s << fixed;
        QTest::newRow("mark") << u"Remove Messages"_s << button << u"Messages"_s << u""_s
                              << control;
        QTest::newRow("current display") << u"Show desktops on Built-in Display"_s << button
                                         << tovel << u""_s << control + QStringList{u"selected"_s};
        QTest::newRow("other display")
            << u"Show desktops on Desk Monitor"_s << button << tovel << u""_s << control;
        QTest::newRow("tile") << u"Move apps to Desktop 1"_s << button << tovel
                              << u"0 selected windows"_s << control;
        QTest::newRow("tile of the flock")
            << u"Move apps to Desktop 4"_s << button << tovel
            << u"Apps are already here. 1 selected windows"_s << QStringList{u"focusable"_s};
        QTest::newRow("status") << u"Your flock is on Desktop 4."_s << u"label"_s << tovel << u""_s
                                << control;
        QTest::newRow("together") << u"All together now."_s << u"label"_s << tovel << u""_s
                                  << fixed;
    }

    void everyControlIsDescribed()
    {
        QFETCH(QString, name);
        QFETCH(QString, role);
        const auto seen = m_user.find(name, role);
        QVERIFY(seen);
        QTEST(seen->group, "group");
        QTEST(seen->description, "description");
        QTEST(states(*seen), "expected");
    }

    void ornamentsAndHiddenControlsAreNotThere()
    {
        const QStringList texts{u"Tovel"_s,
                                u"Fly these tovel…"_s,
                                u"Messages"_s,
                                u"Displays:"_s,
                                u"To this pond:"_s,
                                u"Your flock is on Desktop 4."_s,
                                u"All together now."_s};
        QStringList labels;
        for (const SeenObject &seen : m_user.look()) {
            QVERIFY2(seen.role != u"image"_s, qPrintable(seen.name));
            if (seen.role != u"filler"_s && seen.role != u"panel"_s)
                QVERIFY2(!seen.name.isEmpty(), qPrintable(seen.role));
            if (seen.role == u"label"_s)
                labels.append(seen.name);
        }
        QCOMPARE(labels, texts);
        QCOMPARE(m_user.buttons({}).size(), 9);
    }

    void aDisplayIsSelected()
    {
        QVERIFY(m_user.click(u"Show desktops on Desk Monitor"_s));
        QVERIFY(m_user.isGone(u"Move apps to Desktop 4"_s));
        QVERIFY(m_user.find(u"Show desktops on Desk Monitor"_s)->is("selected"_L1));
        QVERIFY(!m_user.find(u"Show desktops on Built-in Display"_s)->is("selected"_L1));
        QCOMPARE(m_user.buttons(u"Move apps to "_s).size(), 3);
        QVERIFY(m_user.click(u"Show desktops on Built-in Display"_s));
        QVERIFY(m_user.find(u"Move apps to Desktop 4"_s));
    }

    void menuTellsWhatIsOn()
    {
        QVERIFY(open(u"Tovel settings"_s, u"Quit Tovel"_s));
        QStringList items;
        QStringList checked;
        QStringList dead;
        for (const SeenObject &seen : m_user.look()) {
            if (seen.role != u"menu item"_s)
                continue;
            items.append(seen.name);
            if (seen.is("checked"_L1))
                checked.append(seen.name);
            if (!seen.is("sensitive"_L1))
                dead.append(seen.name);
        }
        QCOMPARE(
            items.mid(0, 6),
            (QStringList{u"Pin window"_s, u"Follow windows"_s, u"Refresh"_s,
                         u"Accessibility Settings…"_s, u"App icon"_s, u"Check for Updates…"_s}));
        QVERIFY(items.value(6).startsWith(u"Version "_s));
        QVERIFY(items.value(7).startsWith(u"Keyboard Shortcut… ("_s));
        QCOMPARE(items.mid(8), QStringList{u"Quit Tovel"_s});
        QCOMPARE(checked, QStringList{u"Follow windows"_s});
        QVERIFY(dead.contains(items[6]));
        QVERIFY(!dead.contains(u"Refresh"_s));

        QVERIFY(m_user.click(u"App icon"_s));
        QVERIFY(m_user.find(u"Dark"_s, u"menu item"_s)->is("checked"_L1));
        QVERIFY(!m_user.find(u"Light"_s, u"menu item"_s)->is("checked"_L1));
        m_user.press({u"Escape"_s});
        QVERIFY(m_user.isGone(u"Dark"_s));
        QVERIFY(close(u"Quit Tovel"_s));
        QVERIFY(m_user.isFocused(u"Tovel settings"_s));
    }

    void alertIsADialog()
    {
        QVERIFY(m_user.click(u"Move apps to Desktop 1"_s, 3));
        QVERIFY(m_user.click(u"Rename…"_s));
        QVERIFY(m_user.find(u"Rename desktop"_s, u"dialog"_s)->is("active"_L1));
        const auto field = m_user.find(u"Name"_s, u"text"_s);
        QVERIFY(field);
        QVERIFY(field->is("focused"_L1));
        QCOMPARE(field->text, u"Desktop 1"_s);
        for (const auto &name : {u"Save"_s, u"Cancel"_s})
            QCOMPARE(m_user.find(name)->group, u"Rename desktop"_s);
        QVERIFY(close(u"Rename desktop"_s));
    }

    // Leaves a browser and videos in the flock.
    void popoversAreDialogs()
    {
        QVERIFY(open(u"Add app"_s, u"Search apps"_s));
        QVERIFY(m_user.find(u"Add app"_s, u"dialog"_s));
        const auto field = m_user.find(u"Search apps"_s, u"text"_s);
        QVERIFY(field->is("focused"_L1));
        QCOMPARE(field->group, u"Add app"_s);
        QCOMPARE(m_user.find(u"Add Mail"_s)->group, u"Add app"_s);
        QVERIFY(!m_user.buttons(u"Add "_s).contains(u"Messages"_s));
        for (const QString &name : {u"Web Browser"_s, u"Videos"_s}) {
            m_user.type(name);
            QVERIFY(m_user.isGone(u"Add Mail"_s));
            m_user.press({u"Return"_s, u"ctrl+a"_s, u"BackSpace"_s});
            QVERIFY(m_user.find(u"Add Mail"_s));
        }
        QVERIFY(close(u"Search apps"_s));

        const QString label = u"Videos: Full screen"_s;
        const auto button = m_user.find(label, u"push button"_s);
        QVERIFY(button);
        QCOMPARE(button->description, u"Show which windows won’t move and why"_s);
        QVERIFY(open(label, u"Windows not moving"_s));
        QCOMPARE(m_user.find(u"Videos"_s, u"label"_s).has_value(), true);
        QCOMPARE(m_user.find(u"Full screen — leave full screen to move"_s)->group, label);
        QVERIFY(close(u"Windows not moving"_s));
    }

    void progressIsSeen()
    {
        QVERIFY(m_user.click(u"Move apps to Desktop 3"_s));
        QStringList able;
        const bool isBusy = eventually([&] {
            able.clear();
            bool turns = false;
            for (const SeenObject &seen : m_user.look()) {
                turns |= seen.name == u"In progress"_s && seen.role == u"progress bar"_s;
                if (seen.role == u"push button"_s && seen.is("sensitive"_L1))
                    able.append(seen.name);
            }
            return turns;
        });
        QVERIFY(isBusy);
        QCOMPARE(able, (QStringList{u"Tovel settings"_s, u"Videos: Full screen"_s}));
        QVERIFY(m_user.isGone(u"In progress"_s));
        QCOMPARE(m_user.find(u"Move apps to Desktop 3"_s)->description,
                 u"Apps are already here. 4 selected windows"_s);
    }
};

QTEST_GUILESS_MAIN(TestPanelAccessibility)
#include "tst_panel_accessibility.moc"
