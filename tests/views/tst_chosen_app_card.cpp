#include "views/components/chosen_app_card.h"
#include "views/components/plain_button.h"
#include "views/components/reopen_button.h"

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

} // namespace

class TestChosenAppCard : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_waiting = nullptr;
        m_reopened = 0;
        m_removed = 0;
    }

    void isOpeningUntilTheTaskEnds()
    {
        auto card = makeCard();
        for (int click = 0; click < 2; ++click)
            QTest::mouseClick(&reopenButton(*card), Qt::LeftButton);
        QCOMPARE(m_reopened, 1);
        QCOMPARE(reopenButton(*card).text(), u"Opening…"_s);
        QVERIFY(!reopenButton(*card).isActionable());
        m_waiting.resume();
        QCOMPARE(reopenButton(*card).text(), u"Reopen"_s);
        QVERIFY(reopenButton(*card).isActionable());
        // It may go while it is opening.
        QTest::mouseClick(&reopenButton(*card), Qt::LeftButton);
        card.reset();
        m_waiting.resume();
        QCOMPARE(m_reopened, 2);
        QCOMPARE(m_removed, 0);
    }

    void isRemovedByItsMark()
    {
        auto card = makeCard();
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
        mark->setFocus(Qt::TabFocusReason);
        QTRY_VERIFY(look() != hidden);

        QTest::mouseClick(mark, Qt::LeftButton);
        QCOMPARE(m_removed, 1);
        QPointer<ChosenAppCard> gone(card.get());
        card->onRemove([&] { card.reset(); });
        QTest::keyClick(mark, Qt::Key_Return);
        QVERIFY(!gone);
    }

private:
    std::unique_ptr<ChosenAppCard> makeCard()
    {
        auto card = std::make_unique<ChosenAppCard>(RunningApp{.id = u"mail"_s, .name = u"Mail"_s});
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

    std::coroutine_handle<> m_waiting;
    int m_reopened = 0;
    int m_removed = 0;
};

} // namespace tovel

QTEST_MAIN(tovel::TestChosenAppCard)
#include "tst_chosen_app_card.moc"
