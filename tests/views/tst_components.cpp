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
        const QPoint middle(50, 30);
        const QPoint beside(30, 30);
        const QPoint edge(50, 1);
        const auto look = [&] { return surface.grab().toImage(); };
        const auto at = [&](const QPoint &point) { return look().pixelColor(point); };

        const QColor plain = at(beside);
        QCOMPARE(plain, controlBackground(surface.palette()));
        QCOMPARE(look().pixelColor(0, 0), windowBackground(surface.palette())); // the corner
        send(surface, QEvent::Enter);
        const QColor hovered = at(beside);
        QVERIFY(hovered != plain);
        surface.setDown(true);
        QVERIFY(at(beside) != hovered);
        surface.setDown(false);
        send(surface, QEvent::Leave);
        QCOMPARE(at(beside), plain);

        const QColor accent = TovelTheme::accent(surface.palette());
        for (const bool highlighted : {false, true}) {
            surface.setHighlighted(highlighted);
            surface.clearFocus();
            QVERIFY(at(edge) != accent);
            surface.setFocus(Qt::TabFocusReason);
            QTRY_COMPARE(at(edge), accent);
            surface.clearFocus();
            surface.setFocus(Qt::MouseFocusReason);
            QVERIFY(at(edge) != accent);
        }
        QVERIFY(at(beside) != plain);

        QCOMPARE(at(middle), QColor(Qt::black));
        surface.setActionable(false);
        QVERIFY(at(middle) != QColor(Qt::black));
        surface.setDimsWhenDisabled(false);
        QCOMPARE(at(middle), QColor(Qt::black));
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
        QTest::keyClick(&surface, Qt::Key_A);
        QCOMPARE(clicked.count(), 4);

        surface.setActionable(false);
        for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return})
            QTest::keyClick(&surface, key);
        QTest::mouseClick(&surface, Qt::LeftButton, {}, {50, 30});
        QCOMPARE(clicked.count(), 4);
    }

    void assistiveProgramsReadAButton()
    {
        Square surface(m_window.get());
        surface.setAccessibleName(u"Move"_s);
        QAccessibleInterface *read = QAccessible::queryAccessibleInterface(&surface);
        QVERIFY(read);
        QCOMPARE(read->role(), QAccessible::Button);
        QVERIFY(!read->state().selectable);

        surface.setAccessibleValue(u"3 windows"_s);
        QCOMPARE(read->text(QAccessible::Name), u"Move"_s);
        QCOMPARE(read->text(QAccessible::Value), u"3 windows"_s);
        QCOMPARE(read->text(QAccessible::Description), u"3 windows"_s);
        surface.setAccessibleSelected(true);
        QVERIFY(read->state().selectable && read->state().selected && !read->state().disabled);
        surface.setActionable(false);
        QVERIFY(read->state().disabled);
        QVERIFY(!read->actionInterface()->actionNames().contains(
            QAccessibleActionInterface::pressAction()));

        PlainButton plain(m_window.get());
        plain.setText(u"Skipped"_s);
        read = QAccessible::queryAccessibleInterface(&plain);
        QCOMPARE(read->text(QAccessible::Name), u"Skipped"_s);
        QSignalSpy clicked(&plain, &QAbstractButton::clicked);
        read->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        QTRY_COMPARE(clicked.count(), 1);
    }

    void plainButtonIsAsLargeAsItsContent()
    {
        PlainButton button;
        button.setSymbol(u"plus"_s, 16);
        QCOMPARE(button.sizeHint(), QSize(16, 16));
        button.setText(u"A text much longer than there is room for"_s);
        QVERIFY(button.sizeHint().width() > button.fontMetrics().horizontalAdvance(button.text()));
        QCOMPARE(button.minimumSizeHint(), button.sizeHint());
        button.setElideMode(Qt::ElideMiddle);
        QVERIFY(button.minimumSizeHint().width() < button.sizeHint().width() / 2);
    }

    void handIsPoppedAsOftenAsPushed()
    {
        auto button = std::make_unique<QWidget>(m_window.get());
        PointingCursor *cursor = pointingCursor(button.get());
        m_window->show();
        const auto hand = [] { return QGuiApplication::overrideCursor() != nullptr; };

        for (int i = 0; i < 100; ++i) {
            send(*button, QEvent::Enter);
            send(*button, QEvent::Enter);
            QVERIFY(hand());
            send(*button, QEvent::Leave);
            QVERIFY(!hand());
        }

        send(*button, QEvent::Enter);
        m_window->setEnabled(false);
        QVERIFY(!hand());
        send(*button, QEvent::Leave);
        send(*button, QEvent::Enter);
        QVERIFY(!hand());
        m_window->setEnabled(true);
        QVERIFY(!hand());
        send(*button, QEvent::Leave);

        send(*button, QEvent::Enter);
        QVERIFY(hand());
        cursor->setEnabled(false);
        QVERIFY(!hand());
        cursor->setEnabled(true);
        send(*button, QEvent::Leave);

        send(*button, QEvent::Enter);
        QWidget popup(m_window.get(), Qt::Popup);
        popup.show();
        QVERIFY(!hand());
        popup.hide();

        send(*button, QEvent::Leave);
        send(*button, QEvent::Enter);
        QVERIFY(hand());
        button->hide();
        QVERIFY(!hand());
        button->show();
        send(*button, QEvent::Leave);
        send(*button, QEvent::Enter);
        QVERIFY(hand());
        button.reset();
        QVERIFY(!hand());
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

    void textBlocksWrapAndEnd_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("lines"); // of at most 2
        QTest::newRow("empty") << QString() << 1;
        QTest::newRow("one word") << u"Mail"_s << 1;
        QTest::newRow("two lines") << u"Several words here"_s << 2;
        QTest::newRow("more than fit") << u"many "_s.repeated(5000) << 2;
        QTest::newRow("one long word") << QString(500, u'w') << 2;
        QTest::newRow("line break") << u"a\nb"_s << 1;
        QTest::newRow("right to left") << u"שלום שלום שלום שלום"_s << 2;
    }

    void textBlocksWrapAndEnd()
    {
        QFETCH(QString, text);
        QFETCH(int, lines);
        const QFont font = systemFont(13);
        const QFontMetrics metrics(font);
        const int width = metrics.horizontalAdvance(u"Several words"_s) + 2;
        const int height = textBlockHeight(text, font, width, 2);
        QCOMPARE(height, metrics.height() + (lines - 1) * metrics.lineSpacing());

        const QRectF box(20, 20, width, height);
        const QImage image = painted(200, 1, [&](QPainter &painter) {
            paintTextBlock(painter, box, text, font, Qt::black, 2, Qt::AlignLeft | Qt::AlignTop);
        });
        QCOMPARE(isBlank(image.copy(box.toRect())), text.isEmpty());
        QVERIFY(isBlank(image.copy(0, 0, 16, 200)));
        QVERIFY(isBlank(image.copy(24 + width, 0, 176 - width, 200)));
        QVERIFY(isBlank(image.copy(0, 24 + height, 200, 176 - height)));
    }

    void iconsAreFittedOrMissing_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QSize>("size"); // of an icon of 36 at a ratio of 1.5
        const auto svg = [](const char *size) {
            return QByteArray("<svg xmlns='http://www.w3.org/2000/svg' ") + size
                + "><rect width='9' height='9'/></svg>";
        };
        QTest::newRow("drawing") << svg("width='10' height='10'") << QSize(54, 54);
        QTest::newRow("wide drawing") << svg("width='20' height='10'") << QSize(54, 27);
        QTest::newRow("huge drawing") << svg("width='90000' height='90000'") << QSize();
        QTest::newRow("picture") << QByteArray("P1 4 2 1 1 1 1 1 1 1 1") << QSize(54, 27);
        QTest::newRow("huge picture") << QByteArray("P1 100000 100000 1 1") << QSize();
        QTest::newRow("damaged") << QByteArray("\x89PNG\r\n\x1a\n and no more") << QSize();
        QTest::newRow("too much") << QByteArray(9 << 20, ' ') << QSize();
        QTest::newRow("empty") << QByteArray() << QSize();
    }

    void iconsAreFittedOrMissing()
    {
        QFETCH(QByteArray, content);
        QFETCH(QSize, size);
        QTemporaryDir folder;
        const QString path = folder.filePath(u"icon"_s);
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
        file.close();

        for (const QString &source : {path, path + u"-missing"_s, folder.path()}) {
            const bool here = source == path;
            const QPixmap pixmap = appIconPixmap(NSImage{source}, 36, 1.5);
            QCOMPARE(pixmap.isNull(), !here || size.isEmpty());
            if (!pixmap.isNull())
                QCOMPARE(pixmap.size(), size);
            QVERIFY(!isBlank(painted(36, 1.5, [&](QPainter &painter) {
                paintAppIcon(painter, NSImage{source}, QRectF(0, 0, 36, 36), {});
            })));
        }
        QVERIFY(appIconPixmap(std::nullopt, 36, 1).isNull());
        QVERIFY(appIconPixmap(NSImage{u"no-such-icon.png"_s}, 36, 1).isNull());
    }

private:
    std::unique_ptr<QWidget> m_window;
};

} // namespace tovel

QTEST_MAIN(tovel::TestComponents)
#include "tst_components.moc"
