#include "support/kwin_user.h"
#include "support/panel_user.h"
#include "support/tiling_user.h"
#include "support/virtual_keyboard.h"
#include "support/wayland_client.h"

#include <QTest>

using namespace tovel;
using namespace Qt::StringLiterals;

// The panel as a native program of sway, which tiles every window that does not ask for more; used
// by the keys alone. Where the windows are is sway's word.
class TestSwayPanel : public QObject
{
    Q_OBJECT

private:
    PrivateSession m_session{Manager::Sway, {.assistive = true}};
    std::optional<WaylandClient> m_client;
    std::optional<VirtualKeyboard> m_keyboard;
    std::optional<TilingUser> m_sway;
    std::optional<PanelUser> m_user;

    QJsonObject panel() const { return m_sway->windowTitled(u"Tovel"_s); }
    bool panelBecomes(const std::function<bool(const QJsonObject &)> &wanted)
    {
        return eventually([&] { return wanted(panel()); });
    }
    // Above the others, on all desktops, and with the keyboard.
    bool isUp()
    {
        return panelBecomes([](const QJsonObject &it) {
            return it["type"_L1] == u"floating_con"_s && it["sticky"_L1].toBool()
                && it["focused"_L1].toBool();
        });
    }
    bool isHidden()
    {
        return panelBecomes([](const QJsonObject &it) { return it.isEmpty(); });
    }
    // Of its content.
    bool hasSize(QSize size)
    {
        const bool has = panelBecomes([size](const QJsonObject &it) {
            const QJsonValue content = it["window_rect"_L1];
            return QSize(content["width"_L1].toInt(), content["height"_L1].toInt()) == size;
        });
        if (!has)
            qWarning() << panel()["window_rect"_L1];
        return has;
    }

    void open(const QString &application)
    {
        m_client->open({.application = application, .title = application});
        QVERIFY(eventually([&] { return !m_sway->windowTitled(application).isEmpty(); }));
    }
    void press(const QString &keys)
    {
        std::uint32_t held = 0;
        for (const auto &[name, bit] : {std::pair(u"ctrl"_s, 4), {u"alt"_s, 8}, {u"super"_s, 64}})
            held |= keys.contains(name) ? bit : 0;
        m_keyboard->setModifiers(held, 0);
        for (const bool isDown : {true, false})
            m_keyboard->holdKey(keyNamed(keys.section(u'+', -1)), isDown);
        m_keyboard->setModifiers(0, 0);
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
        const QByteArray socket = qgetenv("WAYLAND_DISPLAY");
        m_client.emplace(socket);
        m_keyboard.emplace(socket);
        m_sway.emplace(m_session);
        QVERIFY(m_client->isConnected() && m_keyboard->isConnected());
        m_user.emplace(m_session, Hands{.press = [this](const QString &keys) { press(keys); }});
        // Toolkits differ in which of two is the first.
        QVERIFY(m_sway->command(u"output HEADLESS-2 disable"_s));
        open(u"flock"_s);
        QVERIFY(m_sway->command(u"[title=flock] floating disable"_s));
        QVERIFY(m_user->start() && isUp());
    }
    void cleanupTestCase()
    {
        m_user.reset();
        m_keyboard.reset();
        m_client.reset();
    }

    void movesWhatIsAddedByKeys()
    {
        QCOMPARE(panel()["app_id"_L1], u"org.tovel.Tovel"_s);
        QVERIFY(tabTo(u"Add app"_s));
        m_user->press({u"space"_s});
        QVERIFY(m_user->isFocused(u"Search apps"_s));
        m_user->press({u"f"_s, u"l"_s, u"o"_s, u"c"_s, u"k"_s, u"Return"_s});
        QVERIFY(m_user->find(u"flock"_s, u"panel"_s));
        m_user->press({u"Escape"_s});
        QVERIFY(m_user->isFocused(u"Add app"_s));
        QVERIFY(tabTo(u"Move apps to Desktop 3"_s));
        m_user->press({u"Return"_s});
        QVERIFY(m_user->find(u"Your flock is on Desktop 3."_s));
        QCOMPARE(m_sway->windowTitled(u"flock"_s)["workspace"_L1], u"3"_s);
    }

    void keepsTheSizeThatItAsksFor()
    {
        // Of the smallest screen, without what a title bar may take.
        QVERIFY(hasSize(QSize(940, 768)));
        const auto hideAndShow = [this] {
            press(u"Escape"_s);
            return isHidden() && (press(u"super+ctrl+alt+t"_s), isUp());
        };
        QVERIFY(hideAndShow() && hasSize(QSize(940, 768)));
        QVERIFY(m_sway->command(u"[title=Tovel] border none, resize set 1000 px 600 px"_s));
        QVERIFY(hasSize(QSize(1000, 600)) && m_user->find(u"Add app"_s));
        QVERIFY(hideAndShow() && hasSize(QSize(1000, 600)));
        m_user->stop();
        QVERIFY(m_user->start() && isUp() && hasSize(QSize(1000, 600)));
    }

    // With the token of whoever started it a second time, where that is one.
    void comesToTheKeyboardAgain()
    {
        open(u"other"_s);
        QVERIFY(panelBecomes([](const QJsonObject &it) { return !it["focused"_L1].toBool(); }));
        QCOMPARE(m_session.run(QStringLiteral(TOVEL), {}).status, 0);
        QVERIFY(isUp());

        m_user->stop();
        QProcessEnvironment environment = m_session.environment();
        environment.insert(u"WAYLAND_DEBUG"_s, u"1"_s);
        const auto running = m_session.launch(QStringLiteral(TOVEL), {u"--hidden"_s}, environment);
        QByteArray said;
        const auto says = [&](const QByteArray &text) {
            return eventually(
                [&] { return (said += running->readAllStandardError()).contains(text); });
        };
        QCOMPARE(m_session
                     .run(u"gdbus"_s,
                          {u"wait"_s, u"--session"_s, u"--timeout=20"_s, u"org.tovel.Tovel"_s})
                     .status,
                 0);
        for (const auto &token : {u"odd one"_s, u"0123abcd"_s}) {
            QProcessEnvironment given;
            given.insert(u"XDG_ACTIVATION_TOKEN"_s, token);
            QCOMPARE(m_session.run(QStringLiteral(TOVEL), {}, given).status, 0);
            QVERIFY(isUp());
        }
        QVERIFY2(says(".activate(\"0123abcd\""), said.right(2000).constData());
        QVERIFY(!said.contains("odd"));
        running->terminate();
        QCOMPARE(outcomeOf(*running).status, 0);
    }
};

QTEST_GUILESS_MAIN(TestSwayPanel)
#include "tst_sway_panel.moc"
