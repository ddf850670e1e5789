#include "platform/simulated/simulated_desktop.h"
#include "views/components/chosen_app_card.h"
#include "views/components/plain_button.h"
#include "views/components/reopen_button.h"
#include "views/components/text_block.h"

#include <QAccessible>
#include <QContextMenuEvent>
#include <QMenu>
#include <QTest>

#include <coroutine>
#include <memory>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

// Suspends whoever awaits it until the test goes on.
struct Gate
{
    bool await_ready() const noexcept { return false; }
    void await_suspend(std::coroutine_handle<> handle) { *waiting = handle; }
    void await_resume() const noexcept { }

    std::coroutine_handle<> *waiting;
};

class Paintings final : public QObject
{
public:
    int count = 0;

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        count += event->type() == QEvent::Paint;
        return false;
    }
};

} // namespace

class TestChosenAppCard : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_desktop = std::make_unique<SimulatedDesktop>();
        m_desktop->addApplication({.pid = 7, .bundleIdentifier = u"mail"_s, .name = u"Mail"_s});
        m_running = {.id = u"mail"_s,
                     .name = u"Mail & More"_s,
                     .running = m_desktop->platform().workspace().runningApplications().first()};
        m_closed = {.id = u"mail"_s, .name = u"Mail & More"_s};
        m_waiting = nullptr;
        m_reopened = 0;
        m_removed = 0;
    }

    void cleanup()
    {
        m_running = {};
        m_desktop.reset();
    }

    void showsWhetherTheApplicationRuns()
    {
        const auto card = makeCard(m_running);
        QVERIFY(!reopenButton(*card).isVisible());
        QCOMPARE(texts(*card), QStringList{u"Mail & More"_s});
        QVERIFY(card->height() >= 120);

        card->setApp(m_closed);
        QVERIFY(reopenButton(*card).isVisible());
        QCOMPARE(texts(*card), (QStringList{u"App closed"_s, u"Mail & More"_s}));
        QCOMPARE(reopenButton(*card).text(), u"Reopen"_s);
        QVERIFY(card->height() >= 120);

        Paintings paintings;
        QVERIFY(QTest::qWaitForWindowExposed(card.get()));
        QCoreApplication::processEvents();
        card->installEventFilter(&paintings);
        for (QObject *child : card->children())
            child->installEventFilter(&paintings);
        card->setApp(m_closed);
        QCoreApplication::processEvents();
        QCOMPARE(paintings.count, 0);
    }

    void isReadAsAGroupOfItsParts()
    {
        const auto card = makeCard(m_closed);
        const auto read
            = [](QWidget *widget) { return QAccessible::queryAccessibleInterface(widget); };
        QCOMPARE(read(card.get())->role(), QAccessible::Grouping);
        QCOMPARE(read(card.get())->text(QAccessible::Name), u"Mail & More"_s);
        QStringList parts;
        for (int i = 0; i < read(card.get())->childCount(); ++i) {
            const QAccessibleInterface *part = read(card.get())->child(i);
            if (!part->state().invisible)
                parts.append(part->text(QAccessible::Name));
        }
        QCOMPARE(parts,
                 (QStringList{u"App closed"_s, u"Mail & More"_s, u"Reopen Mail & More"_s,
                              u"Remove Mail & More"_s}));
    }

    void isOpeningUntilTheTaskEnds()
    {
        const auto card = makeCard(m_closed);
        QTest::mouseClick(&reopenButton(*card), Qt::LeftButton);
        QTest::mouseClick(&reopenButton(*card), Qt::LeftButton);
        QCOMPARE(m_reopened, 1);
        QCOMPARE(reopenButton(*card).text(), u"Opening…"_s);
        QVERIFY(!reopenButton(*card).isActionable());
        m_waiting.resume();
        QCOMPARE(reopenButton(*card).text(), u"Reopen"_s);
        QVERIFY(reopenButton(*card).isActionable());
        QCOMPARE(m_removed, 0);
    }

    void mayGoWhileOpening()
    {
        auto card = makeCard(m_closed);
        QTest::mouseClick(&reopenButton(*card), Qt::LeftButton);
        card.reset();
        m_waiting.resume();
        QCOMPARE(m_reopened, 1);
    }

    void isRemovedByItsMark()
    {
        auto card = makeCard(m_running);
        auto *mark = card->findChild<PlainButton *>();
        const auto look = [&] { return mark->grab().toImage(); };
        const auto leave = [&](QEvent::Type type) {
            QEvent event(type);
            QCoreApplication::sendEvent(card.get(), &event);
        };
        leave(QEvent::Leave);
        const QImage hidden = look();
        leave(QEvent::Enter);
        QVERIFY(look() != hidden);
        leave(QEvent::Leave);
        QCOMPARE(look(), hidden);
        mark->setFocus(Qt::TabFocusReason);
        QTRY_VERIFY(look() != hidden);

        QTest::mouseClick(mark, Qt::LeftButton);
        QCOMPARE(m_removed, 1);
        QPointer<ChosenAppCard> gone(card.get());
        card->onRemove([&] { card.reset(); });
        QTest::keyClick(mark, Qt::Key_Return);
        QVERIFY(!gone);
    }

    void isRemovedFromItsMenu()
    {
        const auto card = makeCard(m_running);
        for (const auto reason : {QContextMenuEvent::Mouse, QContextMenuEvent::Keyboard}) {
            QContextMenuEvent asks(reason, {5, 5}, card->mapToGlobal(QPoint(5, 5)));
            QCoreApplication::sendEvent(card->findChild<PlainButton *>(), &asks);
            auto *menu = card->findChild<QMenu *>();
            QVERIFY(menu);
            QCOMPARE(menu->actions().size(), 1);
            QCOMPARE(menu->actions().first()->text(), u"Remove Mail && More"_s);
            const int before = m_removed;
            menu->setActiveAction(menu->actions().first());
            QTest::keyClick(menu, Qt::Key_Return);
            QTRY_COMPARE(m_removed, before + 1);
            QTRY_VERIFY(!card->findChild<QMenu *>());
        }
        QCOMPARE(m_reopened, 0);
    }

private:
    std::unique_ptr<ChosenAppCard> makeCard(const RunningApp &app)
    {
        auto card = std::make_unique<ChosenAppCard>(app);
        card->onRemove([this] { ++m_removed; });
        card->onReopen([this] { return wait(); });
        card->show();
        card->resize(200, card->heightForWidth(200));
        return card;
    }

    QCoro::Task<> wait()
    {
        ++m_reopened;
        Gate gate{&m_waiting};
        co_await gate;
    }

    static ReopenButton &reopenButton(const ChosenAppCard &card)
    {
        return *card.findChild<ReopenButton *>();
    }

    static QStringList texts(const ChosenAppCard &card)
    {
        QStringList result;
        for (const TextLabel *label : card.findChildren<TextLabel *>()) {
            if (label->isVisible())
                result.append(label->text());
        }
        return result;
    }

    std::unique_ptr<SimulatedDesktop> m_desktop;
    RunningApp m_running;
    RunningApp m_closed;
    std::coroutine_handle<> m_waiting;
    int m_reopened = 0;
    int m_removed = 0;
};

} // namespace tovel

QTEST_MAIN(tovel::TestChosenAppCard)
#include "tst_chosen_app_card.moc"
