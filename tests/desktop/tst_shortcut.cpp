#include "support/bus_tray.h"
#include "support/desktop_reading.h"
#include "support/panel_user.h"
#include "support/test.h"
#include "support/test_client.h"

#include <QDBusArgument>

// The global shortcut, pressed while another program has the keyboard, and its editor.
class TestShortcut : public QObject
{
    Q_OBJECT

private:
    static constexpr std::uint8_t keyF6 = 72; // the server's keycode
    static constexpr std::uint16_t shift = 1, control = 4; // modifiers

    // Gives the keyboard to another program and presses there.
    bool pressElsewhere(const QString &key)
    {
        m_session.run(u"xdotool"_s, {u"windowactivate"_s, u"--sync"_s, QString::number(m_other)});
        const bool isAway = eventually([this] { return !m_user.isActive(); });
        m_user.press({key});
        return isAway;
    }

    bool becomesActive()
    {
        return eventually([this] { return m_user.isActive(); });
    }
    bool canSave(bool wanted)
    {
        return eventually([&] { return m_user.find(u"Save"_s)->is("enabled"_L1) == wanted; });
    }

    // Its field has the keyboard. By keys, as icewm tells a new dialog late where it stands.
    bool openEditor()
    {
        if (!m_user.click(u"Tovel settings"_s) || !m_user.find(u"Quit Tovel"_s))
            return false;
        m_user.press({u"Up"_s, u"Up"_s, u"Return"_s});
        return m_user.find(u"Keyboard Shortcut"_s, u"dialog"_s).has_value();
    }

    QJsonObject storedShortcut() const
    {
        const QVariant stored = m_user.stored().object(u"globalShortcut"_s).value_or(QVariant());
        return QJsonDocument::fromJson(stored.toByteArray()).object();
    }

    // What the tray says under the pointer.
    QString toolTip() const
    {
        const auto value = m_tray->itemProperties()[u"ToolTip"_s].value<QDBusArgument>();
        QString icon, title;
        value.beginStructure();
        value >> icon;
        value.beginArray();
        value.endArray();
        value >> title;
        return title;
    }

    PrivateSession m_session{managerFromEnvironment(), {.assistive = true}};
    PanelUser m_user{m_session};
    std::unique_ptr<TestClient> m_client;
    std::unique_ptr<BusTray> m_tray;
    std::uint32_t m_other = 0;

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_session.isReady());
        m_client = std::make_unique<TestClient>(m_session.display());
        m_other = openTerminal(m_session, u"Other"_s, u"other"_s);
        QVERIFY(m_other);
        m_tray = std::make_unique<BusTray>(
            m_session.environment().value(u"DBUS_SESSION_BUS_ADDRESS"_s));
        QVERIFY(m_user.start());
        QVERIFY(eventually([this] { return m_tray->hasItem(); }));
        QCOMPARE(toolTip(), u"Tovel · ⌃⌥⌘T"_s);
    }

    void cleanupTestCase()
    {
        m_user.stop();
        m_tray.reset();
        m_client.reset();
    }

    void theEditorRecordsAnother()
    {
        const QString field = u"Record keyboard shortcut"_s;
        const QString key = u"super+ctrl+alt+t"_s; // icewm keeps a Super that comes later
        QVERIFY(pressElsewhere(key) && becomesActive()); // it was behind
        m_user.press({key});
        QVERIFY(eventually([this] { return !m_user.isActive(); }));
        QVERIFY(pressElsewhere(key) && becomesActive());
        QVERIFY(openEditor());
        const std::uint32_t editor = windowTitled(m_session, u"Keyboard Shortcut"_s);
        QVERIFY(eventually([&] { return desktopOf(m_session, editor) == allDesktops; }));
        m_user.press({u"space"_s});
        QVERIFY(canSave(false));
        m_user.press({u"shift+a"_s});
        QVERIFY(m_user.find(u"Include Command, Control, or Option in your shortcut."_s));
        m_user.press({u"Escape"_s});
        QVERIFY(canSave(true));

        m_user.press({u"space"_s, u"ctrl+shift+F6"_s});
        QVERIFY(m_user.find(u"Click Save to use this shortcut."_s));
        QVERIFY(m_client->grabKey(keyF6, control | shift)); // another program is faster
        m_user.press({u"Return"_s});
        QVERIFY(m_user.find(
            u"That shortcut is unavailable. Click the field and try another combination."_s));
        m_user.press({u"Escape"_s});
        QVERIFY(m_user.isGone(field));
        QVERIFY(storedShortcut().isEmpty());
        QVERIFY(pressElsewhere(key) && becomesActive());

        QVERIFY(openEditor());
        m_user.press({u"space"_s, u"ctrl+shift+F5"_s});
        QVERIFY(m_user.find(u"Click Save to use this shortcut."_s));
        m_user.press({u"Return"_s});
        QVERIFY(eventually([&] { return storedShortcut()[u"key"_s] == u"F5"_s; }));
        QVERIFY(eventually([&] { return toolTip() == u"Tovel · ⌃⇧F5"_s; }));
        QVERIFY(pressElsewhere(key));
        QVERIFY(pressElsewhere(u"ctrl+shift+F5"_s) && becomesActive());

        QVERIFY(openEditor());
        m_user.press({u"Tab"_s, u"Tab"_s, u"Tab"_s, u"space"_s}); // Reset to Default
        QVERIFY(eventually([&] { return storedShortcut()[u"key"_s] == u"T"_s; }));
    }

    // Some desktops have Return press whatever button has the keyboard.
    void returnSaves()
    {
        for (const QString &desktop : {u"XFCE"_s, u"GNOME"_s, u"KDE"_s})
            returnSavesOn(desktop);
    }

private:
    void returnSavesOn(const QString &desktop)
    {
        QProcessEnvironment changes;
        changes.insert(u"XDG_CURRENT_DESKTOP"_s, desktop);
        QVERIFY(m_user.start(changes));
        const QJsonObject before = storedShortcut();
        QVERIFY(openEditor());
        m_user.press({u"space"_s});
        m_user.press({before[u"key"_s] == u"F8"_s ? u"ctrl+shift+F9"_s : u"ctrl+shift+F8"_s});
        QVERIFY(m_user.find(u"Click Save to use this shortcut."_s));
        m_user.press({u"Return"_s});
        QVERIFY(eventually([&] { return storedShortcut() != before; }));
        QVERIFY(m_user.isGone(u"Record keyboard shortcut"_s));
    }
};

QTEST_GUILESS_MAIN(TestShortcut)
#include "tst_shortcut.moc"
