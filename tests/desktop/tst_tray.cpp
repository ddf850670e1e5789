#include "support/bus_tray.h"
#include "support/desktop_reading.h"
#include "support/panel_user.h"
#include "support/test.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QRegularExpression>

namespace {

const QString move = QStringLiteral("Move apps to ");

// GNOME Shell's extension, which shows the icon itself.
class Extension final : public QDBusVirtualObject
{
public:
    bool serves = false;
    int questions = 0;

    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override
    {
        ++questions;
        connection.send(serves ? message.createReply({0.0, 0.0})
                               : message.createErrorReply(QDBusError::AccessDenied, {}));
        return true;
    }
};

} // namespace

// The icon in trays of both kinds, clicked as their user does.
class TestTray : public QObject
{
    Q_OBJECT

private:
    // Where the X session's tray has the icon, if it has.
    std::optional<QPoint> iconPlace() const
    {
        static const QRegularExpression icon(
            u"\\(\"tovel\".*\\) +\\d+x\\d+\\+0\\+0 +\\+(\\d+)\\+(\\d+)"_s);
        const QString windows
            = m_session.run(u"xwininfo"_s, {u"-name"_s, u"panel"_s, u"-tree"_s}).out;
        const QRegularExpressionMatch match = icon.match(windows);
        return match.hasMatch()
            ? std::optional(QPoint(match.captured(1).toInt() + 4, match.captured(2).toInt() + 4))
            : std::nullopt;
    }

    QString bus() const { return m_session.environment().value(u"DBUS_SESSION_BUS_ADDRESS"_s); }

    void come(bool onBus)
    {
        if (onBus)
            m_busTray.emplace(bus());
        else
            m_trayer = m_session.launch(u"trayer"_s, {}, m_session.environment());
    }

    void leave()
    {
        m_busTray.reset();
        if (m_trayer) {
            m_trayer->kill();
            m_trayer->waitForFinished();
            m_trayer.reset();
        }
    }

    // In a tray of the X session, once it stays where it is.
    bool hasIcon()
    {
        std::optional<QPoint> place;
        return eventually([&] {
            const auto before = std::exchange(place, m_busTray ? std::nullopt : iconPlace());
            return m_busTray ? m_busTray->hasItem() : place && place == before;
        });
    }

    void clickAt(const QPoint &place, int button)
    {
        m_session.run(u"xdotool"_s,
                      {u"mousemove"_s, QString::number(place.x()), QString::number(place.y()),
                       u"click"_s, QString::number(button)});
    }

    void click(int button)
    {
        if (m_busTray)
            m_busTray->activateItem();
        else if (hasIcon())
            clickAt(iconPlace().value_or(QPoint()), button);
    }

    // In the menu of a right click.
    bool choose(const QString &desktop)
    {
        if (m_busTray)
            return m_busTray->menu().contains(desktop) && m_busTray->choose(desktop);
        click(3);
        const std::optional<SeenObject> item = m_user.find(desktop, u"menu item"_s);
        if (item)
            clickAt(item->place.center(), 1);
        return item.has_value();
    }

    bool panelIs(bool shown)
    {
        return eventually([&] { return shown ? m_user.isActive() : !m_user.isShown(); });
    }

    PrivateSession m_session{managerFromEnvironment(), {.assistive = true}};
    PanelUser m_user{m_session};
    std::optional<BusTray> m_busTray;
    std::unique_ptr<QProcess> m_trayer;
    std::uint32_t m_herd = 0;

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_session.isReady());
        m_herd = openTerminal(m_session, u"Herd"_s, u"herd"_s);
        QVERIFY(m_herd);
        QVERIFY(m_user.start());
        QVERIFY(m_user.click(u"Add app"_s) && m_user.click(u"Add Herd"_s));
        QVERIFY(m_user.find(u"Herd"_s, u"panel"_s));
    }

    void init() { QVERIFY(m_user.start()); }

    void cleanup()
    {
        m_user.stop();
        leave();
    }

    void theIconWorksInTheXSession() { theIconWorks(false); }
    void theIconWorksOnTheBus() { theIconWorks(true); }

private:
    void theIconWorks(bool onBus)
    {
        const QStringList desktops = m_user.buttons(move);
        come(onBus); // later than the program
        QVERIFY(hasIcon());
        click(1);
        QVERIFY(panelIs(false));
        QVERIFY(choose(desktops.value(2)));
        QVERIFY(isOn(m_session, m_herd, 2));
        QVERIFY(panelIs(false));
        click(1);
        QVERIFY(panelIs(true));
        QVERIFY(m_user.find(u"Your flock is on "_s + desktops.value(2) + u'.')); // nothing runs

        QVERIFY(choose(desktops.value(0)));
        QVERIFY(isOn(m_session, m_herd, 0));
        QVERIFY(m_user.find(u"Your flock is on "_s + desktops.value(0) + u'.'));
        QVERIFY(panelIs(true)); // above what came

        // With the editor open it brings both, and the editor to the front.
        click(1);
        QVERIFY(panelIs(false));
        QVERIFY(choose(u"Keyboard Shortcut… (⌃⌥⌘T)"_s));
        QVERIFY(m_user.isFocused(u"Record keyboard shortcut"_s));
        QVERIFY(!m_user.sees(u"Add app"_s));
        click(1);
        QVERIFY(m_user.find(u"Add app"_s));
        QVERIFY(m_user.isFocused(u"Record keyboard shortcut"_s));
        m_user.press({u"Escape"_s});
        QVERIFY(panelIs(true));

        leave();
        come(onBus);
        QVERIFY(hasIcon());
        click(1);
        QVERIFY(panelIs(false));
        QVERIFY(m_user.isRunning());
    }

private Q_SLOTS:
    void thereIsOneIcon()
    {
        come(false);
        QVERIFY(hasIcon());
        come(true);
        QVERIFY(hasIcon());
        QVERIFY(eventually([this] { return !iconPlace(); }));
        const QVariantMap item = m_busTray->itemProperties();
        QCOMPARE(item[u"Status"_s], u"Active"_s);
        QCOMPARE(item[u"ItemIsMenu"_s], false);
        const auto images = item[u"IconPixmap"_s].value<QDBusArgument>();
        QCOMPARE(images.currentSignature(), u"a(iiay)"_s);
        QVERIFY(!images.atEnd());
        QCOMPARE(item[u"ToolTip"_s].value<QDBusArgument>().currentSignature(), u"(sa(iiay)ss)"_s);
        m_busTray.reset();
        QVERIFY(hasIcon());
        Extension extension;
        QDBusConnection shell = QDBusConnection::connectToBus(bus(), u"shell"_s);
        QVERIFY(shell.registerVirtualObject(u"/org/tovel"_s, &extension, QDBusConnection::SubPath));
        for (const bool serves : {false, true}) {
            extension.serves = serves;
            QVERIFY(shell.registerService(u"org.tovel.Shell1"_s));
            QVERIFY(eventually([&] { return extension.questions == 1 + (serves ? 1 : 0); }));
            QVERIFY(serves ? eventually([this] { return !iconPlace(); }) : hasIcon());
            QVERIFY(shell.unregisterService(u"org.tovel.Shell1"_s));
            QVERIFY(hasIcon());
        }
    }

    void troubleOnTheBusIsOvercome_data()
    {
        QTest::addColumn<BusTray::Manner>("manner");
        QTest::newRow("silent") << BusTray::Manner::Silent;
        QTest::newRow("refusing") << BusTray::Manner::Refusing;
        QTest::newRow("mistyped later") << BusTray::Manner::Mistyped;
    }

    void troubleOnTheBusIsOvercome()
    {
        QFETCH(BusTray::Manner, manner);
        const bool early = manner != BusTray::Manner::Mistyped; // before the program
        come(false);
        if (early)
            m_user.stop();
        else
            QVERIFY(hasIcon());
        m_busTray.emplace(bus(), manner);
        if (early)
            QVERIFY(m_user.start());
        QVERIFY(eventually([this] { return m_busTray->questions() > 0; }));
        QCOMPARE(iconPlace().has_value(), !early);
        QVERIFY(panelIs(true));
        QVERIFY(!m_busTray->hasItem());
        m_busTray.reset();
        QVERIFY(hasIcon());
        click(1);
        QVERIFY(panelIs(false));
    }
};

QTEST_GUILESS_MAIN(TestTray)
#include "tst_tray.moc"
