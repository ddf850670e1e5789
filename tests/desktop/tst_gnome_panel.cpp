#include "support/gnome_user.h"
#include "support/kwin_user.h"
#include "support/panel_user.h"
#include "support/test.h"
#include "support/wayland_client.h"

#include <linux/input-event-codes.h>

// The panel as a native program of GNOME Shell, used by the keys and, in the top bar, by the mouse.
// Where the windows are is the Shell's word.
class TestGnomePanel : public QObject
{
    Q_OBJECT

private:
    PrivateSession m_session{Manager::Gnome, {.evaluates = true, .assistive = true}};
    std::optional<WaylandClient> m_client;
    std::optional<PanelUser> m_user;
    GnomeUser m_gnome;

    bool panelIs(const QString &condition)
    {
        return m_gnome.holds(
            u"listed.filter(w => w.get_title() === 'Tovel' && %1).length === 1"_s.arg(condition));
    }
    // On all desktops, and with the keyboard.
    bool isUp() { return panelIs(u"w.has_focus() && w.is_on_all_workspaces()"_s); }
    bool isHidden() { return m_gnome.holds(u"listed.every(w => w.get_title() !== 'Tovel')"_s); }

    void press(const QString &keys)
    {
        const QStringList names = keys.split(u'+');
        for (const bool isDown : {true, false}) {
            for (const QString &name : names)
                m_gnome.holdKey(keyNamed(name), isDown);
        }
    }
    // On the indicator.
    void click(std::int32_t button)
    {
        const auto way = [this](const QString &to) {
            return m_gnome
                .evaluate(u"(() => { const button = Main.panel.statusArea.tovel; "
                          "const [x, y] = button.get_transformed_position(); "
                          "const [left, top] = global.get_pointer(); "
                          "return Math.round(%1); })()"_s.arg(to))
                .toInt();
        };
        m_gnome.moveCursor(
            {way(u"x + button.width / 2 - left"_s), way(u"y + button.height / 2 - top"_s)});
        for (const bool isDown : {true, false})
            m_gnome.holdButton(button, isDown);
    }
    bool tabTo(const QString &name)
    {
        for (int i = 0; m_user->focused() != name && i < 20; ++i)
            m_user->press({u"Tab"_s});
        return m_user->isFocused(name);
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_session.isReady());
        m_session.adopt();
        m_client.emplace(qgetenv("WAYLAND_DISPLAY"));
        m_client->open({.application = u"flock"_s, .title = u"flock"_s});
        QVERIFY(m_gnome.holds(u"listed.length === 1"_s));
        press(u"ctrl"_s); // the seat has no keyboard before
        m_user.emplace(m_session, Hands{.press = [this](const QString &keys) { press(keys); }});
        QVERIFY(m_user->start() && isUp());
    }
    void cleanupTestCase()
    {
        m_user.reset();
        m_client.reset();
    }

    void movesWhatIsAddedByKeys()
    {
        QVERIFY(panelIs(u"w.get_client_type() === Meta.WindowClientType.WAYLAND"_s));
        QVERIFY(tabTo(u"Add app"_s));
        m_user->press({u"space"_s});
        QVERIFY(m_user->isFocused(u"Search apps"_s));
        m_user->press({u"f"_s, u"l"_s, u"o"_s, u"c"_s, u"k"_s, u"Return"_s});
        QVERIFY(m_user->find(u"flock"_s, u"panel"_s));
        m_user->press({u"Escape"_s});
        QVERIFY(tabTo(u"Move apps to Desktop 3"_s));
        m_user->press({u"Return"_s});
        QVERIFY(m_user->find(u"Your flock is on Desktop 3."_s));
        QVERIFY(m_gnome.holds(
            u"listed.find(w => w.get_title() === 'flock').get_workspace().index() === 2"_s));
        QVERIFY(isUp());
    }

    void comesByItsKeyAndKeepsANameOverARestart()
    {
        const QString shortcut = u"super+ctrl+alt+t"_s;
        m_user->press({u"Escape"_s});
        QVERIFY(isHidden());
        press(shortcut);
        QVERIFY(isUp());
        const QStringList rename{u"rename"_s, u"2"_s, u"Sea"_s};
        QCOMPARE(m_session.run(QStringLiteral(TOVELCTL), rename).status, 0);
        QVERIFY(m_user->find(u"Move apps to Sea"_s));
        m_user->stop();
        QVERIFY(m_user->start() && isUp() && m_user->find(u"Move apps to Sea"_s));
        press(u"Escape"_s);
        QVERIFY(isHidden());
        // The extension gives up its keys when it goes.
        const QString icon = u"Main.panel.statusArea.tovel"_s;
        for (const auto &change : {u"disable"_s, u"enable"_s}) {
            m_gnome.evaluate(u"Main.extensionManager.%1Extension('tovel@tovel.org')"_s.arg(change));
            QVERIFY(m_gnome.holds((change == u"enable" ? u"!!"_s : u"!"_s) + icon));
        }
        // Nobody else gets it, once Tovel has it again.
        QVERIFY(
            m_gnome.holds(u"(other => other === 0 || void global.display.ungrab_accelerator(other))"
                          "(global.display.grab_accelerator('<Control><Alt><Super>0x1c', 0))"_s));
        press(shortcut);
        QVERIFY(isUp());
    }

    void keepsThePlaceThatItIsGiven()
    {
        const QString self = u"listed.find(w => w.get_title() === 'Tovel')"_s;
        const auto isPlaced = [&] { return panelIs(u"w.get_frame_rect().x === 123"_s); };
        // One that has just appeared may still be put at its own place.
        int kept = 0;
        QVERIFY(eventually([&] {
            const QString move
                = u"(w => w.get_frame_rect().x === 123 || void w.move_frame(true, 123, "
                  "45))(%1)"_s.arg(self);
            kept = m_gnome.evaluate(move).toBool() ? kept + 1 : 0;
            return kept == 30;
        }));
        press(u"Escape"_s);
        QVERIFY(isHidden());
        press(u"super+ctrl+alt+t"_s);
        QVERIFY(isUp() && isPlaced());
        m_user->stop();
        QVERIFY(m_user->start() && isUp() && isPlaced());
        QVERIFY(panelIs(u"w.get_frame_rect().y === 45"_s));
    }

    void isAllowedFromItsMenu()
    {
        const QString icon = u"Main.panel.statusArea.tovel"_s;
        m_gnome.evaluate(u"Main.extensionManager.disableExtension('tovel@tovel.org')"_s);
        QVERIFY(m_gnome.holds(u"!"_s + icon));
        const QString item = u"Accessibility Settings…"_s;
        QVERIFY(tabTo(u"Tovel settings"_s));
        m_user->press({u"space"_s});
        QVERIFY(m_user->find(item));
        for (int i = 0; m_user->focused() != item && i < 12; ++i)
            m_user->press({u"Down"_s});
        m_user->press({u"Return"_s});
        QVERIFY(m_gnome.holds(u"!!"_s + icon));
        QVERIFY(m_user->find(u"Access to windows"_s, u"dialog"_s));
        m_user->press({u"Escape"_s});
        QVERIFY(m_user->isGone(u"Access to windows"_s) && isUp());
    }

    void comesByItsIconInTheTopBar()
    {
        const QString menu = u"Main.panel.statusArea.tovel.menu"_s;
        click(BTN_LEFT);
        QVERIFY(isHidden());
        click(BTN_LEFT);
        QVERIFY(isUp());
        click(BTN_RIGHT);
        QVERIFY(m_gnome.holds(menu + u".isOpen && %1.numMenuItems > 2"_s.arg(menu)));
        press(u"Escape"_s);
        QVERIFY(m_gnome.holds(u"!%1.isOpen"_s.arg(menu)));
        m_user->stop();
        QVERIFY(m_gnome.holds(u"!Main.panel.statusArea.tovel"_s));
    }
};

QTEST_GUILESS_MAIN(TestGnomePanel)
#include "tst_gnome_panel.moc"
