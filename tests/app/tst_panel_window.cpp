#include "app/panel/toolbar_row.h"
#include "app/panel/tovel_window.h"
#include "app/panel/window_frame.h"
#include "platform/simulated/simulated_desktop.h"
#include "views/theme.h"

#include <QApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryFile>
#include <QTest>
#include <QWindow>

using namespace tovel;
using namespace Qt::StringLiterals;

namespace {

const QString Name = QStringLiteral("TestWindow");
const QString Key = QStringLiteral("NSWindow Frame TestWindow");

const QRect Left(0, 0, 1280, 800);
const QRect Right(1280, 0, 1920, 1080);

} // namespace

class TestPanelWindow final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_simulation = std::make_unique<SimulatedDesktop>();
        m_installation.emplace(m_simulation->platform());
        m_panel = std::make_unique<TovelWindow>();
        m_panel->setFrameAutosaveName(Name);
        m_hidden = 0;
        m_panel->setHiddenHandler([this] {
            QVERIFY(!m_panel->isVisible());
            ++m_hidden;
        });
    }

    void cleanup()
    {
        m_panel.reset();
        m_installation.reset();
        m_simulation.reset();
    }

    void frameTextsAreReadStrictly_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("isRead");

        QTest::newRow("whole") << u"-20 30 940 720 0 0 1280 800"_s << true;
        QTest::newRow("more blanks") << u"  -20 30  940 720 0 0 1280 800 "_s << true;
        QTest::newRow("empty") << QString() << false;
        QTest::newRow("a number short") << u"-20 30 940 720 0 0 1280"_s << false;
        QTest::newRow("a number more") << u"-20 30 940 720 0 0 1280 800 1"_s << false;
        QTest::newRow("no number") << u"-20 30 940 tall 0 0 1280 800"_s << false;
        QTest::newRow("a fraction") << u"-20 30 940.5 720 0 0 1280 800"_s << false;
        QTest::newRow("no width") << u"-20 30 0 720 0 0 1280 800"_s << false;
        QTest::newRow("negative height") << u"-20 30 940 -720 0 0 1280 800"_s << false;
        QTest::newRow("too far") << u"99999 30 940 720 0 0 1280 800"_s << false;
        QTest::newRow("out of range") << u"99999999999 30 940 720 0 0 1280 800"_s << false;
    }

    void frameTextsAreReadStrictly()
    {
        QFETCH(QString, text);
        QFETCH(bool, isRead);
        const WindowFrame frame{QRect(-20, 30, 940, 720), Left};
        QVERIFY(parseFrame(text) == (isRead ? std::optional(frame) : std::nullopt));
        QVERIFY(parseFrame(frameText(frame)) == frame);
    }

    void framesAreBroughtOntoScreens_data()
    {
        QTest::addColumn<QList<QRect>>("screens");
        QTest::addColumn<QRect>("frame");
        QTest::addColumn<QRect>("fitted");

        const QList<QRect> one{Left};
        const QList<QRect> two{Left, Right};
        const auto row
            = [](const char *name, const QList<QRect> &screens, const QRect &frame,
                 const QRect &fitted) { QTest::newRow(name) << screens << frame << fitted; };
        row("stays", one, {100, 50, 940, 700}, {100, 50, 940, 700});
        row("partly off, in reach", one, {1200, 700, 940, 700}, {1200, 700, 940, 700});
        row("upper edge out of reach", one, {100, -690, 940, 700}, {100, 0, 940, 700});
        row("a sliver in reach", one, {1270, 100, 940, 700}, {340, 100, 940, 700});
        row("its screen is gone", one, {1500, 300, 940, 700}, {340, 100, 940, 700});
        row("too large for what is left", one, {1300, 20, 1900, 1000}, {0, 0, 1280, 800});
        row("across two screens", two, {800, 10, 1600, 700}, {800, 10, 1600, 700});
        row("nearest of two", two, {3300, 200, 940, 700}, {2260, 200, 940, 700});
        row("between screens of two heights", two, {300, 900, 940, 700}, {300, 100, 940, 700});
        row("no screen", {}, {5000, 5000, 940, 700}, {5000, 5000, 940, 700});
    }

    void framesAreBroughtOntoScreens()
    {
        QFETCH(QList<QRect>, screens);
        QFETCH(QRect, frame);
        QFETCH(QRect, fitted);
        QCOMPARE(fittedFrame(frame, screens), fitted);
        QCOMPARE(fittedFrame(fitted, screens), fitted);
        QCOMPARE(centeredFrame({1400, 700}, Left), QRect(0, 50, 1280, 700));
    }

    void isLaidOutAroundItsMiddle()
    {
        QCOMPARE(m_panel->size(), QSize(940, 720));
        QCOMPARE(m_panel->minimumSize(), QSize(900, 492));
        QCOMPARE(m_panel->windowTitle(), u"Tovel"_s);
        auto *title = new QWidget;
        auto *settings = new QWidget;
        auto *content = new QWidget;
        content->setMinimumSize(2000, 2000);
        m_panel->setSettingsWidget(settings);
        m_panel->setTitleWidget(title);
        m_panel->setContentWidget(content);
        show();
        const auto place = [this](const QWidget *widget) {
            return QRect(widget->mapTo(m_panel.get(), QPoint()), widget->size());
        };
        QCOMPARE(place(title), QRect(404, 10, 132, 32));
        QCOMPARE(place(settings), QRect(884, 10, 36, 32));
        QCOMPARE(place(content).topLeft(), QPoint(0, 52));
        QCOMPARE(m_panel->size(), QSize(940, 720));
        m_panel->setLayoutDirection(Qt::RightToLeft);
        QCOMPARE(place(settings), QRect(20, 10, 36, 32));
        QCOMPARE(m_panel->grab().toImage().pixelColor(200, 20),
                 TovelTheme::chromeColor(m_panel->palette()));
    }

    void escapeHidesUnlessSomethingTakesIt()
    {
        auto *content = new QWidget;
        auto *plain = new QPushButton(content);
        auto *greedy = new Greedy(content);
        m_panel->setContentWidget(content);
        show();
        greedy->setFocus();
        QTest::keyClick(m_panel->windowHandle(), Qt::Key_Escape);
        QVERIFY(m_panel->isVisible());
        plain->setFocus();
        QTest::keyClick(m_panel->windowHandle(), Qt::Key_A);
        QVERIFY(m_panel->isVisible());
        QCOMPARE(m_hidden, 0);
        QTest::keyClick(m_panel->windowHandle(), Qt::Key_Escape);
        QVERIFY(!m_panel->isVisible());
        QCOMPARE(m_hidden, 1);
    }

    void closingOnlyHides()
    {
        show();
        QVERIFY(m_panel->close());
        QCOMPARE(m_hidden, 1);
        QVERIFY(!m_panel->isVisible());
        m_simulation->clock().advance(1);
        m_panel->bringToFrontAfterMigration();
        QVERIFY(!m_panel->isVisible());
        show();
        QVERIFY(m_panel->isVisible());
        m_panel->orderOut();
        m_panel->orderOut();
        QCOMPARE(m_hidden, 3);
    }

    void asksForItsPlaceAfterEachShowing()
    {
        m_panel->setLevel(NSFloatingWindowLevel);
        QCOMPARE(m_simulation->takeJournal(), QStringList());
        for (int round = 0; round < 2; ++round) {
            show();
            const QString number = QString::number(m_panel->windowHandle()->winId());
            QCOMPARE(
                m_simulation->takeJournal(),
                (QStringList{u"collectionBehavior %1 101"_s.arg(number),
                             u"level %1 3"_s.arg(number), u"makeKeyAndOrderFront "_s + number}));
            m_panel->setLevel(NSFloatingWindowLevel);
            QCOMPARE(m_simulation->takeJournal(), QStringList());
            m_panel->setLevel(NSNormalWindowLevel);
            m_panel->bringToFrontAfterMigration();
            QCOMPARE(
                m_simulation->takeJournal(),
                (QStringList{u"level %1 0"_s.arg(number), u"makeKeyAndOrderFront "_s + number}));
            m_panel->orderOut();
            m_panel->setLevel(NSFloatingWindowLevel);
            m_simulation->clock().advance(1);
        }
        QCOMPARE(m_simulation->takeJournal(), QStringList());
    }

    void showsAMomentAfterItWasHidden()
    {
        show();
        m_panel->orderOut();
        m_panel->makeKeyAndOrderFront();
        QVERIFY(!m_panel->isVisible());
        m_simulation->clock().advance(0.2);
        QVERIFY(m_panel->isVisible());

        m_panel->orderOut();
        m_panel->makeKeyAndOrderFront();
        m_panel->orderOut();
        m_simulation->clock().advance(1);
        QVERIFY(!m_panel->isVisible());
    }

    void keepsTheFrameOnceItRests()
    {
        m_panel->move(30, 20);
        show();
        m_simulation->clock().advance(1);
        defaults().takeWrites();
        m_panel->move(40, 25);
        m_simulation->clock().advance(0.2);
        m_panel->resize(910, 520);
        m_simulation->clock().advance(0.2);
        QCOMPARE(defaults().takeWrites(), QStringList());
        m_simulation->clock().advance(0.2);
        QCOMPARE(defaults().takeWrites(), QStringList{Key});
        QVERIFY(defaults().text(Key)->startsWith(keptPlace()));
        m_panel->orderOut();
        QCOMPARE(defaults().takeWrites(), QStringList());
        m_simulation->clock().advance(1);

        // Hidden before it came to rest, and maximised.
        show();
        m_panel->resize(920, 530);
        m_panel->orderOut();
        QCOMPARE(defaults().takeWrites(), QStringList{Key});
        QVERIFY(defaults().text(Key)->contains(u" 920 530 "_s));
        m_simulation->clock().advance(1);
        show();
        m_panel->showMaximized();
        m_simulation->clock().advance(1);
        m_panel->orderOut();
        QCOMPARE(defaults().takeWrites(), QStringList());
    }

    void keepsNothingWithoutAName()
    {
        m_panel->setFrameAutosaveName({});
        show();
        m_panel->move(60, 20);
        m_simulation->clock().advance(1);
        m_panel->orderOut();
        QVERIFY(defaults().values().isEmpty());
    }

    void takesAKeptFrame()
    {
        QVERIFY(!m_panel->setFrameUsingName(Name));
        m_panel->center();
        const QRect centered = m_panel->geometry();
        QCOMPARE(m_panel->size(), TovelWindow::InitialSize);
        // Room is left for a manager's frame.
        QVERIFY(QRect(150, 20, 30, 20).contains(centered.topLeft()));
        defaults().setObject(Key, u"1 2 3"_s);
        QVERIFY(!m_panel->setFrameUsingName(Name));
        defaults().setObject(Key, 12);
        QVERIFY(!m_panel->setFrameUsingName(Name));
        QCOMPARE(m_panel->geometry(), centered);
        defaults().setObject(Key, u"5000 5000 900 500 4000 4000 2000 2000"_s);
        QVERIFY(m_panel->setFrameUsingName(Name));
        QCOMPARE(m_panel->size(), QSize(900, 500));
        QVERIFY(QRect(0, 0, 1280, 800).contains(QRect(m_panel->pos(), QSize(902, 530))));
    }

    void moves_data()
    {
        QTest::addColumn<bool>("byButton");
        QTest::addColumn<int>("way");
        QTest::addColumn<bool>("moves");

        const int least = QApplication::startDragDistance();
        QTest::newRow("by the background") << false << least + 20 << true;
        QTest::newRow("not before a drag begins") << false << least - 2 << false;
        QTest::newRow("not by what takes the press") << true << least + 20 << false;
    }

    // The platform of this test has no manager that could move the window.
    void moves()
    {
        QFETCH(bool, byButton);
        QFETCH(int, way);
        QFETCH(bool, moves);
        auto *content = new QWidget;
        QWidget *pressed = byButton ? new QPushButton(content) : new QWidget(content);
        pressed->setGeometry(10, 10, 200, 100);
        m_panel->setContentWidget(content);
        show();
        const QPoint before = m_panel->pos();
        const QPoint start(20, 20);
        QTest::mousePress(pressed, Qt::LeftButton, {}, start);
        QTest::mouseMove(pressed, start + QPoint(way, 0));
        QCOMPARE(m_panel->pos(), before + QPoint(moves ? way : 0, 0));
        QTest::mouseRelease(pressed, Qt::LeftButton, {}, start);
        QTest::mouseMove(pressed, start + QPoint(-3 * way, 0));
        QCOMPARE(m_panel->pos(), before + QPoint(moves ? way : 0, 0));
    }

private:
    // Takes every key.
    class Greedy final : public QLineEdit
    {
    public:
        using QLineEdit::QLineEdit;

    protected:
        void keyPressEvent(QKeyEvent *event) override { event->accept(); }
    };

    void show()
    {
        // Lets a hiding end.
        QCoreApplication::processEvents();
        m_panel->makeKeyAndOrderFront();
        QVERIFY(QTest::qWaitForWindowExposed(m_panel.get()));
    }

    QString keptPlace() const
    {
        return u"%1 %2 %3 %4 "_s.arg(m_panel->x())
            .arg(m_panel->y())
            .arg(m_panel->width())
            .arg(m_panel->height());
    }

    MemoryUserDefaults &defaults() { return m_simulation->userDefaults().standardUserDefaults(); }

    std::unique_ptr<SimulatedDesktop> m_simulation;
    std::optional<PlatformInstallation> m_installation;
    std::unique_ptr<TovelWindow> m_panel;
    int m_hidden = 0;
};

int main(int argc, char *argv[])
{
    QTemporaryFile screens;
    if (!screens.open())
        return 1;
    screens.write(R"({"screens": [{"name": "one", "x": 0, "y": 0, "width": 1280, "height": 800,
                                   "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1}]})");
    screens.close();
    qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + screens.fileName().toLocal8Bit());
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    TestPanelWindow test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_panel_window.moc"
