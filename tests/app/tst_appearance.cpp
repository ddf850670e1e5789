#include "app/panel/appearance_follower.h"
#include "app/panel/appearance_palette.h"
#include "app/panel/tovel_style.h"
#include "support/test.h"
#include "views/theme.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusVariant>
#include <QElapsedTimer>
#include <QMenu>
#include <QProcess>

#include <cmath>
#include <csignal>

#include <sys/prctl.h>

namespace {

constexpr char Service[] = "org.freedesktop.portal.Desktop";
constexpr char Path[] = "/org/freedesktop/portal/desktop";
const QString Appearance = QStringLiteral("org.freedesktop.appearance");
const QString Scheme = QStringLiteral("color-scheme");

// Contrast ratio of the Web Content Accessibility Guidelines, of a colour on an opaque one.
double contrast(const QColor &color, const QColor &ground)
{
    const auto luminance = [&](const QColor &of) {
        const auto linear = [&](float part, float below) {
            const double mixed = part * of.alphaF() + below * (1 - of.alphaF());
            return mixed <= 0.04045 ? mixed / 12.92 : std::pow((mixed + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(of.redF(), ground.redF())
            + 0.7152 * linear(of.greenF(), ground.greenF())
            + 0.0722 * linear(of.blueF(), ground.blueF());
    };
    const auto [low, high] = std::minmax({luminance(color), luminance(ground)});
    return (high + 0.05) / (low + 0.05);
}

} // namespace

// A portal that answers as it is told, or not at all.
class FakePortal final : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

public:
    QVariant answer; // invalid: the setting is not there
    bool isSilent = false;
    QDBusMessage held; // the question that was asked last
    int questions = 0;

public Q_SLOTS:
    QDBusVariant Read(const QString &space, const QString &key)
    {
        ++questions;
        held = message();
        if (isSilent)
            setDelayedReply(true);
        else if (!answer.isValid() || space != Appearance || key != Scheme)
            sendErrorReply(u"org.freedesktop.portal.Error.NotFound"_s, u"none"_s);
        return QDBusVariant(answer);
    }
};

class TestAppearance final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        const QString address = u"unix:path="_s + m_folder.filePath(u"bus"_s);
        m_daemon.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGTERM); });
        m_daemon.setStandardErrorFile(QProcess::nullDevice());
        // Without services of the machine's own.
        m_daemon.start(
            u"dbus-daemon"_s,
            {u"--nofork"_s, u"--print-address"_s, u"--config-file="_s + configuration(address)});
        QVERIFY(m_daemon.waitForReadyRead());
        m_ours.emplace(QDBusConnection::connectToBus(address, u"ours"_s));
        m_portals.emplace(QDBusConnection::connectToBus(address, u"portal's"_s));
        QVERIFY(m_ours->isConnected() && m_portals->isConnected());
        QVERIFY(!isDark(QApplication::palette()));
        m_session = QApplication::palette();
    }

    void cleanup()
    {
        stopPortal();
        QCOMPARE(QApplication::palette(), m_session);
    }

    void cleanupTestCase()
    {
        QDBusConnection::disconnectFromBus(u"ours"_s);
        QDBusConnection::disconnectFromBus(u"portal's"_s);
        m_daemon.terminate();
        QVERIFY(m_daemon.waitForFinished());
    }

    void followsWhatThePortalSays()
    {
        const auto wrapped
            = [](const QVariant &value) { return QVariant::fromValue(QDBusVariant(value)); };
        const QVariant deep = wrapped(wrapped(wrapped(wrapped(wrapped(wrapped(1U))))));
        for (const auto &[answer, dark] : {std::pair(QVariant(1U), true),
                                           {wrapped(1U), true},
                                           {wrapped(3U), false}, // unknown
                                           {wrapped(1), false}, // of another type
                                           {deep, false},
                                           {QVariant(), false}}) {
            m_portal.answer = answer;
            startPortal();
            const AppearanceFollower follower(*m_ours);
            QTRY_COMPARE(m_portal.questions, 1);
            settle();
            QCOMPARE(isDark(QApplication::palette()), dark);
            stopPortal();
        }
    }

    void changesWhileRunning()
    {
        m_portal.answer = 2U;
        startPortal();
        const AppearanceFollower follower(*m_ours);
        QTRY_COMPARE(m_portal.questions, 1);
        change(1U);
        QTRY_VERIFY(isDark(QApplication::palette()));
        // A burst costs few questions, and the last word counts.
        const int before = m_portal.questions;
        for (uint value = 0; value < 50; ++value)
            change(value % 2);
        change(0U);
        QTRY_COMPARE(QApplication::palette(), m_session);
        settle();
        QVERIFY(m_portal.questions - before < 25);
        QCOMPARE(QApplication::palette(), m_session);

        // Also while an older answer is on its way.
        m_portal.isSilent = true;
        change(1U);
        settle();
        m_portal.isSilent = false;
        change(2U);
        settle();
        m_portals->send(m_portal.held.createReply(QVariant::fromValue(QDBusVariant(1U))));
        settle();
        QCOMPARE(QApplication::palette(), m_session);

        const int asked = m_portal.questions;
        signal(Appearance, u"accent-color"_s, 1U);
        signal(u"org.example"_s, Scheme, 1U);
        settle();
        QCOMPARE(m_portal.questions, asked);
    }

    void comesAndGoesWithThePortal()
    {
        const AppearanceFollower follower(*m_ours);
        settle();
        QCOMPARE(QApplication::palette(), m_session);
        m_portal.answer = 1U;
        startPortal();
        QTRY_VERIFY(isDark(QApplication::palette()));
        // What it said last holds while it is away.
        stopPortal();
        change(2U);
        settle();
        QVERIFY(isDark(QApplication::palette()));
    }

    void isHeldUpByNothing()
    {
        m_portal.isSilent = true;
        startPortal();
        QElapsedTimer time;
        time.start();
        const AppearanceFollower silent(*m_ours);
        const auto daemon = static_cast<pid_t>(m_daemon.processId());
        QCOMPARE(kill(daemon, SIGSTOP), 0);
        const AppearanceFollower onSilentBus(*m_ours);
        QCOMPARE(kill(daemon, SIGCONT), 0);
        const AppearanceFollower withoutBus{QDBusConnection(u"none"_s)};
        QVERIFY(time.elapsed() < 10000); // of the 25 seconds that a question waits
        settle();
        QCOMPARE(QApplication::palette(), m_session);
    }

    void aPlainGreySessionGetsOurColors()
    {
        TovelStyle style;
        for (const auto &[window, replaced] : {std::pair(QColor(0xEF, 0xEF, 0xEF), true),
                                               {QColor(0x32, 0x32, 0x32), true},
                                               {QColor(Qt::white), false}, // of much contrast
                                               {QColor(Qt::black), false},
                                               {QColor(0xFD, 0xF6, 0xE3), false}}) {
            QPalette palette(window);
            style.polish(palette);
            const QPalette own = appearancePalette(isDark(palette));
            QCOMPARE(palette.color(QPalette::Window),
                     replaced ? own.color(QPalette::Window) : window);
            QCOMPARE(palette.color(QPalette::Highlight), TovelTheme::accent(palette));
        }
    }

    void menusShowTheStatesOfTheirItems()
    {
        QMenu menu;
        auto *style = new TovelStyle;
        style->setParent(&menu);
        menu.setStyle(style);
        QAction *item = menu.addAction(u"Item"_s);
        item->setCheckable(true);
        QMenu *inner = menu.addMenu(u"Inner"_s);
        menu.popup({});
        QCOMPARE(style->pixelMetric(QStyle::PM_SmallIconSize, nullptr, &menu), 20);
        QVERIFY(!menu.mask().contains(QPoint(0, 0))); // no compositor here: rounded all the same
        QVERIFY(menu.mask().contains(menu.rect().center()));
        QList<QImage> looks{menu.grab().toImage()};
        const std::function<void()> changes[] = {
            [&] { item->setChecked(true); },
            [&] { menu.setActiveAction(item); },
            [&] { item->setEnabled(false); },
            [&] { menu.setActiveAction(inner->menuAction()); },
            [&] { menu.setLayoutDirection(Qt::RightToLeft); },
        };
        for (const auto &change : changes) {
            change();
            looks.append(menu.grab().toImage());
            QCOMPARE(looks.count(looks.last()), 1);
        }
        // One that is disabled is not lit.
        QCOMPARE(looks[3].pixelColor(menu.actionGeometry(item).topLeft() + QPoint(4, 10)),
                 windowBackground(menu.palette()));
    }

    void textCanBeRead()
    {
        using enum QPalette::ColorRole;
        const auto isReadable = [](const QPalette &palette, QPalette::ColorRole ground,
                                   const QList<QPalette::ColorRole> &texts) {
            return std::ranges::all_of(texts, [&](QPalette::ColorRole text) {
                return contrast(palette.color(text), palette.color(ground)) >= 4.5;
            });
        };
        for (const QPalette &palette : {appearancePalette(false), appearancePalette(true)}) {
            for (const auto ground : {Window, Base})
                QVERIFY(isReadable(
                    palette, ground,
                    {ground == Base ? Text : WindowText, Link, LinkVisited, PlaceholderText}));
            QVERIFY(isReadable(palette, AlternateBase, {Text}));
            QVERIFY(isReadable(palette, Button, {ButtonText}));
            QVERIFY(isReadable(palette, Highlight, {HighlightedText}));
            QVERIFY(isReadable(palette, ToolTipBase, {ToolTipText}));
        }
        // Our own colours, also on what a session brings.
        for (const QColor &window : {QColor(246, 245, 248), QColor(30, 27, 42)}) {
            const QPalette palette(window);
            for (const QColor &ground : {windowBackground(palette), controlBackground(palette)})
                QVERIFY(contrast(secondary(palette), ground) > 4.5);
            QVERIFY(contrast(systemOrange(palette), TovelTheme::chrome(palette)) > 4.5);
        }
    }

private:
    QString configuration(const QString &address) const
    {
        QFile file(m_folder.filePath(u"bus.conf"_s));
        if (file.open(QIODevice::WriteOnly)) {
            file.write("<busconfig><type>session</type><listen>" + address.toUtf8()
                       + "</listen><policy context=\"default\"><allow send_destination=\"*\"/>"
                         "<allow own=\"*\"/><allow receive_sender=\"*\"/></policy></busconfig>");
        }
        return file.fileName();
    }

    void startPortal()
    {
        m_portal.questions = 0;
        m_portals->registerObject(QLatin1StringView(Path), &m_portal,
                                  QDBusConnection::ExportAllSlots);
        QVERIFY(m_portals->registerService(QLatin1StringView(Service)));
    }
    void stopPortal()
    {
        m_portals->unregisterService(QLatin1StringView(Service));
        m_portals->unregisterObject(QLatin1StringView(Path));
        m_portal.isSilent = false;
    }
    void signal(const QString &space, const QString &key, uint value)
    {
        QDBusMessage message = QDBusMessage::createSignal(
            QLatin1StringView(Path), u"org.freedesktop.portal.Settings"_s, u"SettingChanged"_s);
        message << space << key << QVariant::fromValue(QDBusVariant(value));
        m_portals->send(message);
    }
    void change(uint value)
    {
        m_portal.answer = value;
        signal(Appearance, Scheme, value);
    }
    // Until what was said has arrived, been asked about, and been answered.
    void settle()
    {
        const QDBusMessage ping = QDBusMessage::createMethodCall(
            m_portals->baseService(), u"/"_s, u"org.freedesktop.DBus.Peer"_s, u"Ping"_s);
        for (int i = 0; i < 4; ++i) {
            const QDBusPendingCall answer = m_ours->asyncCall(ping);
            QTRY_VERIFY(answer.isFinished());
            QCoreApplication::processEvents();
        }
    }

    QTemporaryDir m_folder;
    QProcess m_daemon;
    std::optional<QDBusConnection> m_ours;
    std::optional<QDBusConnection> m_portals;
    FakePortal m_portal;
    QPalette m_session;
};

QTEST_MAIN(TestAppearance)
#include "tst_appearance.moc"
