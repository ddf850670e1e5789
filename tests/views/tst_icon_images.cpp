#include "views/icon_images.h"

#include <QBuffer>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

using namespace tovel;
using namespace Qt::StringLiterals;

namespace {

QByteArray real()
{
    QFile file(*mainBundle().pathForResource(u"Tovel"_s, u"icns"_s));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// An entry of the file: its type, its length with these eight bytes, and a picture.
QByteArray entry(const QByteArray &type, const QSize &size)
{
    QImage picture(size, QImage::Format_Mono);
    picture.fill(1);
    QByteArray png;
    QBuffer buffer(&png);
    picture.save(&buffer, "png");
    QByteArray length(4, '\0');
    qToBigEndian(quint32(png.size() + 8), length.data());
    return type + length + png;
}

QByteArray replaced(QByteArray bytes, qsizetype at, const QByteArray &with)
{
    return bytes.replace(at, with.size(), with);
}

} // namespace

class TestIconImages : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void eachStyleHasItsLargestPictureAndASmallOneWithTheSameColours()
    {
        QList<QRgb> grounds;
        for (const TovelIconStyle style : allIconStyles()) {
            const auto full = image(style);
            QVERIFY(full);
            QCOMPARE(full->size(), QSize(512, 512));
            QCOMPARE(qAlpha(full->pixel(0, 0)), 0);
            grounds.append(full->pixel(256, 460));
            for (const double ratio : {1.0, 1.5, 2.0}) {
                const auto small = menuImage(style, ratio);
                QVERIFY(small);
                QCOMPARE(small->size(), QSize(20, 20) * ratio);
                QCOMPARE(small->deviceIndependentSize(), QSizeF(20, 20));
                const QColor colour = small->pixelColor(small->rect().center().x(), 18 * ratio);
                QVERIFY(qAbs(colour.red() - qRed(grounds.last())) < 24);
            }
        }
        QVERIFY(grounds.first() != grounds.last());
        QVERIFY(image(TovelIconStyle::dark)->constBits()
                != image(TovelIconStyle::dark)->constBits());
    }

    void asManyPixelsAsAreAskedForAreMadeOfTheFilesPictures()
    {
        QList<int> sides;
        for (const QImage &picture : windowImages(TovelIconStyle::light))
            sides.append(picture.width());
        QCOMPARE(sides, QList<int>({16, 32, 64, 128}));
        QCOMPARE(image(TovelIconStyle::light, 64), windowImages(TovelIconStyle::light)[2]);
        for (const int side : {10, 23, 700})
            QCOMPARE(image(TovelIconStyle::light, side)->size(), QSize(side, side));
    }

    void aFileThatIsNoIconGivesNone_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<int>("side"); // 0 for none

        const QByteArray whole = real();
        const qsizetype largest = whole.indexOf("ic09");
        QTest::newRow("whole") << whole << 512;
        QTest::newRow("missing") << QByteArray() << 0;
        QTest::newRow("empty") << QByteArray("") << 0;
        QTest::newRow("another format") << whole.mid(16) << 0;
        QTest::newRow("header only") << whole.left(8) << 0;
        QTest::newRow("entry without an end") << whole.left(100) << 0;
        QTest::newRow("the largest is damaged")
            << replaced(whole, largest + 8, QByteArray(64, 'x')) << 256;
        QTest::newRow("a picture of an absurd size") << whole + entry("ic10", {3000, 3000}) << 512;
        QTest::newRow("far too long a file") << whole + QByteArray(9 << 20, '\0') << 0;
    }

    void aFileThatIsNoIconGivesNone()
    {
        QFETCH(const QByteArray, file);
        QFETCH(const int, side);
        const QTemporaryDir folder;
        if (!file.isNull()) {
            QFile light(folder.filePath(u"TovelLight.icns"_s));
            QVERIFY(light.open(QIODevice::WriteOnly));
            QCOMPARE(light.write(file), file.size());
        }
        const Bundle bundle(folder.path());

        const auto found = image(TovelIconStyle::light, bundle);
        QCOMPARE(found ? found->width() : 0, side);
        QCOMPARE(menuImage(TovelIconStyle::light, 1, bundle).has_value(), side > 0);
        QCOMPARE(windowImages(TovelIconStyle::light, bundle).isEmpty(), side == 0);
        QVERIFY(!image(TovelIconStyle::dark, bundle));
    }
};

QTEST_GUILESS_MAIN(TestIconImages)
#include "tst_icon_images.moc"
