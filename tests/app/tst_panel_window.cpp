#include "app/panel/tovel_window.h"
#include "app/panel/window_frame.h"
#include "platform/simulated/simulated_desktop.h"
#include "support/test.h"

#include <QApplication>

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

    void frameTextsAreReadStrictly()
    {
        const WindowFrame frame{QRect(-20, 30, 940, 720), Left};
        QVERIFY(parseFrame(u"-20 30 940 720 0 0 1280 800"_s) == frame);
        QVERIFY(parseFrame(frameText(frame)) == frame);
        for (const QString &text :
             {u""_s, u"-20 30 940 720 0 0 1280"_s, u"-20 30 940 720 0 0 1280 800 1"_s,
              u"-20 30 940 tall 0 0 1280 800"_s, u"-20 30 940.5 720 0 0 1280 800"_s,
              u"-20 30 0 720 0 0 1280 800"_s, u"-20 30 940 -720 0 0 1280 800"_s,
              u"99999 30 940 720 0 0 1280 800"_s, u"99999999999 30 940 720 0 0 1280 800"_s})
            QVERIFY2(!parseFrame(text), qPrintable(text));
    }

    void framesAreBroughtOntoScreens()
    {
        const auto fitted = [](const QRect &frame, const QList<QRect> &screens = {Left}) {
            const QRect result = fittedFrame(frame, screens);
            return fittedFrame(result, screens) == result ? result : QRect();
        };
        // In reach, its upper edge out of reach, its screen gone, too large for what is left.
        QCOMPARE(fitted({1200, 700, 940, 700}), QRect(1200, 700, 940, 700));
        QCOMPARE(fitted({100, -690, 940, 700}), QRect(100, 0, 940, 700));
        QCOMPARE(fitted({1500, 300, 940, 700}), QRect(340, 100, 940, 700));
        QCOMPARE(fitted({1300, 20, 1900, 1000}), QRect(0, 0, 1280, 800));
        // Across two screens, beside the nearest of them, between screens of two heights.
        const QList<QRect> two{Left, Right};
        QCOMPARE(fitted({800, 10, 1600, 700}, two), QRect(800, 10, 1600, 700));
        QCOMPARE(fitted({3300, 200, 940, 700}, two), QRect(2260, 200, 940, 700));
        QCOMPARE(fitted({300, 900, 940, 700}, two), QRect(300, 100, 940, 700));
        QCOMPARE(fitted({5000, 5000, 940, 700}, {}), QRect(5000, 5000, 940, 700));
        // On a screen that is not what it was, reach is not enough.
        QCOMPARE(wholeFrame({1200, 700, 940, 700}, {Left}), QRect(340, 100, 940, 700));
        QCOMPARE(wholeFrame({800, 10, 1600, 700}, two), QRect(800, 10, 1600, 700));
        QCOMPARE(centeredFrame({1400, 700}, Left), QRect(0, 50, 1280, 700));
    }

    void closingOnlyHides()
    {
        show();
        QVERIFY(m_panel->close());
        QCOMPARE(m_hidden, 1);
        m_simulation->clock().advance(1);
        m_panel->bringToFrontAfterMigration();
        QVERIFY(!m_panel->isVisible());
        show();
        QVERIFY(m_panel->isVisible());
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

    void asksForAllDesktopsUntilTheSessionHasIt()
    {
        const auto asked = [this](double seconds) {
            m_simulation->clock().advance(seconds);
            return m_simulation->takeJournal().filter(u"collectionBehavior"_s).size();
        };
        show();
        QVERIFY(asked(0.2) > 1);
        m_panel->orderOut();
        QCOMPARE((m_simulation->takeJournal(), asked(1)), 0);
        show();
        QVERIFY(asked(5) > 1);
        QCOMPARE(asked(60), 0);
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
        QVERIFY(defaults().dictionaryRepresentation().text(Key)->contains(u" 910 520 "_s));
        m_panel->orderOut();
        QCOMPARE(defaults().takeWrites(), QStringList());
        m_simulation->clock().advance(1);
        show();
        m_panel->resize(920, 530);
        m_panel->orderOut(); // before it came to rest
        QCOMPARE(defaults().takeWrites(), QStringList{Key});
    }

    void takesAKeptFrame()
    {
        QVERIFY(!m_panel->setFrameUsingName(Name));
        m_panel->center();
        const QRect centered = m_panel->geometry();
        QVERIFY(Left.contains(centered));
        defaults().put(Key, u"1 2 3"_s);
        QVERIFY(!m_panel->setFrameUsingName(Name));
        defaults().put(Key, 12);
        QVERIFY(!m_panel->setFrameUsingName(Name));
        QCOMPARE(m_panel->geometry(), centered);
        defaults().put(Key, u"5000 5000 900 500 4000 4000 2000 2000"_s);
        QVERIFY(m_panel->setFrameUsingName(Name));
        QCOMPARE(m_panel->size(), QSize(900, 500));
        QVERIFY(Left.contains(QRect(m_panel->pos(), QSize(902, 530))));
        // Partly out of the screen: only as long as it is the same one.
        defaults().put(Key, u"700 200 900 500 0 0 1280 800"_s);
        QVERIFY(m_panel->setFrameUsingName(Name));
        QCOMPARE(m_panel->pos(), QPoint(700, 200));
        defaults().put(Key, u"700 200 900 500 0 0 1920 1080"_s);
        QVERIFY(m_panel->setFrameUsingName(Name));
        QVERIFY(Left.contains(QRect(m_panel->pos(), QSize(902, 530))));
    }

private:
    void show()
    {
        // Lets a hiding end.
        QCoreApplication::processEvents();
        m_panel->makeKeyAndOrderFront();
        QVERIFY(QTest::qWaitForWindowExposed(m_panel.get()));
    }

    MemoryUserDefaults &defaults() { return m_simulation->userDefaults().standardUserDefaults(); }

    std::unique_ptr<SimulatedDesktop> m_simulation;
    std::optional<PlatformInstallation> m_installation;
    std::unique_ptr<TovelWindow> m_panel;
    int m_hidden = 0;
};

QTEST_MAIN(TestPanelWindow)
#include "tst_panel_window.moc"
