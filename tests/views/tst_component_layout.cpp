#include "views/components/equal_columns_layout.h"
#include "views/components/overlay_scroll_area.h"
#include "views/components/overlay_scroller.h"
#include "views/components/popover.h"

#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

#include <memory>

namespace tovel {

using namespace Qt::StringLiterals;

class TestComponentLayout : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void columnsAreEqual()
    {
        struct Case
        {
            int columns;
            QList<int> heights; // of the items; 0 for a hidden one
            int widest = QWIDGETSIZE_MAX;
            bool rightToLeft = false;
        };
        // Of the shown ones, in 320 by 200.
        const auto cells = [](const Case &given) {
            QWidget panel;
            panel.setLayoutDirection(given.rightToLeft ? Qt::RightToLeft : Qt::LeftToRight);
            auto *layout = new EqualColumnsLayout(&panel);
            layout->setContentsMargins(0, 0, 0, 0);
            layout->setColumns(given.columns);
            layout->setSpacings(10, 5);
            layout->setColumnWidths(50, given.widest);
            QList<QWidget *> shown;
            for (const int height : given.heights) {
                auto *item = new QWidget;
                layout->addWidget(item);
                item->setMinimumHeight(height);
                item->setLayout(new QVBoxLayout);
                item->layout()->setContentsMargins(0, height, 0, 0);
                if (height == 0)
                    item->hide();
                else
                    shown.append(item);
            }
            layout->setGeometry({0, 0, 320, 200});
            QList<QRect> placed;
            QRect all;
            for (const QWidget *item : shown) {
                placed.append(item->geometry());
                all |= item->geometry();
            }
            return layout->heightForWidth(320) == all.bottom() + 1 ? placed : QList<QRect>();
        };
        using Cells = QList<QRect>;
        QCOMPARE(cells({3, {20}}), (Cells{{0, 0, 100, 20}}));
        QCOMPARE(cells({2, {20, 40, 10}}),
                 (Cells{{0, 10, 155, 20}, {165, 0, 155, 40}, {0, 45, 155, 10}}));
        QCOMPARE(cells({2, {20, 20, 20}, 100, true}),
                 (Cells{{220, 0, 100, 20}, {110, 0, 100, 20}, {220, 25, 100, 20}}));
        QCOMPARE(cells({2, {20, 0, 20}, 100}), (Cells{{0, 0, 100, 20}, {110, 0, 100, 20}}));
        QCOMPARE(cells({7, {20, 20}}), (Cells{{0, 0, 50, 20}, {60, 0, 50, 20}}));
        QCOMPARE(cells({4, {9, 9, 9, 9}}),
                 (Cells{{0, 0, 72, 9}, {82, 0, 73, 9}, {165, 0, 72, 9}, {247, 0, 73, 9}}));
    }

    void popoverIsPlaced()
    {
        // Of 200 by 100 on 1000 by 800.
        const auto check = [](const QRect &anchor, PopoverSide wanted, PopoverSide side,
                              const QPoint &corner, const QPoint &tip) {
            const PopoverPlacement got
                = placePopover(anchor, {200, 100}, {0, 0, 1000, 800}, wanted);
            return got.side == side && got.body == QRect(corner, QSize(200, 100)) && got.tip == tip;
        };
        using enum PopoverSide;
        const QRect middle(480, 380, 40, 40);
        QVERIFY(check(middle, left, left, {271, 350}, {480, 399}));
        QVERIFY(check(middle, right, right, {529, 350}, {520, 399}));
        QVERIFY(check(middle, above, above, {400, 271}, {499, 380}));
        QVERIFY(check(middle, below, below, {400, 429}, {499, 420}));
        // No room there, on either side, but above, and nowhere.
        QVERIFY(check({10, 380, 40, 40}, left, right, {59, 350}, {50, 399}));
        QVERIFY(check({0, 380, 1000, 40}, left, below, {400, 429}, {499, 420}));
        QVERIFY(check({0, 200, 1000, 600}, left, above, {400, 91}, {499, 200}));
        QVERIFY(check({0, 0, 1000, 800}, left, below, {400, 700}, {499, 691}));
        // Shifted along the edge, with its arrow kept off the corner.
        QVERIFY(check({940, 780, 40, 20}, above, above, {800, 671}, {959, 780}));
        QVERIFY(check({0, 380, 10, 10}, above, above, {0, 271}, {22, 380}));
    }

    void popoverOpensAndGivesTheFocusBack()
    {
        QWidget window;
        window.resize(400, 300);
        auto *other = new QPushButton(&window);
        auto *anchor = new QPushButton(&window);
        anchor->setGeometry(200, 150, 28, 28);
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        other->setFocus();
        Popover popover(anchor);
        QSignalSpy closed(&popover, &Popover::closed);
        auto *content = new QWidget;
        auto *edit = new QLineEdit;
        (new QVBoxLayout(content))->addWidget(edit);
        popover.setContent(content);

        popover.open();
        popover.open();
        QTRY_VERIFY(edit->hasFocus());
        const int before = popover.height();
        edit->setMinimumHeight(edit->height() + 50);
        QTRY_VERIFY(popover.height() >= before + 50);
        QTest::keyClick(edit, Qt::Key_Escape);
        QVERIFY(!popover.isOpen());
        QCOMPARE(closed.count(), 1);
        QTRY_VERIFY(other->hasFocus());

        popover.open();
        QTest::mouseClick(&popover, Qt::LeftButton, {}, popover.rect().center());
        QVERIFY(popover.isOpen());
        const QPoint outside = window.mapToGlobal(QPoint(1, 1));
        QTest::mouseClick(&popover, Qt::LeftButton, {}, popover.mapFromGlobal(outside));
        QVERIFY(!popover.isOpen());

        popover.open();
        anchor->hide();
        QVERIFY(!popover.isOpen());
        popover.open();
        QVERIFY(!popover.isOpen());
        QCOMPARE(closed.count(), 3);
    }

    void areaScrollsWithAThinScrollerOverIt()
    {
        OverlayScrollArea area;
        auto *content = new QWidget;
        auto *layout = new QVBoxLayout(content);
        QList<QPushButton *> buttons;
        for (int i = 0; i < 30; ++i) {
            buttons.append(new QPushButton(QString::number(i)));
            layout->addWidget(buttons.last());
        }
        area.setWidget(content);
        area.resize(200, 150);
        area.show();
        QVERIFY(QTest::qWaitForWindowActive(&area));
        auto *scroller = area.findChild<OverlayScroller *>();
        QScrollBar *bar = area.verticalScrollBar();
        QTRY_VERIFY(scroller->isVisible());
        QCOMPARE(scroller->geometry().right(), 199);

        buttons.last()->setFocus(Qt::TabFocusReason);
        QVERIFY(bar->value() > 0);
        QTest::keyClick(buttons.last(), Qt::Key_Home);
        QCOMPARE(bar->value(), 0);
        const QPoint start(6, 5);
        QTest::mousePress(scroller, Qt::LeftButton, {}, start);
        QTest::mouseMove(scroller, start + QPoint(0, 150));
        QTest::mouseRelease(scroller, Qt::LeftButton);
        QCOMPARE(bar->value(), bar->maximum());

        area.setLayoutDirection(Qt::RightToLeft);
        QCOMPARE(scroller->x(), 0);
        area.setWidget(new QWidget);
        QTRY_VERIFY(!scroller->isVisible());
    }
};

} // namespace tovel

QTEST_MAIN(tovel::TestComponentLayout)
#include "tst_component_layout.moc"
