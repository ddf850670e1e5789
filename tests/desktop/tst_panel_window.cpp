#include "app/panel/tovel_window.h"
#include "platform/linux/linux_desktop.h"
#include "platform/linux/x11/x11_session.h"
#include "support/private_session.h"
#include "support/test_client.h"

#include <QApplication>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>
#include <QTest>
#include <QTextStream>
#include <QWindow>

#include <cstdio>

using namespace tovel;
using namespace Qt::StringLiterals;

namespace {

constexpr char Inside[] = "TOVEL_TEST_INSIDE";
const QString Name = QStringLiteral("TestWindow");

void run(const QString &program, const QStringList &arguments)
{
    QProcess::execute(program, arguments);
}

// Where the content is on the screen, by the server's word.
QRect contentOf(std::uint32_t window)
{
    QProcess process;
    process.start(u"xwininfo"_s, {u"-id"_s, QString::number(window)});
    process.waitForFinished();
    const QString out = QString::fromLatin1(process.readAllStandardOutput());
    const auto number = [&out](const QString &label) {
        return QRegularExpression(label + u": +(-?\\d+)"_s).match(out).captured(1).toInt();
    };
    return QRect(number(u"Absolute upper-left X"_s), number(u"Absolute upper-left Y"_s),
                 number(u"Width"_s), number(u"Height"_s));
}

} // namespace

// The panel's window in a session with a window manager; runs inside that session.
class TestPanelWindow final : public QObject
{
    Q_OBJECT

public:
    TestPanelWindow()
        : m_client(qgetenv("DISPLAY"))
        , m_desktop(x11::X11Session::open({}))
        , m_installation(m_desktop)
    { }

private Q_SLOTS:
    void init()
    {
        m_client.showDesktop(0);
        makePanel();
    }

    void cleanup() { m_panel.reset(); }

    void isOnEveryDesktopAfterEachShowing()
    {
        for (int round = 0; round < 3; ++round) {
            show();
            QVERIFY(eventually([this] { return isOnAll(); }));
            m_client.showDesktop(2);
            QVERIFY(eventually(
                [this] { return m_client.number(m_client.root(), "_NET_CURRENT_DESKTOP") == 2u; }));
            QVERIFY(eventually([this] { return m_panel->windowHandle()->isExposed(); }));
            QVERIFY(isOnAll());
            m_panel->orderOut();
            if (round == 0)
                QVERIFY(eventually([this] { return !m_client.isManaged(number()); }));
        }
    }

    void staysAboveOnlyWhileItFloats()
    {
        m_panel->setLevel(NSFloatingWindowLevel);
        show();
        const std::uint32_t first = number();
        QVERIFY(eventually([this] { return isAbove(); }));
        m_panel->setLevel(NSNormalWindowLevel);
        QVERIFY(eventually([this] { return !isAbove(); }));
        m_panel->setLevel(NSFloatingWindowLevel);
        QVERIFY(eventually([this] { return isAbove(); }));
        m_panel->orderOut();
        show();
        QVERIFY(eventually([this] { return isAbove(); }));
        QVERIFY(m_panel->isVisible());
        QCOMPARE(number(), first);
    }

    void isNotMinimised()
    {
        show();
        // Motif's functions: resize 2, move 4, minimise 8, maximise 16, close 32.
        const QByteArray hints = m_client.property(number(), "_MOTIF_WM_HINTS");
        QCOMPARE(int(hints.at(4)) & 0x3F, 2 | 4 | 16 | 32);
        m_client.minimize(number());
        QTest::qWait(300);
        QVERIFY(eventually([this] { return m_panel->windowHandle()->isExposed() && !isHidden(); }));
        QVERIFY(!m_panel->isMinimized());
        QVERIFY(isOnAll());
    }

    void comesBackWhereItStood()
    {
        show();
        m_panel->move(143, 57);
        m_panel->resize(930, 560);
        QVERIFY(eventually([this] { return contentOf(number()).size() == QSize(930, 560); }));
        settle();
        const QRect content = contentOf(number());
        for (int round = 0; round < 3; ++round) {
            m_panel->orderOut();
            if (round != 1)
                QVERIFY(eventually([this] { return !m_client.isManaged(number()); }));
            show();
            settle();
            QCOMPARE(contentOf(number()), content);
        }
        for (int round = 0; round < 3; ++round) {
            if (round == 1)
                m_panel->close();
            m_panel.reset();
            makePanel();
            QVERIFY(m_panel->setFrameUsingName(Name));
            show();
            settle();
            QCOMPARE(contentOf(number()), content);
        }
    }

    void leavesTheLargeStatesForItsOldFrame()
    {
        show();
        m_panel->move(143, 57);
        settle();
        const QRect content = contentOf(number());
        m_panel->showMaximized();
        QVERIFY(eventually([&] { return contentOf(number()).width() > content.width(); }));
        m_panel->orderOut();
        show();
        QVERIFY(eventually([this] { return hasState("_NET_WM_STATE_MAXIMIZED_VERT"); }));
        settle();
        QVERIFY(contentOf(number()).width() > content.width());
        m_panel->showNormal();
        QVERIFY(eventually([&] { return contentOf(number()) == content; }));
    }

    void movesByItsBackground()
    {
        show();
        settle();
        const QRect before = contentOf(number());
        drag(m_button->mapToGlobal(QPoint(20, 10)), QPoint(60, 40));
        settle();
        QCOMPARE(contentOf(number()), before);

        drag(m_panel->mapToGlobal(QPoint(300, 300)), QPoint(-60, 25));
        QVERIFY(eventually([&] { return contentOf(number()).topLeft() != before.topLeft(); }));
        settle();

        const int clicks = m_clicks;
        const QPoint place = m_button->mapToGlobal(QPoint(20, 10));
        run(u"xdotool"_s,
            {u"mousemove"_s, QString::number(place.x()), QString::number(place.y()), u"click"_s,
             u"1"_s});
        QVERIFY(eventually([&] { return m_clicks == clicks + 1; }));
    }

private:
    void makePanel()
    {
        m_panel = std::make_unique<TovelWindow>();
        auto *content = new QWidget;
        m_button = new QPushButton(u"Press"_s, content);
        m_button->setGeometry(40, 40, 120, 40);
        connect(m_button, &QPushButton::clicked, this, [this] { ++m_clicks; });
        m_panel->setContentWidget(content);
        m_panel->resize(910, 560);
        m_panel->setFrameAutosaveName(Name);
    }

    void show()
    {
        m_panel->makeKeyAndOrderFront();
        QVERIFY(eventually([this] {
            return m_client.isManaged(number()) && m_panel->windowHandle()->isExposed();
        }));
        QVERIFY(eventually([this] { return m_panel->isActiveWindow(); }));
    }

    // Lets the frame be kept.
    void settle() { QTest::qWait(500); }

    void drag(QPoint from, QPoint way)
    {
        const auto to = [](QPoint point) {
            return QStringList{u"mousemove"_s, QString::number(point.x()),
                               QString::number(point.y())};
        };
        const QStringList steps[]
            = {to(from),           {u"mousedown"_s, u"1"_s}, to(from + way / 3),
               to(from + way / 2), to(from + way),           {u"mouseup"_s, u"1"_s}};
        for (const QStringList &step : steps) {
            run(u"xdotool"_s, step);
            QTest::qWait(60);
        }
    }

    std::uint32_t number() const { return static_cast<std::uint32_t>(m_panel->winId()); }
    bool isOnAll() const { return m_client.number(number(), "_NET_WM_DESKTOP") == allDesktops; }
    bool hasState(const QByteArray &name) const
    {
        const QByteArray states = m_client.property(number(), "_NET_WM_STATE");
        return states.contains(words({m_client.atom(name)}));
    }
    bool isAbove() const { return hasState("_NET_WM_STATE_ABOVE"); }
    bool isHidden() const { return hasState("_NET_WM_STATE_HIDDEN"); }

    TestClient m_client;
    LinuxDesktop m_desktop;
    PlatformInstallation m_installation;
    std::unique_ptr<TovelWindow> m_panel;
    QPushButton *m_button = nullptr;
    int m_clicks = 0;
};

int main(int argc, char *argv[])
{
    if (qEnvironmentVariableIsSet(Inside)) {
        QApplication application(argc, argv);
        QApplication::setQuitOnLastWindowClosed(false);
        TestPanelWindow test;
        return QTest::qExec(&test, argc, argv);
    }
    const QCoreApplication application(argc, argv);
    PrivateSession session(managerFromEnvironment());
    if (!session.isReady())
        return 1;
    QProcessEnvironment inside;
    inside.insert(QString::fromLatin1(Inside), u"1"_s);
    const Outcome outcome = session.run(QCoreApplication::applicationFilePath(),
                                        QCoreApplication::arguments().mid(1), inside);
    QTextStream(stdout) << outcome.out;
    QTextStream(stderr) << outcome.err;
    return outcome.status;
}

#include "tst_panel_window.moc"
