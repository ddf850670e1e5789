#include "support/test.h"
#include "views/components/app_icon.h"
#include "views/components/popover.h"
#include "views/components/surface.h"

#include <QAccessible>
#include <QApplication>
#include <QDialog>
#include <QSignalSpy>

namespace tovel {

class TestComponents : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_window = std::make_unique<QWidget>();
        m_window->resize(300, 200);
    }

    void cleanup() { m_window.reset(); }

    void isPressedInEveryWayWhileItIsActionable()
    {
        Surface surface(m_window.get());
        surface.resize(100, 60);
        m_window->show();
        surface.setFocus();
        QSignalSpy clicked(&surface, &QAbstractButton::clicked);
        QAccessibleInterface *read = QAccessible::queryAccessibleInterface(&surface);
        const QString action = QAccessibleActionInterface::pressAction();
        const auto press = [&] {
            for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter})
                QTest::keyClick(&surface, key);
            QTest::mouseClick(&surface, Qt::LeftButton, {}, {50, 30});
            if (read->actionInterface()->actionNames().contains(action))
                read->actionInterface()->doAction(action);
            QCoreApplication::processEvents();
        };
        press();
        QTRY_COMPARE(clicked.count(), 5);
        QTest::mouseClick(&surface, Qt::LeftButton, {}, {1, 0}); // outside its shape
        QCOMPARE(clicked.count(), 5);
        QCOMPARE(surface.cursor().shape(), Qt::PointingHandCursor);
        QDialog alert(m_window.get());
        alert.setModal(true);
        QEnterEvent enter({1, 1}, {1, 1}, {1, 1});
        for (const auto shape : {Qt::ArrowCursor, Qt::PointingHandCursor}) {
            alert.setVisible(shape == Qt::ArrowCursor);
            QApplication::sendEvent(&surface, &enter);
            QCOMPARE(surface.cursor().shape(), shape);
        }
        surface.setActionable(false);
        QCOMPARE(surface.cursor().shape(), Qt::ArrowCursor);
        press();
        QCOMPARE(clicked.count(), 5);
    }

    void anIconReplacesItsPlaceholderAsSoonAsItIsThere()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"icon"_s);
        const auto write = [&](const QByteArray &bitmap, const QDateTime &time) {
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(bitmap);
            QVERIFY(file.flush() && file.setFileTime(time, QFile::FileModificationTime));
        };
        const auto picture = [](AppIcon &icon) { return icon.grab().toImage(); };
        AppIcon icon(36, m_window.get());
        m_window->show();
        const QImage placeholder = picture(icon);
        QVERIFY(!areAppIconsOnTheirWay());

        const QDateTime longAgo = QDateTime::currentDateTime().addDays(-1);
        write("no picture", longAgo);
        icon.setIcon(NSImage{path});
        QCOMPARE(picture(icon), placeholder);
        QTRY_VERIFY(!areAppIconsOnTheirWay());
        QCOMPARE(picture(icon), placeholder);
        QVERIFY(!areAppIconsOnTheirWay()); // not tried once more

        write("P1 1 1 1", longAgo.addSecs(60));
        QCOMPARE(picture(icon), placeholder);
        const auto onScreen = [&] { return m_window->screen()->grabWindow(m_window->winId()); };
        const QImage before = onScreen().toImage();
        QTRY_VERIFY(onScreen().toImage() != before); // by itself
        QCOMPARE(picture(icon).pixelColor(18, 18), QColor(Qt::black));
        icon.setIcon(std::nullopt);
        QCOMPARE(picture(icon), placeholder);
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

private:
    std::unique_ptr<QWidget> m_window;
};

} // namespace tovel

QTEST_MAIN(tovel::TestComponents)
#include "tst_components.moc"
