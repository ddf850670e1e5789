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
    void columnsAreEqual_data()
    {
        QTest::addColumn<int>("columns");
        QTest::addColumn<int>("widest");
        QTest::addColumn<bool>("stretches");
        QTest::addColumn<bool>("rightToLeft");
        QTest::addColumn<QList<int>>("heights"); // of the items; 0 for a hidden one
        QTest::addColumn<QList<QRect>>("cells"); // of the shown ones, in 320 by 200
        const int any = QWIDGETSIZE_MAX;
        QTest::newRow("none") << 3 << any << false << false << QList<int>{} << QList<QRect>{};
        QTest::newRow("part of a row")
            << 3 << any << false << false << QList<int>{20} << QList<QRect>{{0, 0, 100, 20}};
        QTest::newRow("next row below the tallest")
            << 2 << any << false << false << QList<int>{20, 40, 10}
            << QList<QRect>{{0, 10, 155, 20}, {165, 0, 155, 40}, {0, 45, 155, 10}};
        QTest::newRow("stretched") << 2 << any << true << false << QList<int>{20, 40}
                                   << QList<QRect>{{0, 0, 155, 40}, {165, 0, 155, 40}};
        QTest::newRow("from the right")
            << 2 << 100 << false << true << QList<int>{20, 20, 20}
            << QList<QRect>{{220, 0, 100, 20}, {110, 0, 100, 20}, {220, 25, 100, 20}};
        QTest::newRow("hidden takes no cell") << 2 << 100 << false << false << QList<int>{20, 0, 20}
                                              << QList<QRect>{{0, 0, 100, 20}, {110, 0, 100, 20}};
        QTest::newRow("not narrower than allowed")
            << 7 << any << false << false << QList<int>{20, 20}
            << QList<QRect>{{0, 0, 50, 20}, {60, 0, 50, 20}};
        QTest::newRow("odd pixels spread")
            << 4 << any << false << false << QList<int>{9, 9, 9, 9}
            << QList<QRect>{{0, 0, 72, 9}, {82, 0, 73, 9}, {165, 0, 72, 9}, {247, 0, 73, 9}};
    }

    void columnsAreEqual()
    {
        QFETCH(int, columns);
        QFETCH(int, widest);
        QFETCH(bool, stretches);
        QFETCH(bool, rightToLeft);
        QFETCH(QList<int>, heights);
        QFETCH(QList<QRect>, cells);
        QWidget panel;
        panel.setLayoutDirection(rightToLeft ? Qt::RightToLeft : Qt::LeftToRight);
        auto *layout = new EqualColumnsLayout(&panel);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->setColumns(columns);
        layout->setSpacings(10, 5);
        layout->setColumnWidths(50, widest);
        layout->setStretchesRows(stretches);
        QList<QWidget *> shown;
        for (const int height : heights) {
            auto *item = new QWidget;
            layout->addWidget(item);
            if (height == 0) {
                item->hide();
                continue;
            }
            item->setMinimumHeight(height);
            item->setLayout(new QVBoxLayout);
            item->layout()->setContentsMargins(0, height, 0, 0);
            shown.append(item);
        }
        layout->setGeometry({0, 0, 320, 200});
        QList<QRect> placed;
        int bottom = 0;
        for (const QWidget *item : shown) {
            placed.append(item->geometry());
            bottom = std::max(bottom, item->geometry().bottom() + 1);
        }
        QCOMPARE(placed, cells);
        QCOMPARE(layout->heightForWidth(320), bottom);
        delete layout->takeAt(0);
        QCOMPARE(layout->count(), std::max<int>(0, int(heights.size()) - 1));
    }

    void popoverIsPlaced_data()
    {
        QTest::addColumn<QRect>("anchor");
        QTest::addColumn<PopoverSide>("wanted");
        QTest::addColumn<PopoverPlacement>("placement"); // of 200 by 100 on 1000 by 800
        const QRect middle(480, 380, 40, 40);
        using enum PopoverSide;
        QTest::newRow("left") << middle << left
                              << PopoverPlacement{left, {271, 350, 200, 100}, {480, 399}};
        QTest::newRow("right") << middle << right
                               << PopoverPlacement{right, {529, 350, 200, 100}, {520, 399}};
        QTest::newRow("above") << middle << above
                               << PopoverPlacement{above, {400, 271, 200, 100}, {499, 380}};
        QTest::newRow("below") << middle << below
                               << PopoverPlacement{below, {400, 429, 200, 100}, {499, 420}};
        QTest::newRow("no room, opposite")
            << QRect(10, 380, 40, 40) << left
            << PopoverPlacement{right, {59, 350, 200, 100}, {50, 399}};
        QTest::newRow("no room on either side")
            << QRect(0, 380, 1000, 40) << left
            << PopoverPlacement{below, {400, 429, 200, 100}, {499, 420}};
        QTest::newRow("no room but above")
            << QRect(0, 200, 1000, 600) << left
            << PopoverPlacement{above, {400, 91, 200, 100}, {499, 200}};
        QTest::newRow("shifted along the edge")
            << QRect(940, 780, 40, 20) << above
            << PopoverPlacement{above, {800, 671, 200, 100}, {959, 780}};
        QTest::newRow("arrow kept off the corner")
            << QRect(0, 380, 10, 10) << above
            << PopoverPlacement{above, {0, 271, 200, 100}, {22, 380}};
        QTest::newRow("room nowhere") << QRect(0, 0, 1000, 800) << left
                                      << PopoverPlacement{below, {400, 700, 200, 100}, {499, 691}};
    }

    void popoverIsPlaced()
    {
        QFETCH(QRect, anchor);
        QFETCH(PopoverSide, wanted);
        QFETCH(PopoverPlacement, placement);
        const PopoverPlacement got = placePopover(anchor, {200, 100}, {0, 0, 1000, 800}, wanted);
        QCOMPARE(got.side, placement.side);
        QCOMPARE(got.body, placement.body);
        QCOMPARE(got.tip, placement.tip);
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
        QSignalSpy opened(&popover, &Popover::opened);
        QSignalSpy closed(&popover, &Popover::closed);
        QSignalSpy pressed(anchor, &QPushButton::pressed);
        auto *content = new QWidget;
        auto *layout = new QVBoxLayout(content);
        auto *edit = new QLineEdit;
        layout->addWidget(edit);
        popover.setContent(content);
        popover.setArrow(Popover::BottomArrow);

        popover.open();
        popover.open();
        QCOMPARE(opened.count(), 1);
        QVERIFY(popover.isOpen());
        QTRY_VERIFY(edit->hasFocus());
        QTest::keyClicks(edit, u"files"_s);
        QCOMPARE(edit->text(), u"files"_s);
        const int before = popover.height();
        edit->setMinimumHeight(edit->height() + 50);
        QTRY_VERIFY(popover.height() >= before + 50);
        QTest::keyClick(edit, Qt::Key_Escape);
        QVERIFY(!popover.isOpen());
        QCOMPARE(closed.count(), 1);
        QTRY_VERIFY(other->hasFocus());

        const auto click = [&](const QPoint &global) {
            QTest::mouseClick(&popover, Qt::LeftButton, {}, popover.mapFromGlobal(global));
        };
        popover.open();
        click(popover.mapToGlobal(popover.rect().center()));
        QVERIFY(popover.isOpen());
        click(anchor->mapToGlobal(QPoint(5, 5)));
        QVERIFY(!popover.isOpen());
        QCOMPARE(pressed.count(), 0);
        popover.open();
        click(window.mapToGlobal(QPoint(1, 1)));
        QVERIFY(!popover.isOpen());

        popover.open();
        anchor->hide();
        QVERIFY(!popover.isOpen());
        popover.open();
        QVERIFY(!popover.isOpen());
        QCOMPARE(opened.count(), closed.count());
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
        QCOMPARE(content->width(), 200);
        QVERIFY(scroller->width() <= 12);
        QCOMPARE(scroller->geometry().right(), 199);

        buttons.last()->setFocus(Qt::TabFocusReason);
        QVERIFY(bar->value() > 0);
        QTest::keyClick(buttons.last(), Qt::Key_Home);
        QCOMPARE(bar->value(), 0);
        QTest::keyClick(buttons.last(), Qt::Key_PageDown);
        QVERIFY(bar->value() > 0);
        QTest::keyClick(buttons.last(), Qt::Key_End);
        QCOMPARE(bar->value(), bar->maximum());

        bar->setValue(0);
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
