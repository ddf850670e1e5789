#include "views/components/app_icon.h"
#include "views/components/plain_button.h"
#include "views/components/pointing_cursor.h"
#include "views/components/surface.h"
#include "views/components/symbol.h"
#include "views/components/text_block.h"
#include "views/text_style.h"
#include "views/theme.h"

#include <QAccessible>
#include <QApplication>
#include <QPainter>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <functional>
#include <memory>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

// A surface with a black square in its middle.
class Square final : public Surface
{
public:
    using Surface::Surface;

protected:
    void paintContent(QPainter &painter, const QRectF &inside) override
    {
        QRectF square(0, 0, 10, 10);
        square.moveCenter(inside.center());
        painter.fillRect(square, Qt::black);
    }
};

QImage painted(int side, double ratio, const std::function<void(QPainter &)> &paint)
{
    QImage image(QSize(side, side) * ratio, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    paint(painter);
    return image;
}

bool isBlank(const QImage &image)
{
    QImage blank(image);
    blank.fill(Qt::transparent);
    return image == blank;
}

void send(QWidget &widget, QEvent::Type type)
{
    if (type == QEvent::Enter) {
        QEnterEvent enter({1, 1}, {1, 1}, {1, 1});
        QApplication::sendEvent(&widget, &enter);
    } else {
        QEvent event(type);
        QApplication::sendEvent(&widget, &event);
    }
}

} // namespace

class TestComponents : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_window = std::make_unique<QWidget>();
        m_window->resize(300, 200);
    }

    void cleanup()
    {
        m_window.reset();
        QVERIFY(!QGuiApplication::overrideCursor());
    }

    void surfaceShowsItsStates()
    {
        Square surface(m_window.get());
        surface.setGeometry(150, 100, 100, 60); // away from the mouse
        m_window->show();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        const auto at = [&](int x, int y) { return surface.grab().toImage().pixelColor(x, y); };
        const QColor plain = at(30, 30);
        QCOMPARE(plain, controlBackground(surface.palette()));
        send(surface, QEvent::Enter);
        const QColor hovered = at(30, 30);
        QVERIFY(hovered != plain);
        surface.setDown(true);
        QVERIFY(at(30, 30) != hovered);
        surface.setDown(false);
        send(surface, QEvent::Leave);
        QCOMPARE(at(30, 30), plain);

        const QColor accent = TovelTheme::accent(surface.palette());
        for (const bool highlighted : {false, true}) {
            surface.setHighlighted(highlighted);
            surface.setFocus(Qt::MouseFocusReason);
            QVERIFY(at(50, 1) != accent);
            surface.clearFocus();
            surface.setFocus(Qt::TabFocusReason);
            QTRY_COMPARE(at(50, 1), accent);
            surface.clearFocus();
        }
        QVERIFY(at(30, 30) != plain);
        QCOMPARE(at(50, 30), QColor(Qt::black));
        surface.setActionable(false);
        QVERIFY(at(50, 30) != QColor(Qt::black));
        surface.setDimsWhenDisabled(false);
        QCOMPARE(at(50, 30), QColor(Qt::black));
    }

    void buttonIsClickedByKeysAndInsideItsShape()
    {
        Square surface(m_window.get());
        surface.resize(100, 60);
        m_window->show();
        surface.setFocus();
        QSignalSpy clicked(&surface, &QAbstractButton::clicked);
        for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter})
            QTest::keyClick(&surface, key);
        QCOMPARE(clicked.count(), 3);
        QTest::mouseClick(&surface, Qt::LeftButton, {}, {50, 30});
        QCOMPARE(clicked.count(), 4);
        QTest::mouseClick(&surface, Qt::LeftButton, {}, {1, 0});
        surface.setActionable(false);
        QTest::keyClick(&surface, Qt::Key_Space);
        QTest::mouseClick(&surface, Qt::LeftButton, {}, {50, 30});
        QCOMPARE(clicked.count(), 4);
    }

    void assistiveProgramsPressOnlyWhatIsActionable()
    {
        Square surface(m_window.get());
        QAccessibleInterface *read = QAccessible::queryAccessibleInterface(&surface);
        QVERIFY(!read->state().selectable);
        surface.setAccessibleSelected(true);
        QVERIFY(read->state().selectable && read->state().selected && !read->state().disabled);
        surface.setActionable(false);
        QVERIFY(read->state().disabled);
        QVERIFY(!read->actionInterface()->actionNames().contains(
            QAccessibleActionInterface::pressAction()));

        PlainButton plain(m_window.get());
        QSignalSpy clicked(&plain, &QAbstractButton::clicked);
        QAccessible::queryAccessibleInterface(&plain)->actionInterface()->doAction(
            QAccessibleActionInterface::pressAction());
        QTRY_COMPARE(clicked.count(), 1);
    }

    void handIsPoppedAsOftenAsPushed()
    {
        auto button = std::make_unique<QWidget>(m_window.get());
        PointingCursor *cursor = pointingCursor(button.get());
        m_window->show();
        const auto hand = [] { return QGuiApplication::overrideCursor() != nullptr; };
        send(*button, QEvent::Enter);
        send(*button, QEvent::Enter);
        QVERIFY(hand());
        send(*button, QEvent::Leave);
        QVERIFY(!hand());

        QWidget popup(m_window.get(), Qt::Popup);
        const std::function<void()> ends[] = {
            [&] { m_window->setEnabled(false); },
            [&] { cursor->setEnabled(false); },
            [&] { popup.show(); },
            [&] { button->hide(); },
            [&] { button.reset(); },
        };
        for (const auto &end : ends) {
            m_window->setEnabled(true);
            cursor->setEnabled(true);
            popup.hide();
            button->show();
            QVERIFY(!hand());
            send(*button, QEvent::Leave);
            send(*button, QEvent::Enter);
            QVERIFY(hand());
            end();
            QVERIFY(!hand());
        }
    }

    void symbolsAreMasksOfTheirColour()
    {
        const QColor color(200, 0, 0);
        const auto plus = [&](QPainter &painter) {
            paintSymbol(painter, u"plus"_s, QRectF(0, 0, 16, 16), color);
        };
        for (const double ratio : {1.0, 1.5, 2.0}) {
            const QImage image = painted(16, ratio, plus);
            const QColor middle = image.pixelColor(image.width() / 2, image.height() / 2);
            QVERIFY(middle.alpha() > 100);
            QVERIFY(middle.red() > 190 && middle.green() == 0);
            QCOMPARE(image.pixelColor(0, 0).alpha(), 0);
        }
        QVERIFY(isBlank(painted(16, 1, [&](QPainter &painter) {
            paintSymbol(painter, u"no.such.symbol"_s, QRectF(0, 0, 16, 16), color);
            paintSymbol(painter, u"plus"_s, QRectF(), color);
        })));
    }

    void textBlocksWrapAndEnd()
    {
        const QFont font = systemFont(13);
        const QFontMetrics metrics(font);
        const int width = metrics.horizontalAdvance(u"Several words"_s) + 2;
        const std::pair<QString, int> rows[] = {
            {{}, 1},
            {u"Several words here"_s, 2},
            {u"many "_s.repeated(5000), 2},
            {QString(500, u'w'), 2},
            {u"a\nb"_s, 1},
            {u"שלום שלום שלום שלום"_s, 2},
        };
        for (const auto &[text, lines] : rows) {
            const int height = textBlockHeight(text, font, width, 2);
            QCOMPARE(height, metrics.height() + (lines - 1) * metrics.lineSpacing());
            const QRectF box(20, 20, width, height);
            QImage image = painted(200, 1, [&](QPainter &painter) {
                paintTextBlock(painter, box, text, font, Qt::black, 2,
                               Qt::AlignLeft | Qt::AlignTop);
            });
            QCOMPARE(isBlank(image.copy(box.toRect())), text.isEmpty());
            QPainter eraser(&image);
            eraser.setCompositionMode(QPainter::CompositionMode_Clear);
            eraser.fillRect(box.adjusted(-4, -4, 4, 4), Qt::black);
            QVERIFY(isBlank(image));
        }
    }

    void iconsAreFittedOrMissing()
    {
        const auto svg = [](const char *size) {
            return QByteArray("<svg xmlns='http://www.w3.org/2000/svg' ") + size
                + "><rect width='9' height='9'/></svg>";
        };
        const std::pair<QByteArray, QSize> rows[] = {
            {svg("width='20' height='10'"), QSize(54, 27)},
            {svg("width='90000' height='90000'"), QSize()},
            {"P1 4 2 1 1 1 1 1 1 1 1", QSize(54, 27)},
            {"P1 100000 100000 1 1", QSize()},
            {"\x89PNG\r\n\x1a\n and no more", QSize()},
            {QByteArray(9 << 20, ' '), QSize()},
        };
        const QTemporaryDir folder;
        const auto size = [](const QString &source) {
            if (isBlank(painted(36, 1.5, [&](QPainter &painter) {
                    paintAppIcon(painter, NSImage{source}, QRectF(0, 0, 36, 36), {});
                })))
                qFatal("nothing stands in for %s", qPrintable(source));
            const QPixmap pixmap = appIconPixmap(NSImage{source}, 36, 1.5);
            return pixmap.isNull() ? QSize() : pixmap.size();
        };
        for (const auto &[content, fitted] : rows) {
            QFile file(folder.filePath(QString::number(content.size())));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(content);
            file.close();
            QCOMPARE(size(file.fileName()), fitted);
        }
        for (const QString &missing :
             {folder.filePath(u"none"_s), folder.path(), u"no-such-icon.png"_s})
            QCOMPARE(size(missing), QSize());
        QVERIFY(appIconPixmap(std::nullopt, 36, 1).isNull());
    }

private:
    std::unique_ptr<QWidget> m_window;
};

} // namespace tovel

QTEST_MAIN(tovel::TestComponents)
#include "tst_components.moc"
